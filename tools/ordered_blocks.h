// Threads that work on blocks, whose results come out in the order in which the blocks went in.
#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace tool {

// Is used by one thread. No more threads are started than there have been blocks.
template <class Input, class Output>
class ordered_blocks {
public:
    using worker = std::function<Output(const Input& block, const std::stop_token& stop)>;

    // Each thread makes a worker of its own, which is to stop early when it is told to: its results are then not used.
    ordered_blocks(size_t most_threads, std::function<worker()> make_worker)
        : most_threads_(most_threads), make_worker_(std::move(make_worker)) {}
    ~ordered_blocks() {
        for (std::jthread& thread : threads_) thread.request_stop();
    }
    ordered_blocks(const ordered_blocks&) = delete;
    ordered_blocks& operator=(const ordered_blocks&) = delete;

    bool is_empty() const noexcept { return tasks_.empty(); }
    // Whether more blocks would only fill the memory.
    bool is_full() const noexcept { return tasks_.size() >= 4 * most_threads_; }

    void put(Input block) {
        {
            const std::lock_guard lock(mutex_);
            tasks_.push_back(std::make_unique<task>(task{std::move(block)}));
            waiting_.push_back(tasks_.back().get());
        }
        put_.notify_one();
        if (threads_.size() < most_threads_) start_thread();
    }

    // Whether the first result is there.
    bool is_ready() {
        const std::lock_guard lock(mutex_);
        return !tasks_.empty() && tasks_.front()->is_done;
    }
    // Waits for the first result, and fails as its worker did.
    Output take() {
        std::unique_lock lock(mutex_);
        done_.wait(lock, [&] { return tasks_.front()->is_done; });
        const std::unique_ptr<task> first = std::move(tasks_.front());
        tasks_.pop_front();
        if (first->failure != nullptr) std::rethrow_exception(first->failure);
        return std::move(first->output);
    }

private:
    struct task {
        Input input;
        Output output{};
        std::exception_ptr failure{};
        bool is_done = false;
    };

    // Where the system gives no more threads, those that there are do all the work.
    void start_thread() {
        try {
            threads_.emplace_back([this](const std::stop_token& stop) { work(stop); });
        } catch (const std::system_error&) {
            if (threads_.empty()) throw;
            most_threads_ = threads_.size();
        }
    }

    void work(const std::stop_token& stop) {
        worker own;
        while (task* const next = wait_for_task(stop)) {
            try {
                if (!own) own = make_worker_();
                next->output = own(next->input, stop);
            } catch (...) {
                next->failure = std::current_exception();
            }
            const std::lock_guard lock(mutex_);
            next->is_done = true;
            done_.notify_one();
        }
    }

    // Null when there is to be no more work.
    task* wait_for_task(const std::stop_token& stop) {
        std::unique_lock lock(mutex_);
        if (!put_.wait(lock, stop, [&] { return !waiting_.empty(); }) || stop.stop_requested())
            return nullptr;
        task* const next = waiting_.front();
        waiting_.pop_front();
        return next;
    }

    size_t most_threads_;
    std::function<worker()> make_worker_;
    std::mutex mutex_;
    std::condition_variable_any put_;
    std::condition_variable done_;
    std::deque<std::unique_ptr<task>> tasks_;  // of which no result was taken
    std::deque<task*> waiting_;                // of which none has been begun
    std::vector<std::jthread> threads_;        // the last member: they use the others until they have ended
};

}  // namespace tool
