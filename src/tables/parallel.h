// Runs the steps of a loop on several threads. Threads are started for one operation and joined at its end; there is no
// pool, and nothing runs between calls.
#pragma once

#include <cstddef>
#include <memory>

#include "slices.h"

namespace quarn {

// A part of an operation: `steps` steps from `first` on, with the scratch numbers of its thread. Must not throw.
using slice_task = void (*)(const void* operation, slice_range steps, double* scratch);

// Runs the task over `count` steps in `slices` slices, each in a thread of its own (one slice: in the calling thread),
// and waits for all. A slice whose thread does not start is run by the calling thread. Fails with std::bad_alloc, before
// anything is done, when there is no memory for the records of the slices and `scratch` numbers for each.
void run_slices(std::size_t count, std::size_t slices, std::size_t scratch, slice_task task,
                const void* operation);

template <class Operation>
void run_slices(std::size_t count, std::size_t slices, std::size_t scratch, const Operation& operation) {
    run_slices(
        count, slices, scratch,
        [](const void* context, slice_range steps, double* numbers) {
            (*static_cast<const Operation*>(context))(steps, numbers);
        },
        std::addressof(operation));
}

}  // namespace quarn
