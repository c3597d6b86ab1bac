// User attributes of domains and nodes: texts under identifier keys, in the order in which the keys were first set.
#pragma once

#include <initializer_list>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "allocation.h"
#include "quarn.h"

struct q_attribute {
    quarn::text key;
    quarn::text value;
    q_attribute* previous = nullptr;
    q_attribute* next = nullptr;
};

namespace quarn {

class attribute_list {
public:
    // A null value removes. Fails with q_error_invalid_name for a key that is no identifier or is reserved.
    void set(const char* key, const char* value, std::initializer_list<std::string_view> reserved);
    // Null when there is none.
    const char* value_of(const char* key) const noexcept;
    q_attribute* first() const noexcept { return first_; }

    attribute_list copy() const;

private:
    void append(const char* key, const char* value);
    void remove(q_attribute& removed) noexcept;

    // The keys point into the attributes.
    std::unordered_map<std::string_view, std::unique_ptr<q_attribute>> by_key_;
    q_attribute* first_ = nullptr;
    q_attribute* last_ = nullptr;
};

}  // namespace quarn
