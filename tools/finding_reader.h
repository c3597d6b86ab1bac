// What is observed of one node, as texts say it.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "quarn.h"

namespace tool {

// Whether a text is a likelihood: something in parentheses.
bool is_likelihood(std::string_view text) noexcept;

// The weights in (WEIGHT WEIGHT ...), with blanks or commas between them. Fails with command_failure, which begins with
// the subject.
std::vector<double> parse_weights(std::string_view likelihood, const std::string& subject);

class finding_reader {
public:
    // Fails with command_failure for nodes that hold no evidence.
    explicit finding_reader(q_node_t node);

    // Enters LABEL, #INDEX or (WEIGHT WEIGHT ...), the value of a continuous node. Takes time that does not depend on the
    // number of states but for likelihoods. Fails with command_failure, and may have entered some weights then.
    void enter(std::string_view text) const;

private:
    void enter_value(std::string_view text) const;
    void enter_weights(std::string_view text) const;
    size_t state_called(std::string_view text) const;
    [[noreturn]] void fail(const std::string& problem) const;
    [[noreturn]] void fail_for_states(const std::string& problem) const;

    q_node_t node_;
    std::unordered_map<std::string_view, int64_t> states_;  // by their labels
};

}  // namespace tool
