#include "name_index.h"

#include <string>

#include "node.h"

namespace quarn {

node* name_index::find(const domain& searched, const char* name) noexcept {
    if (searched.node_count >= smallest_indexed_domain && (built_ || build(searched))) {
        const auto place = nodes_.find(name);
        return place == nodes_.end() ? nullptr : place->second;
    }
    const std::string_view wanted = name;
    for (node* candidate = searched.newest; candidate != nullptr; candidate = candidate->older)
        if (candidate->name && wanted == candidate->name.get()) return candidate;
    return nullptr;
}

bool name_index::build(const domain& indexed) noexcept {
    try {
        nodes_.reserve(indexed.node_count);
        for (node* added = indexed.newest; added != nullptr; added = added->older)
            if (added->name) nodes_.emplace(added->name.get(), added);
        built_ = true;
    } catch (...) {
        nodes_.clear();
        built_ = false;
    }
    return built_;
}

void name_index::add(node& named) noexcept {
    if (!built_) return;
    try {
        nodes_.emplace(named.name.get(), &named);
    } catch (...) {
        nodes_.clear();
        built_ = false;
    }
}

std::size_t name_index::first_free_number(const domain& searched, char letter, std::size_t from) {
    if (taken_.letter != letter || from < taken_.first || from > taken_.end) taken_ = {letter, from, from};
    std::string name;
    const auto is_taken = [&](std::size_t number) {
        name.assign(1, letter);
        name.append(std::to_string(number));
        return find(searched, name.c_str()) != nullptr;
    };
    while (is_taken(taken_.end)) ++taken_.end;
    return taken_.end;
}

void name_index::remove(const node& named) noexcept {
    taken_ = {};
    if (built_ && named.name) nodes_.erase(named.name.get());
}

}  // namespace quarn
