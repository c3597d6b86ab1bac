#include "allocation_faults.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

constinit thread_local allocation_faults* following = nullptr;
constinit thread_local bool armed = false;

}  // namespace

struct allocation_hooks {
    static void* allocate(std::size_t size, std::size_t alignment = 1) noexcept {
        allocation_faults* const plan = armed ? following : nullptr;
        if (plan != nullptr && must_fail(*plan)) return nullptr;
        const std::size_t unit = std::max(alignment, alignof(std::max_align_t));
        if (size > std::size_t(-1) / 2) return nullptr;
        void* const block = alignment > alignof(std::max_align_t)
                                ? std::aligned_alloc(unit, (size + unit - 1) / unit * unit)
                                : std::malloc(std::max<std::size_t>(size, 1));
        if (plan != nullptr && block != nullptr && plan->followed_ < plan->blocks_.size())
            plan->blocks_[plan->followed_++] = block;
        return block;
    }
    static void* allocate_or_throw(std::size_t size, std::size_t alignment = 1) {
        if (void* block = allocate(size, alignment)) return block;
        throw std::bad_alloc();
    }
    static void release(void* block) noexcept {
        if (following != nullptr && block != nullptr) {
            void** const end = following->blocks_.data() + following->followed_;
            if (void** const found = std::find(following->blocks_.data(), end, block); found != end) {
                *found = end[-1];
                --following->followed_;
            }
        }
        std::free(block);
    }

private:
    static bool must_fail(allocation_faults& plan) noexcept {
        if (plan.remaining_ > 0) return --plan.remaining_, false;
        return (!plan.fired_ || plan.lasting_) && (plan.fired_ = true);
    }
};

allocation_faults::allocation_faults(std::size_t n, bool lasting) : remaining_(n), lasting_(lasting) {
    following = this;
    armed = true;
}
allocation_faults::~allocation_faults() {
    armed = false;
    following = nullptr;
}
bool allocation_faults::stop() noexcept {
    armed = false;
    return fired_;
}
bool allocation_faults::are_possible() {
    allocation_faults plan(0, false);
    ::operator delete(::operator new(1, std::nothrow));
    return plan.stop();
}

using hooks = allocation_hooks;
using std::size_t, std::align_val_t, std::nothrow_t;

void* operator new(size_t size) { return hooks::allocate_or_throw(size); }
void* operator new(size_t size, align_val_t a) { return hooks::allocate_or_throw(size, size_t(a)); }
void* operator new(size_t size, const nothrow_t&) noexcept { return hooks::allocate(size); }
void* operator new(size_t size, align_val_t a, const nothrow_t&) noexcept {
    return hooks::allocate(size, size_t(a));
}
void operator delete(void* block) noexcept { hooks::release(block); }
void operator delete(void* block, size_t) noexcept { hooks::release(block); }
void operator delete(void* block, align_val_t) noexcept { hooks::release(block); }
void operator delete(void* block, size_t, align_val_t) noexcept { hooks::release(block); }
