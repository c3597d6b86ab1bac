#include "sizes.h"

#include <charconv>
#include <cstring>

namespace quarn {

size_text format_size(std::size_t value) noexcept {
    size_text result{};
    if (value == largest_size)
        std::strcpy(result.data(), "HUGE");
    else
        std::to_chars(result.data(), result.data() + result.size() - 1, value);
    return result;
}

}  // namespace quarn
