#include "parallel.h"

#include <atomic>
#include <csignal>
#include <pthread.h>
#include <sched.h>
#include <vector>

#include "allocation.h"

namespace quarn {
namespace {

struct slice {
    // Whoever comes first, its thread or the caller in its stead, does the work.
    void run_once() noexcept {
        if (!claimed.test_and_set()) {
            task(operation, steps, scratch);
            done.test_and_set();
        }
    }

    slice_task task = nullptr;
    const void* operation = nullptr;
    slice_range steps{0, 0};
    double* scratch = nullptr;
    pthread_t thread{};
    bool started = false;
    std::atomic_flag claimed;
    std::atomic_flag done;
};

void* run_thread(void* given) {
    static_cast<slice*>(given)->run_once();
    return nullptr;
}

// The host's signal handlers do not expect to run in our threads: these inherit a mask that blocks everything.
class blocked_signals {
public:
    blocked_signals() noexcept {
        sigset_t all;
        sigfillset(&all);
        restored_ = pthread_sigmask(SIG_SETMASK, &all, &before_) == 0;
    }
    ~blocked_signals() {
        if (restored_) pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    blocked_signals(const blocked_signals&) = delete;
    blocked_signals& operator=(const blocked_signals&) = delete;

private:
    sigset_t before_{};
    bool restored_;
};

void start_thread(slice& run) noexcept {
    run.started = pthread_create(&run.thread, nullptr, run_thread, &run) == 0;
}

void finish(slice& run) noexcept {
    if (run.started && pthread_join(run.thread, nullptr) == 0) return;
    run.run_once();
    while (!run.done.test()) sched_yield();
}

}  // namespace

void run_slices(std::size_t count, std::size_t slices, std::size_t scratch, slice_task task,
                const void* operation) {
    number_array numbers(scratch == 0 ? 0 : slices * scratch);
    if (slices < 2) return task(operation, {0, count}, numbers.data());

    std::vector<slice> runs(slices);
    for (std::size_t i = 0; i < slices; ++i) {
        runs[i].task = task;
        runs[i].operation = operation;
        runs[i].steps = slice_of(count, slices, i);
        runs[i].scratch = numbers.data() + i * scratch;
    }
    {
        const blocked_signals while_starting;
        for (std::size_t i = 0; i < slices; ++i) start_thread(runs[i]);
    }
    for (std::size_t i = 0; i < slices; ++i) finish(runs[i]);
}

}  // namespace quarn
