// How work is dealt out to threads, and what becomes of it when threads, joins or memory fail.
#include "parallel.h"

#include <cerrno>
#include <csignal>

#include <gtest/gtest.h>

#include "fault_plan.h"
#include "node.h"
#include "table_operations.h"

using namespace quarn;
static unsigned starts, failing_starts,
    failing_joins;  // failing: a bit for each call, the lowest for the next
static bool next_fails(unsigned& failing) { return std::exchange(failing, failing >> 1) & 1; }

extern "C" {  // the linker leads the calls of the tested code here
decltype(pthread_create) __real_pthread_create;
decltype(pthread_join) __real_pthread_join;
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* how, void* (*run)(void*), void* given) {
    ++starts;
    return next_fails(failing_starts) ? EAGAIN : __real_pthread_create(thread, how, run, given);
}
int __wrap_pthread_join(pthread_t thread, void** result) {
    return __real_pthread_join(thread, result) + (next_fails(failing_joins) ? ESRCH : 0);
}
}

TEST(parallel, every_slice_has_the_grain_and_every_step_is_in_one_slice) {
    const std::size_t cases[][4] = {{8, 2000, 4, 1}, {14, 2000, 4, 2}, {40, 2000, 4, 4}, {40, 1999, 8, 6}};
    for (const auto& [count, work, level, slices] : cases)
        EXPECT_EQ(slice_count(count, work, {level, 10000}), slices) << count;
    for (std::size_t count = 7; count < 99; ++count)
        for (std::size_t i = 0, end = 0; i < 7; end += slice_of(count, 7, i++).count)
            EXPECT_TRUE(slice_of(count, 7, i).first == end &&
                        slice_of(count, 7, i).count == (count + 6 - i) / 7);
}

TEST(parallel, failures_leave_nothing_undone_or_done_twice) {
    domain owner;
    node* nodes[2];
    for (auto& n : nodes) (n = &create_node(owner, q_category_chance, q_kind_discrete))->state_count = 12;
    const std::vector<double> smaller(12, 3), product(144, 15);
    for (unsigned failing = 0; failing < 256; ++failing) {
        std::vector<double> larger(144, 5);
        starts = 0, failing_starts = failing & 15, failing_joins = failing >> 4;
        multiply(make_loop_plan(nodes, {nodes, 1}), larger.data(), smaller.data(), {4, 1});
        EXPECT_TRUE(starts == 4 && larger == product) << failing;
    }
    multiply(make_loop_plan(nodes, {nodes, 1}), std::vector(product).data(), smaller.data(), {1, 1});
    for (std::size_t n = 0; n < 2 && fault_plan::are_possible(); ++n) {
        const fault_plan armed(n, false);
        EXPECT_THROW(run_slices(4, 4, 1, [](slice_range, double*) { ADD_FAILURE(); }), std::bad_alloc);
    }
    EXPECT_EQ(starts, 4u);
}

TEST(parallel, threads_take_no_signals_of_the_host) {
    sigset_t before, after;
    pthread_sigmask(SIG_BLOCK, nullptr, &before);
    run_slices(3, 3, 0, [](slice_range, double*) {
        sigset_t mask;
        pthread_sigmask(SIG_BLOCK, nullptr, &mask);
        for (int number : {SIGHUP, SIGINT, SIGTERM, SIGUSR1}) EXPECT_TRUE(sigismember(&mask, number));
    });
    pthread_sigmask(SIG_BLOCK, nullptr, &after);
    for (int number = 1; number < 32; ++number)
        EXPECT_EQ(sigismember(&after, number), sigismember(&before, number));
}
