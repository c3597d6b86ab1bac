// Every function of the interface on networks of all kinds, with every operation that may fail failing in turn: allocations,
// what is done with files, the switch of the locale, starts and ends of threads.
#include <clocale>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <unistd.h>

#include "any_call.h"
#include "fault_plan.h"
#include "functions.h"
#include "scenarios.h"
#include "texts.h"

namespace {

namespace fs = std::filesystem;

// --- Networks.

constexpr const char* mixed = R"(net { first = "by hand"; }
    node A { label = "first"; states = ("no" "yes"); first = "1"; }
    node B { subtype = number; states = ("" "" ""); state_values = (0 1 2); }
    node C { states = ("x" "y"); } node I { subtype = interval; states = ("" ""); state_values = (0 1 2); }
    continuous node X {} continuous node Y {} function F {} discrete function G { states = ("one" "two"); }
    potential (A) { data = (1 3); experience = (10); fading = (1); }
    potential (B | A) { model_nodes = (A); model_data = (1, Distribution(1, 2, 1)); data = ((1 2 3) (3 2 1)); }
    potential (C | A B) { data = (1 2 3 4 5 6 6 5 4 3 2 1); experience = (1 2 3 4 5 6); }
    potential (I | C) { model_nodes = (); model_data = (if(C == "x", 0.5, 1.5)); data = (1 2 2 1); }
    potential (X | A) { data = (normal(0, 1) normal(1, 2)); } potential (Y | C X) { data = (normal(1 + 2 * X, 1) normal(1, 2)); }
    potential (F | I) { model_nodes = (); model_data = (I + variance(I)); }
    potential (G | A) { model_nodes = (); model_data = (if(probability(A == "no") > 0.5, "one", "two")); data = (1 1); })";
constexpr const char* diagram = R"(net {} node A { states = ("no" "yes"); } node B { states = ("x" "y"); }
    node C { states = ("x" "y"); } decision D { states = ("a" "b"); } decision E { states = ("c" "d" "e"); }
    utility U {} utility V {} function F {}
    potential (A) { data = (0.3 0.7); } potential (B | A) { data = (0.9 0.1 0.2 0.8); } potential (D | B) {}
    potential (C | D A) { data = (1 2 3 4 5 6 7 8); } potential (E | B D) {}
    potential (U | D A) { data = (10 -3 0 4); } potential (V | E D) { data = (1 2 3 6 5 4); }
    potential (F | U V) { model_nodes = (); model_data = (U + 2 * V); })";
constexpr const char* chain = R"(net {} node A { states = ("no" "yes"); } node B { states = ("0" "1"); }
    node C { states = ("0" "1" "2"); } node D { states = ("0" "1"); } node E { states = ("0" "1"); }
    potential (A) { data = (0.3 0.7); } potential (B C | A) { data = (1 2 0 4 5 6 6 5 4 3 2 1); }
    potential (C D) { data = (1 9 3 0 2 2); } potential (D) { data = (0.4 0.6); }
    potential (E | D) { data = (0.2 0.8 0.5 0.5); })";
constexpr const char* sparse = R"(net {} node A { states = ("no" "yes"); } node B { states = ("0" "1" "2"); }
    node C { states = ("0" "1" "2"); } node D { states = ("0" "1" "2"); } node E { states = ("0" "1"); }
    potential (A) { data = (0.3 0.7); } potential (B | A) { data = (1 0 0 0 1 1); } potential (C | B) { data = (1 0 0 0 1 0 0 0 1); }
    potential (D | A C) { data = (1 0 0 1 2 0 0 0 1 0 1 0 1 0 0 0 1 1); } potential (E | D C) {})";

enum class stage { made, observed, propagated, compressed };

struct network_kind {
    const char* name;
    const char* text;
    stage reached = stage::made;
    std::size_t threads = 1;

    // Where results are there, more evidence waits for propagation.
    owned_domain build() const {
        owned_domain domain = read(text);
        q_domain_set_concurrency_level(domain.get(), threads);
        q_domain_set_grain_size(domain.get(), 1);
        q_domain_seed_random(domain.get(), 1);
        digest(domain.get());  // makes tables, on which what is written depends
        const q_node_t a = q_domain_get_node_by_name(domain.get(), "A");
        const q_node_t x = q_domain_get_node_by_name(domain.get(), "X");
        if (reached == stage::observed) q_node_enter_finding(a, 0, 0.25);
        if (reached >= stage::observed && x != nullptr) q_node_enter_value(x, 0.5);
        if (reached < stage::propagated) return domain;
        EXPECT_EQ(propagate(domain), q_error_none);
        if (reached == stage::compressed) {
            EXPECT_GT(q_domain_compress(domain.get()), 0);
            EXPECT_EQ(propagate(domain), q_error_none);
        }
        EXPECT_EQ(q_domain_simulate(domain.get()), q_error_none);
        if (threads > 1) q_node_select_state(a, 1);
        return domain;
    }
};
std::ostream& operator<<(std::ostream& out, const network_kind& shown) { return out << shown.name; }

// --- Calls.

struct result_of_call {
    q_status_t code;
    std::string told;
    unsigned first_kind = 0;
    std::size_t failures = 0, seen = 0;

    bool operator==(const result_of_call& other) const { return code == other.code && told == other.told; }
};

template <class T>
std::string shown(T result) {
    std::ostringstream text;
    text.precision(17);
    if constexpr (!std::is_pointer_v<T>)
        text << result;
    else if constexpr (std::is_same_v<std::remove_cv_t<std::remove_pointer_t<T>>, char>)
        text << (result == nullptr ? "none" : result);
    else
        text << (result != nullptr);
    return text.str();
}

struct plan_data {
    std::size_t n = fault_plan::never;
    bool lasting = false;
    std::size_t distance = fault_plan::never;
};

// Several tests run at a time.
std::string folder() { return testing::TempDir() + "quarn_faults_" + std::to_string(getpid()); }
std::string path() { return folder() + "/file"; }

bool uses_file(const std::string& function) {
    for (const char* part : {"_log_file", "_save_", "_parse_case"})
        if (function.find(part) != std::string::npos) return true;
    return false;
}
void write_old_file(const std::string& function) {
    if (!uses_file(function)) return;
    fs::remove_all(folder());
    fs::create_directories(folder());
    std::ofstream(path()) << R"(A: "yes")";
}
std::string files(const std::string& function) {
    if (!uses_file(function)) return "";
    std::string text;
    for (const auto& entry : fs::directory_iterator(folder()))
        text += entry.path().filename().string() + ": " +
                (std::stringstream() << std::ifstream(entry.path()).rdbuf()).str();
    return text;
}

std::size_t open_files() {
    return std::size_t(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

// What a function makes for its caller.
template <class Result>
void dispose(const std::string& function, Result result) {
    if constexpr (std::is_same_v<Result, q_domain_t>)
        if (function.starts_with("q_net_parse")) q_domain_delete(result);
    if constexpr (std::is_same_v<Result, char*>) q_string_delete(result);
    if constexpr (std::is_same_v<Result, q_expression_t>)
        if (!function.starts_with("q_model_get")) q_expression_delete(result);
}

// Makes the call, with a fault or without.
template <class Result, class... Parameters>
result_of_call perform(const std::string& function, Result (*called)(Parameters...), owned_domain& domain,
                       unsigned seed, const plan_data& asked, std::optional<fault_plan>& plan) {
    call_arguments made({function, seed}, domain.get(), path());
    std::tuple<Parameters...> arguments{made.make<Parameters>()...};
    write_old_file(function);
    if (domain) q_domain_seed_random(domain.get(), 1);
    plan.emplace(asked.n, asked.lasting, unsigned(fallible::all), asked.distance);
    const Result result = std::apply(called, arguments);
    const q_status_t code = q_error_code();
    plan->stop();
    result_of_call found{code, shown(result), plan->first_kind(), plan->failures(), plan->seen()};
    if (code == q_error_no_memory || code == q_error_io || code == q_error_locale) {
        EXPECT_EQ(result, failure_of<Result>(function, code));
    }
    if (code == q_error_none) {
        dispose(function, result);
        const bool takes = function.ends_with("make_composite") || function.ends_with("set_expression") ||
                           function == "q_expression_delete";
        if (takes) made.give_up_trees();
        if (function == "q_domain_delete") (void)domain.release();
    }
    return found;
}

struct tested_function {
    std::string name;
    std::function<result_of_call(owned_domain&, unsigned seed, const plan_data&, std::optional<fault_plan>&)>
        call;

    result_of_call undisturbed(owned_domain& domain, unsigned seed) const {
        std::optional<fault_plan> plan;
        return call(domain, seed, {}, plan);
    }
};
std::vector<tested_function> all_functions() {
    std::vector<tested_function> all;
    const auto add = [&, names = function_names()](auto... functions) {
        ((all.push_back({names.at(all.size()),
                         [name = names.at(all.size()), functions](owned_domain& domain, unsigned seed,
                                                                  const plan_data& asked,
                                                                  std::optional<fault_plan>& plan) {
                             return perform(name, functions, domain, seed, asked, plan);
                         }})),
         ...);
    };
    add(FUNCTIONS);
    return all;
}

// What a failure may leave: most functions leave everything as it was; for the others the header says what is lost.
enum class leaves { everything, structure, anything };
leaves left_by(const std::string& function) {
    static const std::map<std::string, leaves> others{{"q_domain_update_policies", leaves::anything},
                                                      {"q_domain_parse_case", leaves::anything},
                                                      {"q_domain_save_case", leaves::structure},
                                                      {"q_domain_set_log_file", leaves::structure},
                                                      {"q_domain_propagate", leaves::structure},
                                                      {"q_junction_tree_propagate", leaves::structure},
                                                      {"q_clique_propagate", leaves::structure},
                                                      {"q_domain_simulate", leaves::structure},
                                                      {"q_domain_triangulate", leaves::structure},
                                                      {"q_domain_compile", leaves::structure},
                                                      {"q_domain_triangulate_with_order", leaves::structure}};
    const auto found = others.find(function);
    return found == others.end() ? leaves::everything : found->second;
}
std::string left(const std::string& function, leaves what, q_domain_t domain) {
    if (what == leaves::anything) return "";
    return digest(domain) + (what == leaves::everything ? digest_of_results(domain) + files(function) : "");
}
std::string state_before(const network_kind& kind, const std::string& function) {
    write_old_file(function);
    return left(function, left_by(function), kind.build().get());
}
std::string state_after(const std::string& function, q_domain_t domain) {
    return digest(domain) + digest_of_results(domain) + files(function);
}

// The ways to call a function on a network that succeed, at most three: each goes through another number of operations that
// may fail.
struct way {
    unsigned seed;
    result_of_call result;
    std::string after;
};
std::vector<way> ways_of(const network_kind& kind, const tested_function& function) {
    std::vector<way> ways;
    for (unsigned seed = 0; seed < (ways.empty() ? 40 : 20) && ways.size() < 3; ++seed) {
        owned_domain domain = kind.build();
        const result_of_call result = function.undisturbed(domain, seed);
        const auto is_like = [&](const way& known) { return known.result.seen == result.seen; };
        if (result.code != q_error_none || std::ranges::any_of(ways, is_like)) continue;
        ways.push_back({seed, result, state_after(function.name, domain.get())});
        if (result.seen == 0) break;
    }
    return ways;
}

struct counts {
    std::size_t faults = 0, survived = 0;
};

// One run with a fault; false when it went beyond the last operation.
bool expect_endured(const network_kind& kind, const tested_function& function, const way& tested,
                    const plan_data& plan, const std::string& before, counts& count) {
    SCOPED_TRACE(testing::Message() << function.name << '/' << tested.seed << ", operation " << plan.n
                                    << (plan.lasting ? ", lasting" : "") << ", again after "
                                    << plan.distance);
    static const std::map<unsigned, q_status_t> codes{{fallible::allocation, q_error_no_memory},
                                                      {fallible::file, q_error_io},
                                                      {fallible::locale, q_error_locale},
                                                      {fallible::thread, q_error_none}};
    owned_domain domain = kind.build();
    const std::size_t open_before = open_files();
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    std::optional<fault_plan> fault;
    const result_of_call result = function.call(domain, tested.seed, plan, fault);
    // What cannot be restored or removed either stays.
    EXPECT_TRUE(result.failures > 1 || result.first_kind == fallible::locale ||
                std::setlocale(LC_ALL, nullptr) == locale);
    std::setlocale(LC_ALL, locale.c_str());
    if (result.failures == 0) return false;
    if (result.failures > 1) fs::remove(folder() + "/.quarn-0.tmp");
    ++count.faults;
    if (result.code == q_error_none) {
        ++count.survived;
        EXPECT_EQ(result, tested.result);
    } else {
        EXPECT_TRUE(result.failures > 1 || result.code == codes.at(result.first_kind))
            << result.code << " after " << result.first_kind;
        EXPECT_EQ(left(function.name, left_by(function.name), domain.get()), before);
        EXPECT_EQ(function.undisturbed(domain, tested.seed), tested.result);
    }
    EXPECT_EQ(state_after(function.name, domain.get()), tested.after);
    domain.reset();
    EXPECT_EQ(fault->leaked(), 0u);
    EXPECT_EQ(open_files(), open_before);
    return true;
}

const std::vector<network_kind> all_kinds{{"mixed_observed", mixed, stage::observed},
                                          {"mixed_propagated", mixed, stage::propagated},
                                          {"diagram", diagram},
                                          {"diagram_propagated", diagram, stage::propagated},
                                          {"chain_propagated", chain, stage::propagated},
                                          {"sparse_threads", sparse, stage::propagated, 2},
                                          {"sparse_compressed", sparse, stage::compressed}};

class every_function : public testing::TestWithParam<network_kind> {
protected:
    static void SetUpTestSuite() { std::setlocale(LC_MONETARY, "C.UTF-8"); }  // one that has to be switched
    static void TearDownTestSuite() {
        std::setlocale(LC_MONETARY, "C");
        fs::remove_all(folder());
    }
    void SetUp() override {
        if (!fault_plan::are_possible()) GTEST_SKIP() << "another tool has replaced operator new";
    }
    void TearDown() override {
        RecordProperty("faults", std::to_string(count.faults));
        std::printf("%zu faults, %zu of them in calls that could do without\n", count.faults, count.survived);
    }
    counts count;
};

TEST_P(every_function, endures_every_fault) {
    for (const tested_function& function : all_functions()) {
        const std::string before = state_before(GetParam(), function.name);
        for (const way& tested : ways_of(GetParam(), function))
            for (bool lasting : {false, true})
                for (std::size_t n = 0; n < tested.result.seen && !HasFailure(); ++n)
                    if (!expect_endured(GetParam(), function, tested, {n, lasting}, before, count)) break;
    }
}

// Of those that do most, with a second fault in what the first one leads to, or in what comes after it.
TEST_P(every_function, endures_pairs_of_faults) {
    const std::set<std::string> chosen{"q_domain_compile",
                                       "q_domain_compress",
                                       "q_domain_minimize_limid",
                                       "q_domain_parse_case",
                                       "q_domain_parse_expression",
                                       "q_domain_print_beliefs",
                                       "q_domain_propagate",
                                       "q_domain_save_as_net",
                                       "q_domain_save_case",
                                       "q_domain_set_log_file",
                                       "q_domain_simulate",
                                       "q_domain_to_net",
                                       "q_domain_triangulate",
                                       "q_domain_update_policies",
                                       "q_net_parse_domain",
                                       "q_node_add_parent",
                                       "q_node_clone",
                                       "q_node_delete",
                                       "q_node_remove_parent",
                                       "q_node_reorder_states",
                                       "q_node_set_number_of_states",
                                       "q_node_switch_parent"};
    for (const tested_function& function : all_functions()) {
        if (!chosen.contains(function.name)) continue;
        const std::string before = state_before(GetParam(), function.name);
        for (const way& tested : ways_of(GetParam(), function)) {
            const std::size_t step = 1 + tested.result.seen / 40;
            for (std::size_t n = 0; n < tested.result.seen && !HasFailure(); n += step)
                for (std::size_t distance : {1u, 2u, 3u, 5u, 9u})
                    expect_endured(GetParam(), function, tested, {n, false, distance}, before, count);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(of, every_function, testing::ValuesIn(all_kinds),
                         [](const auto& tested) { return std::string(tested.param.name); });

// Else the others would say little.
TEST(every_function_of_the_interface, succeeds_on_some_network) {
    for (const tested_function& function : all_functions()) {
        const auto succeeds = [&](const network_kind& kind) { return !ways_of(kind, function).empty(); };
        EXPECT_TRUE(std::ranges::any_of(all_kinds, succeeds)) << function.name;
    }
}

}  // namespace
