// A growable list of pointers that always ends with a null, as the public interface hands it out.
#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace quarn {

template <class T>
class handle_list {
public:
    // The null-terminated array; never null itself, never allocates.
    T* const* array() const noexcept { return items_.empty() ? &none : items_.data(); }

    std::size_t size() const noexcept { return items_.empty() ? 0 : items_.size() - 1; }
    bool empty() const noexcept { return size() == 0; }
    T* const* begin() const noexcept { return array(); }
    T* const* end() const noexcept { return array() + size(); }
    T* operator[](std::size_t i) const noexcept { return items_[i]; }

    // Position of an item; size() when it is not in the list.
    std::size_t index_of(const T* item) const noexcept {
        return static_cast<std::size_t>(std::find(begin(), end(), item) - begin());
    }
    bool contains(const T* item) const noexcept { return index_of(item) < size(); }

    // Room for that many items; until they are there append() and insert() cannot fail.
    void reserve(std::size_t count) {
        if (count + 1 > items_.capacity()) items_.reserve(std::max(count + 1, 2 * items_.capacity()));
    }
    void reserve_one_more() { reserve(size() + 1); }
    bool has_room(std::size_t more) const noexcept { return size() + more + 1 <= items_.capacity(); }

    void append(T* item) {
        reserve_one_more();
        if (items_.empty()) items_.push_back(nullptr);
        items_.back() = item;
        items_.push_back(nullptr);
    }
    void insert(std::size_t position, T* item) {
        append(item);
        std::rotate(items_.begin() + offset(position), items_.end() - 2, items_.end() - 1);
    }
    void replace(std::size_t position, T* item) noexcept { items_[position] = item; }
    void erase(std::size_t position) noexcept { items_.erase(items_.begin() + offset(position)); }
    void remove(const T* item) noexcept {
        if (const std::size_t position = index_of(item); position < size()) erase(position);
    }
    void clear() noexcept { items_.clear(); }
    void swap(handle_list& other) noexcept { items_.swap(other.items_); }

private:
    static std::ptrdiff_t offset(std::size_t position) noexcept {
        return static_cast<std::ptrdiff_t>(position);
    }

    static constexpr T* none = nullptr;
    std::vector<T*> items_;  // empty, or ended by null
};

// Items that are appended in two steps: making room, which can fail and leaves the list and its array as they are, and the
// commitment, which cannot fail. The list must not change in between.
template <class T>
class prepared_append {
public:
    prepared_append(handle_list<T>& list, std::vector<T*> items) : list_(&list), items_(std::move(items)) {
        if (list.has_room(items_.size())) return;
        longer_.reserve(2 * list.size() + items_.size());
        for (T* present : list) longer_.append(present);
    }
    prepared_append(handle_list<T>& list, T* item) : prepared_append(list, std::vector{item}) {}
    void commit() noexcept {
        if (!list_->has_room(items_.size())) list_->swap(longer_);
        for (T* item : items_) list_->append(item);
    }

private:
    handle_list<T>* list_;
    std::vector<T*> items_;
    handle_list<T> longer_;
};

}  // namespace quarn
