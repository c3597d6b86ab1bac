// Makes allocations fail on purpose. A program that links this file allocates through it: the forms of the global
// operators new and delete that the library uses are replaced, by malloc and free as far as sanitizers are concerned.
#pragma once
#include <array>
#include <cstddef>

// While it is armed, the n-th allocation (from 0) of the thread that made it fails: that one only, or also all that
// follow. Only one at a time. The blocks allocated meanwhile are followed until the end of its life.
class allocation_faults {
public:
    allocation_faults(std::size_t n, bool lasting);
    ~allocation_faults();
    allocation_faults(const allocation_faults&) = delete;
    allocation_faults& operator=(const allocation_faults&) = delete;

    // Lets allocations succeed again, unfollowed; whether one has failed.
    bool stop() noexcept;
    // How many of the blocks that were allocated while this was armed are not freed yet.
    std::size_t leaked() const noexcept { return followed_; }

    // False where the operators are not in use: valgrind puts its own in their place unless it is asked not to
    // (--soname-synonyms=somalloc=nouserintercepts).
    static bool are_possible();

private:
    friend struct allocation_hooks;
    std::size_t remaining_;
    bool lasting_;
    bool fired_ = false;
    std::array<void*, 20000> blocks_;
    std::size_t followed_ = 0;
};
