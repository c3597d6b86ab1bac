// quarn draw MODEL.net [--evidence NODE=STATE ...] [--case FILE] [--nodes NODE,...] [--plain] [--dot] [--output FILE]
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

namespace tool {

struct draw_options {
    std::string model;
    std::vector<std::string> evidence;
    std::optional<std::string> case_file;
    std::vector<std::string> nodes;  // empty: all
    bool plain = false;
    bool dot = false;
    std::string output = "-";
};

// Adds the command to the tool's; `options` takes what is parsed.
void add_draw_command(CLI::App& commands, draw_options& options);

// Writes the picture.
void run_draw(const draw_options& options);

}  // namespace tool
