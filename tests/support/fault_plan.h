// Makes operations that may fail do so on purpose. A program that links this file allocates through it: the forms of the
// global operators new and delete that the library uses are replaced, by malloc and free as far as sanitizers are concerned.
// Other operations ask it in programs that wrap them.
#pragma once
#include <array>
#include <cstddef>

namespace fallible {
enum : unsigned { allocation = 1, file = 2, locale = 4, thread = 8, all = 15 };
}

// While it is armed, the n-th operation (from 0) of the thread that made it, counting the given kinds, fails: that one only,
// or also all that follow, or also the one that comes a given number of operations later. The blocks allocated
// meanwhile are followed until the end of its life. Within its life, but not while it is armed, there may be others.
class fault_plan {
public:
    static constexpr std::size_t never = std::size_t(-1);
    fault_plan(std::size_t n, bool lasting, unsigned kinds = fallible::allocation,
               std::size_t distance = never);
    ~fault_plan();
    fault_plan(const fault_plan&) = delete;
    fault_plan& operator=(const fault_plan&) = delete;

    // Lets operations succeed again, blocks unfollowed; whether one has failed.
    bool stop() noexcept;
    // The kind of the first that failed, 0 if none has; and how many have.
    unsigned first_kind() const noexcept { return first_kind_; }
    std::size_t failures() const noexcept { return failures_; }
    // How many operations of the kinds there were.
    std::size_t seen() const noexcept { return seen_; }
    // How many of the blocks that were allocated while this was armed are not freed yet.
    std::size_t leaked() const noexcept { return followed_; }

    // Whether the operation that is about to be done has to fail.
    static bool fails(unsigned kind) noexcept;
    // False where the operators are not in use: valgrind puts its own in their place unless it is asked not to
    // (--soname-synonyms=somalloc=nouserintercepts).
    static bool are_possible();

private:
    friend struct allocation_hooks;
    fault_plan* const outer_;
    const std::size_t first_, second_;
    const bool lasting_;
    const unsigned kinds_;
    std::size_t seen_ = 0, failures_ = 0;
    unsigned first_kind_ = 0;
    std::array<void*, 20000> blocks_;
    std::size_t followed_ = 0;
};
