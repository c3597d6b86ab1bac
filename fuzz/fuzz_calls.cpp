// Any bytes as calls of the public interface, on two domains. Each line is a call: the name of a function, and a character
// for each choice that its arguments take, "0" being the first one and "~" null or senseless; blanks do not count. Of
// another line the first byte chooses the function. Whatever was called, what the header says of all calls must hold.

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <filesystem>
#include <functional>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

#include "functions.h"
#include "network_building.h"

namespace {

using std::size_t, std::string, std::string_view;

constexpr size_t most_nodes = 8, most_states = 4;  // so that an input takes milliseconds
constexpr unsigned senseless = '~' - '0';
constexpr double largest = std::numeric_limits<double>::max();

void require(bool condition, string_view function, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "%.*s: %s\n", int(function.size()), function.data(), what);
    std::abort();
}

// What integers mean, by the end of a function's name and in the order of its arguments.
struct range {
    const char* function;
    int first;
    unsigned count;
};
constexpr range ranges[] = {{"_new_node", q_category_function, 5},
                            {"_new_node", q_kind_other, 3},
                            {"_set_category", q_category_function, 5},
                            {"_set_subtype", q_subtype_label, 4},
                            {"_triangulate", q_triangulate_clique_size, 6},
                            {"_propagate", q_equilibrium_none, 3},
                            {"_propagate", q_mode_normal, 2},
                            {"_equilibrium_is", q_equilibrium_none, 3},
                            {"_mode_is", q_mode_normal, 2},
                            {"_make_composite", q_operator_normal, 54}};

struct session {
    std::array<q_domain_t, 2> domains{q_domain_new(), q_domain_new()};
    std::vector<q_expression_t> trees;  // that belong to no other one and no model

    // Written and read by the calls.
    const string file = std::filesystem::temp_directory_path() / ("quarn_calls." + std::to_string(getpid()));

    // Of the present call.
    string function;
    string_view left;
    size_t integers = 0;
    std::vector<q_expression_t> used;
    q_node_t owner = nullptr;
    q_table_t table = nullptr;
    std::deque<string> texts;
    std::deque<std::vector<const char*>> text_lists;
    std::deque<std::vector<q_node_t>> node_lists;
    std::deque<std::vector<q_expression_t>> expression_lists;
    std::array<int32_t, 2> places{};

    session() = default;
    session(const session&) = delete;
    session& operator=(const session&) = delete;
    ~session() {
        delete_trees();
        for (q_domain_t domain : domains) q_domain_delete(domain);
        std::filesystem::remove(file);
    }

    unsigned next() {
        while (left.starts_with(' ')) left.remove_prefix(1);
        if (left.empty()) return 0;
        const auto byte = static_cast<unsigned char>(left.front());
        left.remove_prefix(1);
        return static_cast<unsigned char>(byte - '0');
    }
    bool is(const char* end) const { return function.ends_with(end); }

    void delete_trees() {
        for (q_expression_t tree : std::exchange(trees, {})) q_expression_delete(tree);
    }

    static std::vector<q_junction_tree_t> trees_of(q_domain_t domain) {
        std::vector<q_junction_tree_t> found;
        for (auto tree = q_domain_get_first_junction_tree(domain); tree != nullptr;
             tree = q_junction_tree_get_next(tree))
            found.push_back(tree);
        return found;
    }
    static std::vector<q_clique_t> cliques_of(q_domain_t domain) {
        std::vector<q_clique_t> found;
        for (q_junction_tree_t tree : trees_of(domain))
            for (q_clique_t clique : listed(q_junction_tree_get_cliques(tree))) found.push_back(clique);
        return found;
    }
    static std::vector<q_attribute_t> attributes_of(q_domain_t domain) {
        std::vector<q_attribute_t> found;
        const auto add = [&](q_attribute_t attribute) {
            for (; attribute != nullptr; attribute = q_attribute_get_next(attribute))
                found.push_back(attribute);
        };
        add(q_domain_get_first_attribute(domain));
        for (q_node_t node : nodes_of(domain)) add(q_node_get_first_attribute(node));
        return found;
    }
    static std::vector<q_model_t> models_of(q_domain_t domain) {
        std::vector<q_model_t> found;
        for (q_node_t node : nodes_of(domain))
            if (q_model_t model = q_node_get_model(node)) found.push_back(model);
        return found;
    }
    static void add_with_arguments(std::vector<q_expression_t>& found, q_expression_t tree) {
        if (tree == nullptr || found.size() > 64) return;
        found.push_back(tree);
        if (q_expression_is_composite(tree) != 1) return;
        for (q_expression_t argument : listed(q_expression_get_arguments(tree)))
            add_with_arguments(found, argument);
    }
    std::vector<q_expression_t> expressions_of(q_domain_t domain) const {
        std::vector<q_expression_t> found = trees;
        for (q_model_t model : models_of(domain))
            for (size_t i = 0; i < std::min<size_t>(q_model_get_size(model), 8); ++i)
                add_with_arguments(found, q_model_get_expression(model, i));
        return found;
    }

    // Mostly one in the first domain.
    template <class List>
    auto one_of(const List& list) {
        const unsigned choice = next();
        const auto items = list(domains[choice % 16 < 14 ? 0 : 1]);
        return choice == senseless || items.empty() ? nullptr : items[choice % 16 % items.size()];
    }

    size_t size() {
        const unsigned choice = next() % 16;
        const size_t large[] = {size_t(-1), size_t(1) << 63, 0, 1, 2, 3};
        const size_t value = choice < 10 ? choice : large[choice - 10];
        const bool is_bounded = is("_number_of_states") || is("_concurrency_level");
        return is_bounded && value < large[1] ? value % (most_states + 1) : is("_level") ? value % 4 : value;
    }
    double number() {
        const unsigned choice = next() % 32;
        const double strange[] = {-1, -0.5, 1e-300, 1e300, largest, HUGE_VAL, -HUGE_VAL, NAN};
        return choice < 24 ? choice / 4.0 : strange[choice - 24];
    }
    int32_t integer() {
        const unsigned choice = next();
        if (choice == senseless) return 1000;
        size_t place = integers++;
        for (const range& meant : ranges)
            if (is(meant.function) && place-- == 0) return meant.first + int32_t(choice % meant.count);
        return int32_t(choice);
    }

    // A path; a letter; or all between quotes.
    const char* text() {
        const bool is_network = function.starts_with("q_net_parse");
        if (is_network || is("_log_file") || is("_as_net") || is("_case")) {
            const unsigned choice = next();
            const char* const paths[] = {"/dev/null", file.c_str(), "/no such folder/file"};
            if (choice == senseless) return nullptr;
            if (!is_network || choice != unsigned(static_cast<unsigned char>('"' - '0')))
                return paths[choice % 3];
            return texts.emplace_back("net {" + quoted()).c_str();
        }
        const auto choice = char(next() + '0');
        if (choice == '~') return nullptr;
        return texts.emplace_back(choice == '"' ? quoted() : string(choice == '_' ? 600 : 1, choice)).c_str();
    }
    string quoted() {
        const size_t end = std::min(left.find('"'), left.size());
        string found(left.substr(0, end));
        left.remove_prefix(std::min(end + 1, left.size()));
        std::ranges::replace(found, '\'', '"');
        return found;
    }

    // Of so many, up to the first null.
    template <class T>
    const T* list(std::deque<std::vector<T>>& lists) {
        const unsigned choice = next();
        if (choice == senseless) return nullptr;
        std::vector<T> items;
        for (unsigned count = choice % 10; count > 0; --count)
            if (const T item = argument<T>()) items.push_back(item);
        items.push_back(nullptr);
        return lists.emplace_back(std::move(items)).data();
    }

    template <class T>
    T argument() {
        if constexpr (std::is_same_v<T, q_domain_t>) {
            const unsigned choice = next();
            return choice == senseless ? nullptr : domains[choice % 8 < 7 ? 0 : 1];
        } else if constexpr (std::is_same_v<T, q_node_t>) {
            return one_of(nodes_of);
        } else if constexpr (std::is_same_v<T, q_table_t>) {
            owner = one_of(nodes_of);
            constexpr std::array of{q_node_get_table, q_node_get_experience_table, q_node_get_fading_table};
            return table = of[next() % of.size()](owner);
        } else if constexpr (std::is_same_v<T, q_clique_t>) {
            return one_of(cliques_of);
        } else if constexpr (std::is_same_v<T, q_junction_tree_t>) {
            return one_of(trees_of);
        } else if constexpr (std::is_same_v<T, q_attribute_t>) {
            return one_of(attributes_of);
        } else if constexpr (std::is_same_v<T, q_model_t>) {
            return one_of(models_of);
        } else if constexpr (std::is_same_v<T, q_expression_t>) {
            return used.emplace_back(one_of([&](q_domain_t domain) { return expressions_of(domain); }));
        } else if constexpr (std::is_same_v<T, const char*>) {
            return text();
        } else if constexpr (std::is_same_v<T, const char* const*>) {
            return list(text_lists);
        } else if constexpr (std::is_same_v<T, const q_node_t*>) {
            return list(node_lists);
        } else if constexpr (std::is_same_v<T, const q_expression_t*>) {
            return list(expression_lists);
        } else if constexpr (std::is_same_v<T, size_t>) {
            return size();
        } else if constexpr (std::is_same_v<T, double>) {
            return number();
        } else if constexpr (std::is_same_v<T, int32_t>) {
            return integer();
        } else if constexpr (std::is_same_v<T, uint32_t>) {
            return next();
        } else if constexpr (std::is_same_v<T, int32_t*>) {
            const unsigned choice = next();
            return choice == senseless ? nullptr : &places[(integers++ + choice) % places.size()];
        } else if constexpr (std::is_same_v<T, void*>) {
            return next() == 0 ? nullptr : &places;
        } else {
            return next() % 2 == 0 ? nullptr : callback(T());
        }
    }

    static auto callback(void (*)(q_domain_t)) -> void (*)(q_domain_t) {
        return [](q_domain_t domain) { q_domain_get_user_data(domain); };
    }
    static auto callback(void (*)(q_node_t)) -> void (*)(q_node_t) {
        return [](q_node_t node) { (void)(q_node_get_user_data(node), q_node_get_label(node)); };
    }
    static void check_message(const char* message) {
        require(std::strlen(message) < 512 && !string_view(message).ends_with('\n'), "message", message);
    }
    static q_parse_error_handler_t callback(q_parse_error_handler_t) {
        return [](size_t, const char* message, void*) { check_message(message); };
    }
    static q_parse_error_plain_handler_t callback(q_parse_error_plain_handler_t) {
        return [](size_t, const char* message) { check_message(message); };
    }

    // Code and result go together.
    template <class Result>
    void check(Result result, q_error_t code) const {
        require(string_view(q_error_name(uint32_t(code))) != "no_such_error", function, "no such code");
        const Result failure = failure_of<Result>(function, code);
        if (code != q_error_none)
            require(result == failure, function, "it failed and does not tell");
        else if constexpr (std::is_same_v<Result, q_boolean_t>)
            require(result <= 1, function, "neither yes nor no");
        else if constexpr (std::is_same_v<Result, size_t>)
            require(result != failure || is("_total_size"), function, "no size");
        else if constexpr (std::is_same_v<Result, q_status_t>)
            require(result == q_error_none || other_failures.contains(function), function, "a code and none");
    }

    void keep(q_domain_t made) {
        if (made == nullptr || !function.starts_with("q_net_parse")) return;
        delete_trees();
        q_domain_delete(std::exchange(domains[0], made));
        const auto all = nodes_of(made);
        const auto is_large = [](q_node_t node) {
            return q_node_get_kind(node) == q_kind_discrete &&
                   q_node_get_number_of_states(node) > most_states;
        };
        if (all.size() <= most_nodes && std::ranges::none_of(all, is_large)) return;
        q_domain_delete(std::exchange(domains[0], q_domain_new()));
    }
    void keep(q_expression_t made) {
        if (made == nullptr || is("_get_expression")) return;
        std::vector<q_expression_t> all;
        add_with_arguments(all, made);
        all.size() <= 64 ? trees.push_back(made) : void(q_expression_delete(made));  // clones of clones
    }
    void keep(double* data) {
        if (data == nullptr) return;
        for (size_t i = 0; !left.empty() && i < q_table_get_size(table); ++i) data[i] = number();
        q_node_touch_table(owner);
    }
    static void keep(const char* text) { (void)(text != nullptr && std::strlen(text) > 0); }
    static void keep(char* text) { q_string_delete(text); }
    template <class Handle>
    static void keep(const Handle* list) {
        if (list != nullptr) (void)listed(list);
    }
    template <class Other>
    static void keep(Other) {}

    template <class Result, class... Parameters>
    void call(Result (*called)(Parameters...)) {
        if ((is("_new_node") || is("q_node_clone")) &&
            std::ranges::any_of(domains, [](q_domain_t d) { return nodes_of(d).size() >= most_nodes; }))
            return;
        if (is("q_node_delete") || is("q_domain_delete")) delete_trees();
        const std::tuple<Parameters...> arguments{argument<Parameters>()...};
        const Result result = std::apply(called, arguments);
        const q_error_t code = q_error_code();
        check(result, code);
        const bool takes = is("_make_composite") || is("_set_expression") || is("q_expression_delete");
        if (takes && code == q_error_none)
            std::erase_if(trees, [&](q_expression_t tree) { return std::ranges::count(used, tree) > 0; });
        if constexpr (std::is_same_v<std::tuple<Parameters...>, std::tuple<q_domain_t>>)
            if (is("q_domain_delete")) std::ranges::replace(domains, std::get<0>(arguments), nullptr);
        for (q_domain_t& domain : domains)
            if (domain == nullptr) domain = q_domain_new();
        keep(result);
    }

    void run(string_view line);
};

using caller = std::function<void(session&)>;

std::vector<caller> callers_of(auto... functions) {
    return {[functions](session& of) { of.call(functions); }...};
}

void session::run(string_view line) {
    static const std::vector<string> names = function_names();
    static const std::vector<caller> callers = callers_of(FUNCTIONS);
    const string_view word = line.substr(0, line.find(' '));
    const auto named = std::ranges::find(names, word);
    left = line.substr(named == names.end() ? std::min<size_t>(line.size(), 1) : word.size());
    const size_t place = named != names.end() ? size_t(named - names.begin())
                                              : static_cast<unsigned char>(line.front()) % names.size();
    function = names[place];
    integers = 0;
    used.clear();
    texts.clear();
    text_lists.clear();
    node_lists.clear();
    expression_lists.clear();
    callers[place](*this);
}

// Links are known at both ends, names lead to their nodes, tables fit the nodes that they are over.
void check_nodes(q_domain_t domain) {
    for (q_node_t node : nodes_of(domain)) {
        const auto parents = listed(q_node_get_parents(node)), children = listed(q_node_get_children(node));
        for (q_node_t parent : parents)
            require(std::ranges::count(listed(q_node_get_children(parent)), node) == 1, "links",
                    "to a parent");
        for (q_node_t child : children)
            require(std::ranges::count(listed(q_node_get_parents(child)), node) == 1, "links", "to a child");
        require(q_domain_get_node_by_name(domain, q_node_get_name(node)) == node, "names", "lead elsewhere");
        require(q_node_get_domain(node) == domain, "nodes", "in another domain");
        q_table_t const table = q_node_get_table(node);
        if (table == nullptr) continue;
        size_t entries = 1;
        for (q_node_t over : listed(q_table_get_nodes(table))) {
            require(over == node || std::ranges::count(parents, over) == 1, "tables", "over a stranger");
            if (q_node_get_kind(over) == q_kind_discrete) entries *= q_node_get_number_of_states(over);
        }
        require(q_table_get_size(table) == entries, "tables", "of another size");
    }
}

// What is written can be read, and is written again the same. What was read; null: nothing was to be written.
owned_domain read_again(q_domain_t domain) {
    char* const text = q_domain_to_net(domain);
    const q_error_t code = q_error_code();
    const q_error_t refusals[] = {q_error_none, q_error_invalid_probability_potential,
                                  q_error_invalid_state_values, q_error_invalid_expression};
    require(std::ranges::count(refusals, code) == 1, "q_domain_to_net", q_error_name(uint32_t(code)));
    if (text == nullptr) return nullptr;
    owned_domain again(q_net_parse_domain(text, nullptr, nullptr));
    require(again != nullptr, "cannot be read", text);
    char* const text_again = q_domain_to_net(again.get());
    require(text_again != nullptr && std::strcmp(text, text_again) == 0, "is not written again", text);
    q_string_delete(text_again);
    q_string_delete(text);
    return again;
}

// Where something is propagated, beliefs are distributions, or the largest of them is 1.
void check_beliefs(q_domain_t domain) {
    for (q_node_t node : nodes_of(domain)) {
        q_junction_tree_t const tree = q_node_get_junction_tree(node);
        if (q_node_get_kind(node) != q_kind_discrete || tree == nullptr) continue;
        const bool sums = q_junction_tree_equilibrium_is(tree, q_equilibrium_sum) == 1;
        if (!sums && q_junction_tree_equilibrium_is(tree, q_equilibrium_max) != 1) continue;
        double sum = 0, most = 0;
        for (size_t state = 0; state < q_node_get_number_of_states(node); ++state) {
            const double belief = q_node_get_belief(node, state);
            require(belief >= 0 && belief <= 1 + 1e-6, "beliefs", "not between 0 and 1");
            sum += belief;
            most = std::max(most, belief);
        }
        require(std::abs((sums ? sum : most) - 1) <= 1e-6, "beliefs",
                sums ? "do not sum to 1" : "largest not 1");
    }
}

// Whatever has led to it, a propagated network has the beliefs of one that was read just now. Not compressed ones, to which
// nothing comes back; nor those in which the eight digits of a text may decide something.
void check_beliefs_afresh(q_domain_t domain, q_domain_t fresh) {
    const auto nodes = nodes_of(domain), others = nodes_of(fresh);
    const auto is_sensitive = [](q_node_t node) {
        return q_node_get_category(node) == q_category_function || q_node_get_kind(node) == q_kind_continuous;
    };
    if (q_domain_is_compressed(domain) == 1 || std::ranges::any_of(nodes, is_sensitive)) return;
    const auto for_each_state = [&](const auto& act) {
        for (size_t i = 0; i < nodes.size(); ++i)
            for (size_t state = 0; q_node_get_kind(nodes[i]) == q_kind_discrete &&
                                   state < q_node_get_number_of_states(nodes[i]);
                 ++state)
                act(nodes[i], others[i], state);
    };
    for_each_state([](q_node_t node, q_node_t other, size_t state) {
        q_node_enter_finding(other, state, q_node_get_entered_finding(node, state));
    });
    q_domain_compile(fresh);
    const q_status_t status = q_domain_propagate(fresh, q_equilibrium_sum, q_mode_normal);
    if (status == q_error_inconsistency_or_underflow) return;
    require(status == q_error_none, "propagated afresh", q_error_name(uint32_t(status)));
    for_each_state([](q_node_t node, q_node_t other, size_t state) {
        require(std::abs(q_node_get_belief(node, state) - q_node_get_belief(other, state)) <= 1e-6, "beliefs",
                "other ones afresh");
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    session tested;
    string_view left(reinterpret_cast<const char*>(data), size);
    for (int calls = 0; !left.empty() && calls < 200; ++calls) {
        const string_view line = left.substr(0, left.find('\n'));
        left.remove_prefix(std::min(line.size() + 1, left.size()));
        if (!line.empty()) tested.run(line);
    }
    for (q_domain_t domain : tested.domains) {
        check_beliefs(domain);
        check_nodes(domain);
        const owned_domain fresh = read_again(domain);
        if (q_domain_is_compiled(domain) == 0) q_domain_compile(domain);
        if (q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal) != q_error_none) continue;
        check_beliefs(domain);
        if (fresh != nullptr) check_beliefs_afresh(domain, fresh.get());
    }
    return 0;
}
