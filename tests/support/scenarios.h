// Tables of calls on small networks: those that must be refused, and those that must survive a lack of memory.
#pragma once
#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

#include "network_building.h"

using network_builder = std::function<owned_domain()>;

// Everything of a domain that the public getters show, as a text: equal texts mean equal domains. Names are looked up,
// not read, as reading gives names to nodes that have none; only some letters, alone and with a number up to 30, are seen.
// Makes the tables of the nodes. Empty for a null.
std::string digest(q_domain_t domain);
// What has been computed, likewise.
std::string digest_of_results(q_domain_t domain);

// The error code of the call that has just returned `result`, which is to tell of a failure exactly when there is one.
template <class Result>
q_status_t outcome(Result result) {
    Result failed = std::numeric_limits<Result>::max();
    if constexpr (std::is_signed_v<Result>) failed = Result(-1);
    if constexpr (std::is_same_v<Result, q_status_t>) return result == failed ? q_error_code() : result;
    EXPECT_EQ(q_error_code() != q_error_none, result == failed);
    return q_error_code();
}
template <class Object>
q_status_t outcome(Object* result) {
    EXPECT_EQ(q_error_code() != q_error_none, result == nullptr);
    return q_error_code();
}

struct allocating_call {
    const char* name;
    network_builder build;
    std::function<q_status_t(q_domain_t)> call;
    bool can_do_without = false;  // succeeds, perhaps slower, where some allocation fails
};
// Makes every allocation of the call fail in turn, once and lastingly. Each time it must be refused with
// q_error_no_memory and leave the network as it was, or do without; leak nothing; and then, with memory, have the effect
// that it has when nothing fails.
void expect_survives_lack_of_memory(const allocating_call& tested);

namespace scenarios {

using nodes = std::vector<q_node_t>;
using numbers = std::vector<double>;

// A call on a network, whose nodes are `n`.
using tested_call = std::function<q_status_t(q_domain_t domain, const nodes& n)>;

template <class Parameter, class Given>
Parameter argument(const nodes& n, Given given) {
    if constexpr (std::is_same_v<Parameter, q_node_t>) return n.at(std::size_t(given));
    if constexpr (std::is_same_v<Parameter, q_table_t>) return q_node_get_table(n.at(std::size_t(given)));
    if constexpr (std::is_convertible_v<Given, Parameter>) return static_cast<Parameter>(given);
}

// A call of a function, after the domain if it takes one: a number stands for a node, or for the table of a node.
template <class Result, class... Parameters, class... Given>
requires(sizeof...(Parameters) == sizeof...(Given)) tested_call
    call(Result (*function)(Parameters...), Given... given) {
    return [=](q_domain_t, const nodes& n) { return outcome(function(argument<Parameters>(n, given)...)); };
}
template <class Result, class... Parameters, class... Given>
requires(sizeof...(Parameters) == sizeof...(Given)) tested_call
    call(Result (*function)(q_domain_t, Parameters...), Given... given) {
    return [=](q_domain_t domain, const nodes& n) {
        return outcome(function(domain, argument<Parameters>(n, given)...));
    };
}

// The call numbered `row`, on a fresh network, must return the code and leave it behind; if it is an error, it must
// leave the network as it was.
void expect_code(const network_builder& build, q_error_t code, const tested_call& call, std::size_t row = 0,
                 const std::function<std::string(q_domain_t)>& state = digest);
// As expect_survives_lack_of_memory(), for the call numbered `row`; any may do without.
void expect_survival(const network_builder& build, const tested_call& tested, bool can_do_without,
                     std::size_t row, const std::function<std::string(q_domain_t)>& state = digest);

template <class... Calls>
void expect_refusals(const network_builder& build, q_error_t code, const Calls&... calls) {
    std::size_t row = 0;
    (expect_code(build, code, calls, row++), ...);
}
template <class... Calls>
void expect_survivals(const network_builder& build, const Calls&... calls) {
    std::size_t row = 0;
    (expect_survival(build, calls, true, row++), ...);
}

}  // namespace scenarios
