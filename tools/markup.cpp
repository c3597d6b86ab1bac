#include "markup.h"

#include <array>
#include <charconv>

#include "terminal.h"

namespace tool {

std::string markup(std::string_view text) {
    std::string shown;
    const std::string printable = visible(text);
    for (size_t i = 0; i < printable.size(); ++i) {
        switch (printable[i]) {
        case '<': shown += "&lt;"; break;
        case '>': shown += "&gt;"; break;
        case '&': shown += "&amp;"; break;
        case '"': shown += "&quot;"; break;
        default: shown += printable[i];
        }
        // The last two characters of the basic plane, which XML excludes.
        if (shown.ends_with("\xEF\xBF\xBE") || shown.ends_with("\xEF\xBF\xBF")) shown.back() = '\xBD';
    }
    return shown;
}

std::string coordinate(double value) {
    std::array<char, 32> text{};
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 2);
    std::string shown(text.data(), result.ptr);
    shown.erase(shown.find_last_not_of('0') + 1);
    if (shown.ends_with('.')) shown.pop_back();
    return shown == "-0" ? "0" : shown;
}

std::string element(const char* name, attributes given, std::string_view content) {
    std::string text = std::string("<") + name;
    for (const auto& [key, value] : given)
        if (!value.empty()) text.append(" ").append(key).append("=\"") += markup(value) + "\"";
    return text.append(">").append(content).append("</").append(name).append(">");
}

}  // namespace tool
