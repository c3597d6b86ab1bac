#include "tool_failure.h"

namespace tool {

std::string in_words(q_error_t code) {
    switch (code) {
    case q_error_inconsistency_or_underflow:
        return "the evidence is impossible, or too improbable to compute with";
    case q_error_fast_retraction:
    case q_error_normalization:
        return "fast retraction is not possible: some evidence excludes states of other nodes; leave out "
               "each "
               "piece of evidence in turn instead";
    case q_error_zero_variance:
        return "the value given for a continuous node is the only one that the other evidence leaves it: its "
               "density is infinite";
    case q_error_low_density: return "a value given for a continuous node is too improbable to compute with";
    case q_error_size_too_large:
    case q_error_no_memory: return "out of memory: the tables of the network are too large";
    case q_error_io: return "cannot be opened or read";
    default: return q_error_description(static_cast<uint32_t>(code));
    }
}

void fail_with_library_error(const std::string& subject, q_error_t code) {
    throw command_failure(subject + ": " + in_words(code));
}

}  // namespace tool
