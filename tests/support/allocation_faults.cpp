#include "allocation_faults.h"

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>
#include <unordered_set>

namespace {

// Memory that does not come from the operators below.
template <class T>
struct plain_allocator {
    using value_type = T;
    plain_allocator() = default;
    template <class U>
    explicit plain_allocator(const plain_allocator<U>&) noexcept {}
    T* allocate(std::size_t count) {
        if (void* block = std::malloc(count * sizeof(T))) return static_cast<T*>(block);
        throw std::bad_alloc();
    }
    void deallocate(T* block, std::size_t) noexcept { std::free(block); }
    bool operator==(const plain_allocator&) const = default;
};

constinit std::atomic<allocation_faults*> following{nullptr};
constinit thread_local allocation_faults* armed = nullptr;

}  // namespace

struct allocation_faults::followed_blocks {
    std::mutex access;
    std::unordered_set<void*, std::hash<void*>, std::equal_to<>, plain_allocator<void*>> alive;
};

struct allocation_hooks {
    static void* allocate(std::size_t size, std::size_t alignment) noexcept {
        if (armed != nullptr && must_fail(*armed)) return nullptr;
        if (size == 0) size = 1;
        void* block = nullptr;
        if (alignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__)
            block = std::malloc(size);
        else if (posix_memalign(&block, alignment, size) != 0)
            return nullptr;
        if (armed != nullptr && block != nullptr) {
            const std::scoped_lock lock(armed->blocks_->access);
            armed->blocks_->alive.insert(block);
        }
        return block;
    }

    static void release(void* block) noexcept {
        if (allocation_faults* const plan = following; plan != nullptr && block != nullptr) {
            const std::scoped_lock lock(plan->blocks_->access);
            plan->blocks_->alive.erase(block);
        }
        std::free(block);
    }

    static void* allocate_or_throw(std::size_t size, std::size_t alignment) {
        if (void* block = allocate(size, alignment)) return block;
        throw std::bad_alloc();
    }

private:
    static bool must_fail(allocation_faults& plan) noexcept {
        if (plan.remaining_ > 0) {
            --plan.remaining_;
            return false;
        }
        if (plan.fired_ && !plan.lasting_) return false;
        plan.fired_ = true;
        return true;
    }
};

allocation_faults::allocation_faults(std::size_t n, bool lasting)
    : remaining_(n), lasting_(lasting), blocks_(std::make_unique<followed_blocks>()) {
    following = this;
    armed = this;
}

allocation_faults::~allocation_faults() {
    stop();
    following = nullptr;
}

bool allocation_faults::stop() noexcept {
    armed = nullptr;
    return fired_;
}

std::size_t allocation_faults::leaked() const noexcept {
    const std::scoped_lock lock(blocks_->access);
    return blocks_->alive.size();
}

bool allocation_faults::are_possible() {
    allocation_faults plan(0, false);
    ::operator delete(::operator new(1, std::nothrow));
    return plan.stop();
}

// The operators themselves.
namespace {

constexpr std::size_t unaligned = 1;
std::size_t number(std::align_val_t alignment) { return static_cast<std::size_t>(alignment); }

}  // namespace

using hooks = allocation_hooks;

void* operator new(std::size_t size) { return hooks::allocate_or_throw(size, unaligned); }
void* operator new[](std::size_t size) { return hooks::allocate_or_throw(size, unaligned); }
void* operator new(std::size_t size, std::align_val_t a) { return hooks::allocate_or_throw(size, number(a)); }
void* operator new[](std::size_t size, std::align_val_t a) {
    return hooks::allocate_or_throw(size, number(a));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return hooks::allocate(size, unaligned);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return hooks::allocate(size, unaligned);
}
void* operator new(std::size_t size, std::align_val_t a, const std::nothrow_t&) noexcept {
    return hooks::allocate(size, number(a));
}
void* operator new[](std::size_t size, std::align_val_t a, const std::nothrow_t&) noexcept {
    return hooks::allocate(size, number(a));
}

void operator delete(void* block) noexcept { hooks::release(block); }
void operator delete[](void* block) noexcept { hooks::release(block); }
void operator delete(void* block, std::size_t) noexcept { hooks::release(block); }
void operator delete[](void* block, std::size_t) noexcept { hooks::release(block); }
void operator delete(void* block, std::align_val_t) noexcept { hooks::release(block); }
void operator delete[](void* block, std::align_val_t) noexcept { hooks::release(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { hooks::release(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { hooks::release(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { hooks::release(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { hooks::release(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept { hooks::release(block); }
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    hooks::release(block);
}
