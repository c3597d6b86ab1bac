// Memory: the allocation services, owned texts, and arrays of doubles aligned for the widest vectors.
//
// All heap memory of the library comes from the global operator new, in its throwing, non-throwing and aligned forms:
// a program (a test) that replaces it sees every allocation and can make any of them fail.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

namespace quarn {

// The size that no request can have; stands for sizes that were too large to compute.
constexpr std::size_t largest_size = static_cast<std::size_t>(-1);

// The bytes of memory that this machine has. The system may promise more than that and fail only when it is written to,
// so whoever asks for much checks first.
std::size_t machine_memory() noexcept;

// Memory for the caller to release(). Fails with std::bad_alloc, for the largest size without asking the system.
void* allocate(std::size_t size);
void release(void* block) noexcept;

struct releaser {
    void operator()(void* block) const noexcept { release(block); }
};

// A heap copy of a C string; null where there is none.
using text = std::unique_ptr<char[], releaser>;
text duplicate_string(const char* source);

// An owned array of doubles, aligned to a cache line. Its contents are not initialised. One that this machine cannot hold
// fails with std::bad_alloc.
class number_array {
public:
    static constexpr std::size_t alignment = 64;

    number_array() = default;
    explicit number_array(std::size_t count);
    number_array(number_array&& other) noexcept { swap(other); }
    number_array& operator=(number_array&& other) noexcept {
        number_array taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~number_array();

    number_array copy() const;
    // Keeps the first count numbers; never fails.
    void shrink(std::size_t count) noexcept;
    void swap(number_array& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
    }

    double* data() noexcept { return data_; }
    const double* data() const noexcept { return data_; }
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    double& operator[](std::size_t i) noexcept { return data_[i]; }
    double operator[](std::size_t i) const noexcept { return data_[i]; }
    double* begin() noexcept { return data_; }
    double* end() noexcept { return data_ + size_; }
    const double* begin() const noexcept { return data_; }
    const double* end() const noexcept { return data_ + size_; }
    std::span<double> span() noexcept { return {data_, size_}; }
    std::span<const double> span() const noexcept { return {data_, size_}; }

private:
    double* data_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace quarn
