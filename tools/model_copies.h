// A network's file, read once, from which several equal models are made: one for each thread.
#pragma once

#include <string>

#include "model.h"

namespace tool {

class model_copies {
public:
    // `-` stands for standard input. The name must outlive this.
    explicit model_copies(const std::string& file);

    // The first tells the file's errors and warnings, the others know them.
    model first() const;
    model another() const;

private:
    std::string path() const;

    class nameless_file {
    public:
        nameless_file();
        ~nameless_file();
        nameless_file(const nameless_file&) = delete;
        nameless_file& operator=(const nameless_file&) = delete;

        int descriptor() const noexcept { return descriptor_; }

    private:
        int descriptor_;
    };

    const std::string& file_;
    nameless_file copy_;  // the same bytes
};

}  // namespace tool
