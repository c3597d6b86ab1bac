// A file that is written piece by piece.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tool {

// What the name leads to stays as it was until finish(): the text goes into a new file beside it, which is removed if
// anything stops the command before. Devices, pipes and the like are written to directly, and so is standard output,
// which is called `-`. There may be one at a time. Failures are of type command_failure.
class output_file {
public:
    explicit output_file(const std::string& name);
    ~output_file();
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    bool is_terminal() const noexcept;
    void write(std::string_view text);
    void finish();

private:
    [[noreturn]] void fail() const;
    void open_beside();

    std::string name_;
    std::filesystem::path target_;  // empty: written to directly
    std::string written_;           // the new file; empty: none
    int descriptor_ = -1;
};

}  // namespace tool
