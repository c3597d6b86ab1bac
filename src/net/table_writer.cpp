#include "table_writer.h"

#include <cmath>
#include <vector>

#include "cg_block.h"
#include "errors.h"
#include "number_text.h"
#include "states.h"

namespace quarn {
namespace {

void write_number(std::string& to, double number) {
    require(std::isfinite(number), q_error_invalid_probability_potential);
    to += number_text(number).view();
}

// A state's label where it fits into a line, else what it stands for; where that is nothing either, its index.
void write_state(std::string& to, const node& of, std::size_t state) {
    const std::string_view label = state_label(of, state);
    const auto value = [&](std::size_t index) {
        to += number_text::with_infinities(of.state_values[index]).view();
    };
    if (!label.empty() && label.find('\n') == std::string_view::npos) {
        to += label;
    } else if (of.subtype == q_subtype_boolean) {
        to += state == 0 ? "false" : "true";
    } else if (!of.has_values() || of.state_values.empty()) {
        to += '#' + std::to_string(state);
    } else if (of.subtype == q_subtype_number) {
        value(state);
    } else {
        to += "interval(";
        value(state);
        to += ',';
        value(state + 1);
        to += ')';
    }
}

// The discrete nodes of a table, or some of them, each at one of its states: the last one moves on fastest.
class configuration {
public:
    configuration(const table& of, std::span<node* const> order) {
        std::vector<std::size_t> strides(of.discrete_count, 1);
        for (std::size_t i = of.discrete_count; i-- > 1;)
            strides[i - 1] = strides[i] * of.nodes[i]->state_count;
        places_.reserve(order.size());
        for (node* member : order) places_.push_back({member, strides[of.nodes.index_of(member)]});
    }

    // The entry of the table, for the first state of the nodes that are not among these.
    std::size_t entry() const noexcept { return entry_; }
    std::size_t size() const noexcept { return places_.size(); }

    // How many of the nodes, the last one and those before it, are all in their first state, or all in their last.
    std::size_t at_first() const noexcept {
        return count_last([](const place& p) { return p.state == 0; });
    }
    std::size_t at_last() const noexcept {
        return count_last([](const place& p) { return p.state + 1 == p.member->state_count; });
    }

    // False, and all nodes are in their first states, when this was the last one.
    bool move_on() noexcept {
        for (std::size_t i = size(); i-- > 0;) {
            place& moved = places_[i];
            entry_ += moved.stride;
            if (++moved.state < moved.member->state_count) return true;
            entry_ -= moved.state * moved.stride;
            moved.state = 0;
        }
        return false;
    }

    // Names of nodes with their states.
    void write_comment(std::string& to) const {
        const char* separator = "\t% ";
        for (const place& p : places_) {
            to += separator;
            to += p.member->name.get();
            to += '=';
            write_state(to, *p.member, p.state);
            separator = "  ";
        }
    }

private:
    struct place {
        node* member;
        std::size_t stride;
        std::size_t state = 0;
    };

    template <class Test>
    std::size_t count_last(Test&& test) const noexcept {
        std::size_t count = 0;
        while (count < size() && test(places_[size() - 1 - count])) ++count;
        return count;
    }

    std::vector<place> places_;
    std::size_t entry_ = 0;
};

// A line for each configuration of the outer nodes, with a pair of parentheses for each of these around it. What the line
// holds is written by `write_entry`, from the entry of the table that it is given.
template <class WriteEntry>
void write_table(std::string& to, std::string_view attribute, const table& written,
                 std::span<node* const> outer, WriteEntry&& write_entry) {
    configuration at(written, outer);
    to += '\t';
    to += attribute;
    to += " = ";
    for (bool more = true; more;) {
        to.append(at.at_first(), '(');
        write_entry(at.entry());
        to.append(at.at_last(), ')');
        const std::size_t open = at.size() - at.at_last();
        if (open == 0) to += ';';
        at.write_comment(to);
        to += '\n';
        more = at.move_on();
        if (more) to.append("\t\t").append(open - 1, ' ');
    }
}

// A mean and a variance.
class normal_writer {
public:
    normal_writer(std::string& to, const table& written, std::span<node* const> continuous_parents)
        : to_(to), moments_(written.moments.data()), block_size_(written.block_size()) {
        for (const node* parent : continuous_parents)
            terms_.push_back({parent->name.get(), cg_coefficient(written.continuous_position(parent))});
    }

    void write(std::size_t entry) {
        const double* const block = moments_ + entry * block_size_;
        to_ += "normal ( ";
        write_mean(block);
        to_ += ", ";
        write_number(to_, block[cg_variance] + 0.0);
        to_ += " )";
    }

private:
    struct term {
        const char* parent;
        std::size_t place;  // of its coefficient
    };

    // What is zero is left out, unless all is. (Adding 0 takes the sign off a zero.)
    void write_mean(const double* block) {
        const std::size_t begin = to_.size();
        if (block[cg_intercept] != 0) write_number(to_, block[cg_intercept]);
        for (const auto& [parent, place] : terms_) {
            double coefficient = block[place];
            if (coefficient == 0) continue;
            if (to_.size() > begin) {
                to_ += coefficient < 0 ? " - " : " + ";
                coefficient = std::fabs(coefficient);
            }
            write_number(to_, coefficient);
            to_ += " * ";
            to_ += parent;
        }
        if (to_.size() == begin) to_ += '0';
    }

    std::string& to_;
    const double* moments_;
    std::size_t block_size_;
    std::vector<term> terms_;
};

}  // namespace

void write_numbers(std::string& to, std::string_view attribute, const table& written,
                   std::span<node* const> order, bool has_rows) {
    const std::size_t inner = has_rows ? 1 : 0;
    const std::span<node*const> outer = order.first(order.size() - inner), in_row = order.last(inner);
    configuration row(written, in_row);
    const bool in_parentheses = has_rows || outer.empty();
    write_table(to, attribute, written, outer, [&](std::size_t entry) {
        const char* separator = in_parentheses ? "(" : "";
        do {
            to += separator;
            write_number(to, written.data[entry + row.entry()]);
            separator = " ";
        } while (row.move_on());
        if (in_parentheses) to += ')';
    });
}

void write_normals(std::string& to, const table& written, std::span<node* const> discrete_parents,
                   std::span<node* const> continuous_parents) {
    normal_writer normals(to, written, continuous_parents);
    const bool in_parentheses = discrete_parents.empty();
    write_table(to, "data", written, discrete_parents, [&](std::size_t entry) {
        if (in_parentheses) to += '(';
        normals.write(entry);
        if (in_parentheses) to += ')';
    });
}

}  // namespace quarn
