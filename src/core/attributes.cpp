#include "attributes.h"

#include <algorithm>

#include "errors.h"
#include "names.h"

namespace quarn {

void attribute_list::set(const char* key, const char* value,
                         std::initializer_list<std::string_view> reserved) {
    require(is_identifier(key) && std::ranges::count(reserved, std::string_view(key)) == 0,
            q_error_invalid_name);
    const auto present = by_key_.find(key);
    if (present == by_key_.end()) {
        if (value != nullptr) append(key, value);
    } else if (value != nullptr) {
        present->second->value = duplicate_string(value);
    } else {
        remove(*present->second);
    }
}

void attribute_list::append(const char* key, const char* value) {
    auto added = std::make_unique<q_attribute>();
    added->key = duplicate_string(key);
    added->value = duplicate_string(value);
    added->previous = last_;
    const std::string_view own_key = added->key.get();
    q_attribute* const linked = by_key_.emplace(own_key, std::move(added)).first->second.get();
    (last_ != nullptr ? last_->next : first_) = linked;
    last_ = linked;
}

void attribute_list::remove(q_attribute& removed) noexcept {
    (removed.previous != nullptr ? removed.previous->next : first_) = removed.next;
    (removed.next != nullptr ? removed.next->previous : last_) = removed.previous;
    by_key_.erase(removed.key.get());
}

const char* attribute_list::value_of(const char* key) const noexcept {
    const auto present = by_key_.find(key);
    return present == by_key_.end() ? nullptr : present->second->value.get();
}

attribute_list attribute_list::copy() const {
    attribute_list result;
    for (const q_attribute* next = first_; next != nullptr; next = next->next)
        result.append(next->key.get(), next->value.get());
    return result;
}

}  // namespace quarn
