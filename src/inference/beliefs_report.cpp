#include "beliefs_report.h"

#include <cmath>

#include "c_locale.h"
#include "node.h"
#include "results.h"
#include "sizes.h"
#include "states.h"

namespace quarn {
namespace {

class beliefs_report {
public:
    explicit beliefs_report(domain& reported)
        : domain_(reported),
          log_(reported.log),
          has_utilities_(!propagated_forest(reported).utilities.empty()) {}

    void print() {
        print_beliefs("decision", [](const node& n) { return n.is(q_category_decision); });
        print_beliefs("chance", [](const node& n) { return n.is(q_category_chance); });
        print_beliefs("discrete function", [](const node& n) { return n.is_function() && n.is_discrete(); });
        print_section([](const node& n) { return n.is_utility(); },
                      [&] { log_.print("\n\nExpected utilities for utility nodes:\n"); },
                      [&](node& n) { log_.print("\n    %s: %g\n", node_name(n), expected_utility(n, 0)); });
        if (has_utilities_) log_.print("\nOverall expected utility: %g\n", expected_utility(domain_));
        print_section([](const node& n) { return n.is_real_function(); },
                      [&] { log_.print("\n\nValues for real-valued function nodes:\n"); },
                      [&](node& n) { print_value(n); });
    }

private:
    // A line for each node that belongs to the section, and a title before the first.
    template <class Belongs, class Title, class Line>
    void print_section(Belongs&& belongs, Title&& print_title, Line&& print_line) {
        bool is_first = true;
        for (node* next = domain_.oldest; next != nullptr; next = next->newer) {
            if (!belongs(*next)) continue;
            if (is_first) print_title();
            is_first = false;
            print_line(*next);
        }
    }

    template <class Belongs>
    void print_beliefs(const char* sort, Belongs&& belongs) {
        const char* const utilities = has_utilities_ ? " (and expected utilities)" : "";
        print_section(
            belongs, [&] { log_.print("\n\nBeliefs%s for %s nodes:\n", utilities, sort); },
            [&](node& n) { n.is_discrete() ? print_discrete(n) : print_continuous(n); });
    }

    void print_discrete(node& printed) {
        const std::span<const double> beliefs = beliefs_of(printed);
        if (const auto certain = certain_state(beliefs)) {
            log_.print("\n    %s --> ", node_name(printed));
            print_state(printed, *certain);
            return end_line(printed, *certain);
        }
        log_.print("\n    %s:\n", node_name(printed));
        for (std::size_t state = 0; state < beliefs.size(); ++state) {
            if (const char* label = state_label(printed, state); *label != '\0')
                log_.print("\t%-10s %g", label, beliefs[state]);
            else
                log_.print("\tstate%s   %g", format_size(state).data(), beliefs[state]);
            end_line(printed, state);
        }
    }

    void print_state(const node& printed, std::size_t state) {
        if (printed.has_values() && !printed.state_values.empty())
            log_.print("%g", printed.state_values[state]);
        else if (const char* label = state_label(printed, state); *label != '\0')
            log_.print("%s", label);
        else
            log_.print("state%s", format_size(state).data());
    }

    void end_line(const node& printed, std::size_t state) {
        if (has_utilities_) log_.print(" (%g)", expected_utility(printed, state));
        log_.print("\n");
    }

    void print_value(node& function) {
        if (function.value_failure == q_error_none)
            log_.print("\n    %s: %g\n", node_name(function), function.value);
        else
            log_.print("\n    %s: N/A\n", node_name(function));
    }

    void print_continuous(node& printed) {
        const auto [mean, variance] = continuous_moments(printed);
        if (variance == 0)
            log_.print("\n    %s --> %g\n", node_name(printed), mean);
        else
            log_.print("\n    %s:\n\tMean: %g   Variance: %g   SD: %g\n", node_name(printed), mean, variance,
                       std::sqrt(variance));
    }

    domain& domain_;
    log_file& log_;
    bool has_utilities_;
};

}  // namespace

void print_beliefs(domain& reported) {
    if (!reported.log.is_set()) return;
    beliefs_report report(reported);
    const c_locale_scope in_c_locale;
    report.print();
    reported.log.flush();
}

}  // namespace quarn
