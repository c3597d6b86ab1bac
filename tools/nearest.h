// What may have been meant by a name that is unknown.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

// "; did you mean NAME?" with the name that fewest slips of the keyboard lead from, or nothing where none is near.
std::string did_you_mean(std::string_view unknown, const std::vector<std::string>& names);

}  // namespace tool
