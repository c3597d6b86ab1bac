#include "name_index.h"

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

void name_index::remove(const node& named) noexcept {
    if (built_ && named.name) nodes_.erase(named.name.get());
}

}  // namespace quarn
