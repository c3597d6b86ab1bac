// How commands fail.
#pragma once

#include <stdexcept>
#include <string>

#include "quarn.h"

namespace tool {

// The command cannot be done; nothing is printed for an empty message: all has been said.
class command_failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The command line is wrong, whatever the model.
class usage_failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What an error of the library means to a user.
std::string in_words(q_error_t code);

// Fails with what an error of the library, its last one, means to a user.
[[noreturn]] void fail_with_library_error(const std::string& subject, q_error_t code = q_error_code());

}  // namespace tool
