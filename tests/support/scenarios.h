// Tables of operations on small networks: those that must be refused, and those that must survive a lack of memory.
#pragma once

#include <functional>
#include <ostream>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

#include "owned_domain.h"

// The error code of the call that has just returned `result`, which is to be `failed` exactly when there is one.
template <class Result>
q_status_t outcome(Result result, Result failed) {
    EXPECT_TRUE(q_error_code() != q_error_none ? result == failed : !(result == failed));
    return q_error_code();
}
template <class Object>
q_status_t outcome(Object* result) {
    return outcome<Object*>(result, nullptr);
}

using network_builder = std::function<owned_domain()>;
using operation = std::function<q_status_t(q_domain_t)>;

struct refusal {
    const char* name;
    q_error_t code;
    operation call;
};

// Each call, on a fresh network, must return its code, leave the same code behind, and leave the network as it was.
void expect_refusals(const network_builder& build, const std::vector<refusal>& calls);

struct allocating_call {
    const char* name;
    network_builder build;
    operation call;
    bool can_do_without = false;  // succeeds, perhaps slower, where some allocation fails
};

inline std::ostream& operator<<(std::ostream& out, const allocating_call& shown) { return out << shown.name; }

// Makes every allocation of the call fail in turn, once and lastingly. Each time it must be refused with
// q_error_no_memory, leave the network as it was and leak nothing, and then, with memory, have the effect that it has
// when nothing fails.
void expect_survives_lack_of_memory(const allocating_call& tested);
