#include "case_writer.h"

#include "evidence.h"
#include "node.h"
#include "number_text.h"
#include "quoted_text.h"
#include "states.h"

namespace quarn {
namespace {

constexpr int weight_digits = 6;

void append_weights(std::string& to, const node& observed) {
    char separator = '(';
    for (std::size_t state = 0; state < observed.state_count; ++state) {
        to += separator;
        to += number_text(observed.evidence.weight(state), weight_digits).view();
        separator = ' ';
    }
    to += ')';
}

void append_state(std::string& to, const node& observed, std::size_t state) {
    const char* const label = state_label(observed, state);
    if (observed.subtype == q_subtype_boolean)
        to += state == 0 ? "false" : "true";
    else if (observed.subtype == q_subtype_label &&
             state_from_label(observed, label) == static_cast<int64_t>(state))
        append_quoted(to, label);
    else if (observed.subtype == q_subtype_number && state_values_are_valid(observed))
        to += number_text(observed.state_values[state]).view();
    else
        to.append(1, '#').append(std::to_string(state));
}

void append_finding(std::string& to, const node& observed) {
    if (observed.is_continuous())
        to += number_text(observed.entered_value).view();
    else if (observed.evidence.index == findings::general)
        append_weights(to, observed);
    else
        append_state(to, observed, static_cast<std::size_t>(observed.evidence.index));
}

}  // namespace

std::string case_text(const domain& written) {
    std::string lines;
    for (node* next = written.newest; next != nullptr; next = next->older) {
        node& source = next->linked != nullptr ? *next->linked : *next;
        if (!evidence_is_entered(source)) continue;
        lines.append(node_name(source)).append(": ");
        append_finding(lines, source);
        if (source.label && *source.label.get() != '\0') {
            lines += "\t% ";
            append_quoted(lines, source.label.get());
        }
        lines += '\n';
    }
    return lines;
}

}  // namespace quarn
