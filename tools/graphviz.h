// The program that lays out graphs.
#pragma once

#include <string>

namespace tool {

// What `dot` from the PATH makes of a graph in its language, as JSON with positions. Fails where there is none, or it fails.
std::string run_dot(const std::string& graph);

}  // namespace tool
