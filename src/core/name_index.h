// Finds nodes by name: a linear search in small domains, a hash index, built at need, in larger ones.
#pragma once

#include <string_view>
#include <unordered_map>

#include "quarn.h"

namespace quarn {

class name_index {
public:
    // Null when there is none. Never fails: without memory for the index the nodes are searched in turn.
    q_node* find(const q_domain& searched, const char* name) noexcept;
    // To be called after a node got its name; the index is dropped when there is no memory for the entry.
    void add(q_node& named) noexcept;
    // The first number from `from` on that makes a free name after the letter.
    std::size_t first_free_number(const q_domain& searched, char letter, std::size_t from);
    // To be called before a node loses its name.
    void remove(const q_node& named) noexcept;

private:
    bool build(const q_domain& indexed) noexcept;

    // Numbers that are known to be taken after a letter: first .. end - 1. Saves trying them again.
    struct taken_numbers {
        char letter = '\0';
        std::size_t first = 0;
        std::size_t end = 0;
    };
    taken_numbers taken_;

    static constexpr std::size_t smallest_indexed_domain = 11;
    bool built_ = false;
    std::unordered_map<std::string_view, q_node*> nodes_;  // keys point into the nodes' own names
};

}  // namespace quarn
