// Files that are written as a whole: what a path named before stays until the new contents are complete.
#pragma once

#include <string_view>

namespace quarn {

// Writes a file beside the one that the path leads to, and puts it in its place, with the permissions of the old one.
// Devices, pipes and the like are written to directly. Fails with q_error_io; then an old file is as it was.
void write_whole_file(const char* path, std::string_view contents);

}  // namespace quarn
