// JSON as the commands print it.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace tool {

// In ASCII, as labels may hold control characters; bytes that are not UTF-8 are replaced.
inline std::string json_text(const nlohmann::ordered_json& document) {
    return document.dump(2, ' ', true, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace tool
