#include "tool_failure.h"

namespace tool {
namespace {

std::string in_words(q_error_t code) {
    switch (code) {
    case q_error_inconsistency_or_underflow:
        return "the evidence is impossible, or too improbable to compute with";
    case q_error_size_too_large:
    case q_error_no_memory: return "out of memory: the tables of the network are too large";
    case q_error_io: return "cannot be opened or read";
    default: return q_error_description(static_cast<uint32_t>(code));
    }
}

}  // namespace

void fail_with_library_error(const std::string& subject, q_error_t code) {
    throw command_failure(subject + ": " + in_words(code));
}

}  // namespace tool
