// The error codes, and null handles and pointers in every place of every function.
#include <fstream>
#include <map>
#include <set>
#include <thread>
#include <tuple>

#include "functions.h"
#include "network_building.h"

namespace {

TEST(errors, every_code_has_a_name_and_a_description) {
    std::map<uint32_t, const char*> names{{0, "none"},           {5, "twice"},  {28, "compressed"},
                                          {43, "locale"},        {47, "error"}, {48, "no_such_error"},
                                          {~0u, "no_such_error"}};
    for (const auto& [code, name] : names) EXPECT_STREQ(q_error_name(code), name);
    EXPECT_STREQ(q_error_description(28), "The operation is not supported on compressed domains.");
    EXPECT_STREQ(q_error_description(48), "No such error.");
    std::set<std::string> texts;
    for (uint32_t code = 0; code < 44; ++code)
        for (const char* text : {q_error_name(code), q_error_description(code)})
            EXPECT_TRUE(texts.insert(text).second) << code;
}

TEST(errors, each_thread_has_the_code_of_its_last_call) {
    EXPECT_EQ(q_domain_delete(nullptr), q_error_usage);
    q_error_description(500);
    std::thread([] {
        EXPECT_EQ(q_error_code(), q_error_none);
        EXPECT_EQ(q_domain_set_attribute(owned_domain(q_domain_new()).get(), "no key", ""),
                  q_error_invalid_name);
    }).join();
    EXPECT_EQ(q_error_code(), q_error_usage);
    q_domain_delete(q_domain_new());
    EXPECT_EQ(q_error_code(), q_error_none);
}

// A valid argument; where there is none, it is in a function whose only argument it is.
template <class T>
T valid(q_domain_t domain) {
    static const char* labels[] = {"a", nullptr};
    static int32_t places[2], next = 0;
    static const q_node_t no_nodes[] = {nullptr};
    q_node_t node = q_domain_get_first_node(domain);
    if constexpr (std::is_same_v<T, q_domain_t>) return domain;
    if constexpr (std::is_same_v<T, q_node_t>) return node;
    if constexpr (std::is_same_v<T, q_table_t>) return q_node_get_table(node);
    if constexpr (std::is_same_v<T, const char*>) return labels[0];
    if constexpr (std::is_same_v<T, const char* const*>) return labels;
    if constexpr (std::is_same_v<T, const q_node_t*>) return no_nodes;
    if constexpr (std::is_same_v<T, int32_t*>) return &places[next++ % 2];
    return T{};
}

// User data, callbacks and their data may be null, the value of an attribute, the expression of a model, and lists that
// delete stored ones.
template <class T>
constexpr bool may_be_null =
    !std::is_pointer_v<T> || std::is_same_v<T, void*> || std::is_function_v<std::remove_pointer_t<T>>;

template <class Result, class... Parameters>
void expect_nulls_refused(const std::string& name, Result (*function)(Parameters...)) {
    const bool optional[] = {may_be_null<Parameters>...};
    for (std::size_t null = 0; null < sizeof...(Parameters); ++null) {
        if (optional[null] || (null == 2 && name.ends_with("_set_attribute"))) continue;
        if (null == 2 && name == "q_model_set_expression") continue;
        if (null == 1 &&
            (name.ends_with("_set_initial_triangulation") || name.ends_with("_set_excluded_nodes")))
            continue;
        const owned_domain domain = network("cd");
        std::tuple<Parameters...> arguments{valid<Parameters>(domain.get())...};
        std::size_t place = 0;
        std::apply([&](auto&... each) { (void(place++ == null ? each = {} : each), ...); }, arguments);
        EXPECT_EQ(std::apply(function, arguments), failure_of<Result>(name, q_error_usage))
            << name << ", argument " << null;
        EXPECT_EQ(q_error_code(), q_error_usage) << name << ", argument " << null;
    }
}

TEST(errors, null_handles_are_refused_in_every_place) {
    const std::vector<std::string> names = function_names();
    auto expect_all_refused = [name = names.begin()](auto... functions) mutable {
        (expect_nulls_refused(*name++, functions), ...);
    };
    expect_all_refused(FUNCTIONS);

    std::set<std::string> declared, covered(names.begin(), names.end());
    std::ifstream header(QUARN_SOURCE_DIR "/include/quarn.h");
    for (std::string line; std::getline(header, line);)
        if (line.starts_with("Q_API")) {
            line.erase(line.find('('));
            declared.insert(line.substr(line.rfind(' ') + 1));
        }
    covered.insert(
        {"q_error_code", "q_error_name", "q_error_description", "q_domain_new", "q_string_delete"});
    EXPECT_EQ(covered, declared);
}

}  // namespace
