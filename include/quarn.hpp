// Quarn for C++20: domains that delete themselves, nodes with member functions, exceptions instead of error codes.
//
//     quarn::domain clinic = quarn::domain::load("chest_clinic.net");
//     clinic.compile();
//     clinic.node("xray").select("yes");
//     clinic.propagate();
//     double p = clinic.node("tuberculosis").belief("yes");
//
// All of it is inline and thin: what a function takes, returns and fails with is said in quarn.h, and everything there
// can be used beside it. domain and node convert to the handles of quarn.h, and check() turns the failure of any of its
// functions into an exception:
//
//     quarn::check(q_domain_minimize_limid(clinic));
//     auto cliques = quarn::list(quarn::check(q_junction_tree_get_cliques(tree)));
//
// Conventions, which the comments below do not repeat:
//
// Failure   is a quarn::error with the code of quarn.h; when memory runs out it may be std::bad_alloc instead. What fails
//           leaves its objects as they were.
// Ownership A domain is moved, never copied; one that was moved from is empty, and using it is q_error_usage. A node is a
//           handle, as cheap to copy as a pointer and valid as long as what it stands for: a const node, or a node of a
//           const domain, can be changed.
// Results   are copies, but for node::table(): a loop over nodes() or parents() may delete nodes and links.
#ifndef QUARN_HPP
#define QUARN_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <quarn.h>

namespace quarn {

/** A call that failed. */
class error : public std::runtime_error {
public:
    explicit error(q_error_t code) : error(code, q_error_description(static_cast<std::uint32_t>(code))) {}
    error(q_error_t code, const std::string& what) : std::runtime_error(what), code_(code) {}

    /** q_error_usage, q_error_no_memory, ... */
    q_error_t code() const noexcept { return code_; }

private:
    q_error_t code_;
};

/** What a parser reports, at a place counted from 1; the column is 0 where it is not known, as in files. */
struct message {
    std::size_t line;
    std::size_t column;
    std::string text;
};

/** A text in which something was reported; what() tells the first error. */
class parse_error : public error {
public:
    parse_error(q_error_t code, const std::string& source, std::vector<message> messages)
        : error(code, first_of(source, messages)),
          messages_(std::make_shared<const std::vector<message>>(std::move(messages))) {}

    /** All that was reported, warnings included. Never empty. */
    const std::vector<message>& messages() const noexcept { return *messages_; }

private:
    static std::string first_of(const std::string& source, const std::vector<message>& messages) {
        const auto warns = [](const message& reported) { return reported.text.starts_with("warning: "); };
        const auto found = std::find_if_not(messages.begin(), messages.end(), warns);
        const message& first = found == messages.end() ? messages.front() : *found;
        return source + ", line " + std::to_string(first.line) + ": " + first.text;
    }

    std::shared_ptr<const std::vector<message>> messages_;  // copying an exception must not fail
};

/** Throws if the last call of a function of quarn.h in this thread failed. */
inline void check() {
    if (const q_error_t code = q_error_code(); code != q_error_none) throw error(code);
}

/** The same around the call: check(q_node_get_numeric_mean(node)) is the mean, or throws. */
template <class Result>
Result check(Result result) {
    check();
    return result;
}

namespace detail {

struct delete_domain {
    void operator()(q_domain_t domain) const noexcept { q_domain_delete(domain); }
};
struct delete_node {
    void operator()(q_node_t node) const noexcept { q_node_delete(node); }
};
struct delete_expression {
    void operator()(q_expression_t expression) const noexcept { q_expression_delete(expression); }
};
struct delete_string {
    void operator()(char* text) const noexcept { q_string_delete(text); }
};

// Collects what a parser reports; a message for which there is no memory is dropped.
struct reports {
    const char* text = nullptr;  // what positions count characters in; null: they are lines
    std::vector<message> messages = {};
    std::size_t seen = 0, line = 1, column = 1;  // how far into the text the last message was

    static void add(std::size_t position, const char* what, void* data) noexcept {
        static_cast<reports*>(data)->add(position, what);
    }

    void add(std::size_t position, const char* what) noexcept {
        if (text != nullptr) locate(position);
        try {
            messages.push_back(text != nullptr ? message{line, column, what} : message{position, 0, what});
        } catch (...) {}
    }

    void locate(std::size_t position) noexcept {
        if (position < seen) seen = 0, line = column = 1;
        for (; seen < position && text[seen] != 0; ++seen) {
            column = text[seen] == '\n' ? 1 : column + 1;
            line += text[seen] == '\n';
        }
    }

    // After a call that was given these reports.
    void check(const std::string& source) {
        const q_error_t code = q_error_code();
        if (code == q_error_none) return;
        if (!messages.empty()) throw parse_error(code, source, std::move(messages));
        throw error(code, source + ": " + q_error_description(static_cast<std::uint32_t>(code)));
    }
};

}  // namespace detail

/** An expression that is the caller's; release() it when a model has taken it over. */
using expression = std::unique_ptr<q_expression, detail::delete_expression>;

/** A text that the library made for its caller, q_expression_to_string() for one. */
inline std::string take_string(char* text) {
    const std::unique_ptr<char, detail::delete_string> owned(check(text));
    return owned.get();
}

class node;

/** The items of a list that ends with a null, as quarn.h returns them; nodes as quarn::node. */
template <class Handle>
auto list(const Handle* first) {
    std::vector<std::conditional_t<std::is_same_v<Handle, q_node_t>, node, Handle>> items;
    for (; *first != nullptr; ++first) items.emplace_back(*first);
    return items;
}

/** A node of a domain; null if made from nothing. */
class node {
public:
    node() = default;
    explicit node(q_node_t handle) noexcept : handle_(handle) {}
    operator q_node_t() const noexcept { return handle_; }
    bool operator==(const node&) const = default;

    std::string name() const { return check(q_node_get_name(handle_)); }
    std::string label() const { return check(q_node_get_label(handle_)); }
    q_category_t category() const { return check(q_node_get_category(handle_)); }
    q_kind_t kind() const { return check(q_node_get_kind(handle_)); }
    void set_name(const std::string& name) const { check(q_node_set_name(handle_, name.c_str())); }
    void set_label(const std::string& label) const { check(q_node_set_label(handle_, label.c_str())); }

    std::size_t number_of_states() const { return check(q_node_get_number_of_states(handle_)); }

    /** The labels of all states. */
    std::vector<std::string> states() const {
        std::vector<std::string> labels(number_of_states());
        for (std::size_t i = 0; i < labels.size(); ++i) labels[i] = check(q_node_get_state_label(handle_, i));
        return labels;
    }

    /** The state with that label. errors: q_error_usage: none or several have it */
    std::size_t state(const std::string& label) const {
        const std::int64_t index = check(q_node_get_state_index_from_label(handle_, label.c_str()));
        if (index < 0) throw error(q_error_usage, name() + " has no single state \"" + label + "\"");
        return static_cast<std::size_t>(index);
    }

    std::vector<node> parents() const { return list(check(q_node_get_parents(handle_))); }
    std::vector<node> children() const { return list(check(q_node_get_children(handle_))); }
    void add_parent(node parent) const { check(q_node_add_parent(handle_, parent)); }
    void remove_parent(node parent) const { check(q_node_remove_parent(handle_, parent)); }

    /** The numbers of the table, in place: call touch_table() after writing. Valid until the table changes its shape. */
    std::span<double> table() const {
        q_table_t table = check(q_node_get_table(handle_));
        double* data = check(q_table_get_data(table));
        return {data, check(q_table_get_size(table))};
    }
    void touch_table() const { check(q_node_touch_table(handle_)); }

    /** Writes the whole table. errors: q_error_usage: not as many numbers as it holds */
    void set_table(const std::vector<double>& numbers) const {
        const std::span<double> data = table();
        if (numbers.size() != data.size())
            throw error(q_error_usage, "the table of " + name() + " holds " + std::to_string(data.size()) +
                                           " numbers, not " + std::to_string(numbers.size()));
        for (std::size_t i = 0; i < data.size(); ++i) data[i] = numbers[i];
        touch_table();
    }

    void select(std::size_t state) const { check(q_node_select_state(handle_, state)); }
    void select(const std::string& label) const { select(state(label)); }
    void enter_value(double value) const { check(q_node_enter_value(handle_, value)); }
    void retract() const { check(q_node_retract_findings(handle_)); }

    /** Evidence that is no certainty: a weight for each state. errors: q_error_usage, as q_node_enter_finding() */
    void enter_likelihood(const std::vector<double>& weights) const {
        bool valid = weights.size() == number_of_states();
        for (const double weight : weights)
            valid = valid && weight >= 0 && weight < std::numeric_limits<double>::max();
        if (!valid) throw error(q_error_usage, name() + ": not a likelihood with a weight for each state");
        for (std::size_t i = 0; i < weights.size(); ++i) check(q_node_enter_finding(handle_, i, weights[i]));
    }

    double belief(std::size_t state) const { return check(q_node_get_belief(handle_, state)); }
    double belief(const std::string& label) const { return belief(state(label)); }

    /** The beliefs of all states. */
    std::vector<double> beliefs() const {
        std::vector<double> beliefs(number_of_states());
        for (std::size_t i = 0; i < beliefs.size(); ++i) beliefs[i] = belief(i);
        return beliefs;
    }

    double mean() const { return check(q_node_get_mean(handle_)); }
    double variance() const { return check(q_node_get_variance(handle_)); }
    double value() const { return check(q_node_get_value(handle_)); }
    double expected_utility(std::size_t state = 0) const {
        return check(q_node_get_expected_utility(handle_, state));
    }

private:
    q_node_t handle_ = nullptr;
};

/** Nodes as the functions of quarn.h take them: data() is a list that ends with a null. */
inline std::vector<q_node_t> null_terminated(const std::vector<node>& nodes) {
    std::vector<q_node_t> handles(nodes.begin(), nodes.end());
    handles.push_back(nullptr);
    return handles;
}

/** A network, deleted at the end of its life. */
class domain {
public:
    domain() : handle_(check(q_domain_new())) {}

    /** Takes over a domain made by quarn.h. */
    explicit domain(q_domain_t owned) noexcept : handle_(owned) {}

    operator q_domain_t() const noexcept { return handle_.get(); }

    /** Gives the domain to the caller, who deletes it. */
    q_domain_t release() noexcept { return handle_.release(); }

    /**
     * Reads a network from a file.
     *
     * warnings  if given, receives what was reported of a file that was read all the same
     * errors    parse_error, as well as for parse()
     */
    static domain load(const std::string& path, std::vector<message>* warnings = nullptr) {
        // A name that looks like NET text would be taken for it.
        const std::string source = path.starts_with('/') ? path : "./" + path;
        detail::reports reports;
        domain read(q_net_parse_domain(source.c_str(), detail::reports::add, &reports));
        reports.check(path);
        if (warnings != nullptr) *warnings = std::move(reports.messages);
        return read;
    }

    /** Reads a network from NET text. errors: q_error_parse: also when the text does not begin as a network */
    static domain parse(const std::string& text, std::vector<message>* warnings = nullptr) {
        // What is no network would be taken for the name of a file; with a blank in front there is none of that name.
        const std::string source = " " + text;
        detail::reports reports{source.c_str(), {}, 1};
        domain read(q_net_parse_domain(source.c_str(), detail::reports::add, &reports));
        if (q_error_code() == q_error_io) throw error(q_error_parse, "the text does not begin as a network");
        reports.check("NET text");
        if (warnings != nullptr) *warnings = std::move(reports.messages);
        return read;
    }

    void save(const std::string& path) const { check(q_domain_save_as_net(*this, path.c_str())); }
    std::string to_net() const { return take_string(q_domain_to_net(*this)); }

    /** Replaces the evidence by that in a case file. errors: parse_error for warnings too */
    void load_case(const std::string& path) {
        detail::reports reports;
        q_domain_parse_case(*this, path.c_str(), detail::reports::add, &reports);
        reports.check(path);
    }
    void save_case(const std::string& path) const { check(q_domain_save_case(*this, path.c_str())); }

    /** Reads an expression over the nodes of the domain. errors: parse_error */
    expression parse_expression(const std::string& text) const {
        detail::reports reports{text.c_str()};
        expression read(q_domain_parse_expression(*this, text.c_str(), detail::reports::add, &reports));
        reports.check("expression");
        return read;
    }

    quarn::node new_chance(const std::string& name, const std::vector<std::string>& states,
                           const std::vector<quarn::node>& parents = {}) {
        return new_node(q_category_chance, q_kind_discrete, name, states, parents);
    }
    quarn::node new_decision(const std::string& name, const std::vector<std::string>& states,
                             const std::vector<quarn::node>& parents = {}) {
        return new_node(q_category_decision, q_kind_discrete, name, states, parents);
    }
    quarn::node new_continuous(const std::string& name, const std::vector<quarn::node>& parents = {}) {
        return new_node(q_category_chance, q_kind_continuous, name, {}, parents);
    }
    quarn::node new_utility(const std::string& name, const std::vector<quarn::node>& parents = {}) {
        return new_node(q_category_utility, q_kind_other, name, {}, parents);
    }
    quarn::node new_function(const std::string& name, const std::vector<quarn::node>& parents = {}) {
        return new_node(q_category_function, q_kind_other, name, {}, parents);
    }

    /** All nodes in creation order. */
    std::vector<quarn::node> nodes() const {
        std::vector<quarn::node> newest_first;
        for (q_node_t next = check(q_domain_get_first_node(*this)); next != nullptr;
             next = check(q_node_get_next(next)))
            newest_first.emplace_back(next);
        return {newest_first.rbegin(), newest_first.rend()};
    }

    std::optional<quarn::node> find(const std::string& name) const {
        q_node_t found = check(q_domain_get_node_by_name(*this, name.c_str()));
        return found == nullptr ? std::nullopt : std::optional(quarn::node(found));
    }

    /** The node of that name. errors: q_error_usage: there is none */
    quarn::node node(const std::string& name) const {
        if (const std::optional<quarn::node> found = find(name)) return *found;
        throw error(q_error_usage, "there is no node \"" + name + "\"");
    }

    void compile() { check(q_domain_compile(*this)); }
    bool is_compiled() const { return check(q_domain_is_compiled(*this)) != 0; }
    std::vector<q_junction_tree_t> junction_trees() const {
        std::vector<q_junction_tree_t> trees;
        for (q_junction_tree_t next = check(q_domain_get_first_junction_tree(*this)); next != nullptr;
             next = check(q_junction_tree_get_next(next)))
            trees.push_back(next);
        return trees;
    }

    void propagate(q_equilibrium_t equilibrium = q_equilibrium_sum, q_mode_t mode = q_mode_normal) {
        check(q_domain_propagate(*this, equilibrium, mode));
    }

    /** Removes all evidence. */
    void retract() { check(q_domain_retract_findings(*this)); }

    double normalization_constant() const { return check(q_domain_get_normalization_constant(*this)); }
    double log_normalization_constant() const {
        return check(q_domain_get_log_normalization_constant(*this));
    }
    double expected_utility() const { return check(q_domain_get_expected_utility(*this)); }
    void update_policies() { check(q_domain_update_policies(*this)); }

private:
    // A node that does not become what it is to be goes again.
    quarn::node new_node(q_category_t category, q_kind_t kind, const std::string& name,
                         const std::vector<std::string>& states, const std::vector<quarn::node>& parents) {
        std::unique_ptr<q_node, detail::delete_node> made(check(q_domain_new_node(*this, category, kind)));
        check(q_node_set_name(made.get(), name.c_str()));
        if (kind == q_kind_discrete) check(q_node_set_number_of_states(made.get(), states.size()));
        for (std::size_t i = 0; i < states.size(); ++i)
            check(q_node_set_state_label(made.get(), i, states[i].c_str()));
        for (const quarn::node parent : parents) check(q_node_add_parent(made.get(), parent));
        return quarn::node(made.release());
    }

    std::unique_ptr<q_domain, detail::delete_domain> handle_;
};

}  // namespace quarn

#endif
