#include "csv_text.h"

#include <array>
#include <charconv>

namespace tool {

void append_field(std::string& line, std::string_view field) {
    if (field.find_first_of(",\"\r\n") == std::string_view::npos) {
        line += field;
        return;
    }
    line += '"';
    for (const char c : field) line.append(c == '"' ? 2 : 1, c);
    line += '"';
}

void append_number(std::string& line, double number) {
    std::array<char, 32> digits;
    line.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

}  // namespace tool
