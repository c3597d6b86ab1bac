// A page about a network: what it says, how it looks, how it is computed.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "attempt.h"
#include "solve.h"
#include "tree_statistics.h"

namespace tool {

struct network_report {
    std::string title;
    std::string model;  // the name of its file
    size_t links;
    std::string picture;          // an <svg> element; empty: none
    std::string missing_picture;  // why
    attempt made;                 // what the evidence moved most comes first
    // Without evidence, for each node of the results; empty: there is none.
    std::vector<node_beliefs> before{};
    std::vector<policy> policies{};
    std::optional<double> utility_before{};       // when the policies were improved
    std::optional<tree_statistics> statistics{};  // none: not compiled
    std::vector<std::string> largest_clique{};    // names of its nodes
};

// Improves the policies first, where that is wanted. Fails as try_to_compute() and solve() do.
network_report make_report(model& asked, bool with_better_policies);

// One page that needs nothing else.
std::string report_as_html(const network_report& shown);

}  // namespace tool
