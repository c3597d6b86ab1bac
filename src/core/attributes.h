// User attributes of domains and nodes: texts under identifier keys, in the order in which the keys were first set.
#pragma once

#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

#include "allocation.h"
#include "quarn.h"

struct q_attribute {
    quarn::text key;
    quarn::text value;
    q_attribute* next = nullptr;
};

namespace quarn {

class attribute_list {
public:
    // A null value removes. Fails with q_error_invalid_name for a key that is no identifier or is reserved.
    void set(const char* key, const char* value, std::initializer_list<std::string_view> reserved);
    // Null when there is none.
    const char* value_of(const char* key) const noexcept;
    q_attribute* first() const noexcept { return items_.empty() ? nullptr : items_.front().get(); }

    attribute_list copy() const;

private:
    using items = std::vector<std::unique_ptr<q_attribute>>;

    items::const_iterator find(std::string_view key) const noexcept;
    void append(const char* key, const char* value);

    items items_;
};

}  // namespace quarn
