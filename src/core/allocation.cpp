#include "allocation.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <unistd.h>

#include "sizes.h"

namespace quarn {

std::size_t machine_memory() noexcept {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long page_size = sysconf(_SC_PAGESIZE);
    if (pages < 0 || page_size < 0) return largest_size;
    return saturating_product(static_cast<std::size_t>(pages), static_cast<std::size_t>(page_size));
}

void* allocate(std::size_t size) {
    if (size == largest_size) throw std::bad_alloc();
    return ::operator new(size);
}

void release(void* block) noexcept { ::operator delete(block); }

text duplicate_string(const char* source) {
    if (source == nullptr) return nullptr;
    const std::size_t size = std::strlen(source) + 1;
    text copy(static_cast<char*>(allocate(size)));
    std::memcpy(copy.get(), source, size);
    return copy;
}

namespace {

constexpr std::align_val_t array_alignment{number_array::alignment};

}  // namespace

number_array::number_array(std::size_t count) {
    const std::size_t bytes = saturating_product(count, sizeof(double));
    constexpr std::size_t worth_checking = std::size_t{1} << 30;
    constexpr std::size_t largest_array =
        largest_size / 2;  // beyond it rounding up to the alignment could wrap
    if (bytes > largest_array || (bytes >= worth_checking && bytes > machine_memory()))
        throw std::bad_alloc();
    if (count > 0) data_ = static_cast<double*>(::operator new(bytes, array_alignment));
    size_ = count;
}

number_array::~number_array() { ::operator delete(data_, array_alignment); }

number_array number_array::copy() const {
    number_array result(size_);
    std::copy(begin(), end(), result.begin());
    return result;
}

void number_array::shrink(std::size_t count) noexcept {
    if (count >= size_) return;
    number_array smaller;
    smaller.data_ = static_cast<double*>(
        ::operator new(std::max<std::size_t>(count, 1) * sizeof(double), array_alignment, std::nothrow));
    smaller.size_ = count;
    if (smaller.data_ == nullptr) {
        smaller.size_ = 0;
        size_ = count;  // the block stays as it is, a little too large
        return;
    }
    std::copy(begin(), begin() + count, smaller.begin());
    swap(smaller);
}

}  // namespace quarn
