#include "attributes.h"

#include <algorithm>

#include "errors.h"
#include "names.h"

namespace quarn {

attribute_list::items::const_iterator attribute_list::find(std::string_view key) const noexcept {
    return std::ranges::find_if(items_, [&](const auto& item) { return key == item->key.get(); });
}

void attribute_list::set(const char* key, const char* value,
                         std::initializer_list<std::string_view> reserved) {
    require(is_identifier(key) && std::ranges::count(reserved, std::string_view(key)) == 0,
            q_error_invalid_name);
    const auto place = find(key);
    if (value == nullptr) {
        if (place == items_.end()) return;
        if (place != items_.begin()) (*std::prev(place))->next = (*place)->next;
        items_.erase(place);
    } else if (place != items_.end()) {
        (*place)->value = duplicate_string(value);
    } else {
        append(key, value);
    }
}

void attribute_list::append(const char* key, const char* value) {
    auto added = std::make_unique<q_attribute>();
    added->key = duplicate_string(key);
    added->value = duplicate_string(value);
    items_.push_back(std::move(added));
    if (items_.size() > 1) items_[items_.size() - 2]->next = items_.back().get();
}

const char* attribute_list::value_of(const char* key) const noexcept {
    const auto place = find(key);
    return place == items_.end() ? nullptr : (*place)->value.get();
}

attribute_list attribute_list::copy() const {
    attribute_list result;
    for (const auto& item : items_) result.append(item->key.get(), item->value.get());
    return result;
}

}  // namespace quarn
