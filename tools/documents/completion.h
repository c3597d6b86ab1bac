// What a shell proposes while a command line is written.
#pragma once

#include <string>

#include <CLI/App.hpp>

namespace tool {

// A file for bash, which needs no other one.
std::string bash_completion(const CLI::App& commands);

}  // namespace tool
