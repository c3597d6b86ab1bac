#include "fault_plan.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

constinit thread_local fault_plan* following = nullptr;
constinit thread_local bool armed = false;

}  // namespace

struct allocation_hooks {
    static void* allocate(std::size_t size, std::size_t alignment = 1) noexcept {
        fault_plan* const plan = armed ? following : nullptr;
        if (fault_plan::fails(fallible::allocation)) return nullptr;
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
        for (fault_plan* plan = block == nullptr ? nullptr : following; plan != nullptr;
             plan = plan->outer_) {
            void** const end = plan->blocks_.data() + plan->followed_;
            if (void** const found = std::find(plan->blocks_.data(), end, block); found != end) {
                *found = end[-1];
                --plan->followed_;
            }
        }
        std::free(block);
    }
};

fault_plan::fault_plan(std::size_t n, bool lasting, unsigned kinds, std::size_t distance)
    : outer_(following),
      first_(n),
      second_(distance == never ? never : n + distance),
      lasting_(lasting),
      kinds_(kinds) {
    following = this;
    armed = true;
}
fault_plan::~fault_plan() {
    armed = false;
    following = outer_;
}
bool fault_plan::fails(unsigned kind) noexcept {
    if (!armed || (following->kinds_ & kind) == 0) return false;
    fault_plan& plan = *following;
    const std::size_t place = plan.seen_++;
    if (place != plan.first_ && place != plan.second_ && !(plan.lasting_ && place > plan.first_))
        return false;
    if (plan.failures_++ == 0) plan.first_kind_ = kind;
    return true;
}
bool fault_plan::stop() noexcept {
    armed = false;
    return failures_ > 0;
}
bool fault_plan::are_possible() {
    fault_plan plan(0, false);
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
