#include "node_writer.h"

#include <cmath>

#include "errors.h"
#include "number_text.h"
#include "quoted_text.h"
#include "states.h"

namespace quarn {
namespace {

const char* declaration_of(const node& written) noexcept {
    if (written.is_continuous()) return "continuous node ";
    switch (written.category) {
    case q_category_decision: return "decision ";
    case q_category_utility: return "utility ";
    case q_category_function: return written.is_discrete() ? "discrete function " : "function ";
    default: return "node ";
    }
}

void write_states(std::string& to, const node& written) {
    const char* separator = "    states = (";
    for (std::size_t state = 0; state < written.state_count; ++state) {
        to += separator;
        append_quoted(to, state_label(written, state));
        separator = " ";
    }
    to += ");\n";
}

// Nodes whose states have labels only are so unless something else is said.
void write_subtype(std::string& to, const node& written) {
    switch (written.subtype) {
    case q_subtype_boolean: to += "    subtype = boolean;\n"; break;
    case q_subtype_number: to += "    subtype = number;\n"; break;
    case q_subtype_interval: to += "    subtype = interval;\n"; break;
    default: break;
    }
}

void write_state_values(std::string& to, const node& written) {
    if (!written.has_values() || written.state_values.empty()) return;
    const std::size_t count = written.state_count + (written.subtype == q_subtype_interval ? 1 : 0);
    const char* separator = "    state_values = (";
    for (std::size_t i = 0; i < count; ++i) {
        require(!std::isnan(written.state_values[i]), q_error_invalid_state_values);
        to += separator;
        to += number_text::with_infinities(written.state_values[i]).view();
        separator = " ";
    }
    to += ");\n";
}

}  // namespace

void write_node(std::string& to, node& written) {
    to.append(declaration_of(written)).append(node_name(written)).append("\n{\n");
    if (written.label && written.label[0] != '\0') {
        to += "    label = ";
        append_quoted(to, written.label.get());
        to += ";\n";
    }
    if (written.x != 0 || written.y != 0)
        to.append("    position = (" + std::to_string(written.x) + ' ' + std::to_string(written.y) + ");\n");
    if (written.is_discrete()) {
        write_states(to, written);
        write_subtype(to, written);
        write_state_values(to, written);
    }
    write_attributes(to, written.attributes);
    to += "}\n";
}

void write_attributes(std::string& to, const attribute_list& attributes) {
    for (const q_attribute* at = attributes.first(); at != nullptr; at = at->next) {
        to.append("    ").append(at->key.get()).append(" = ");
        append_quoted(to, at->value.get());
        to += ";\n";
    }
}

}  // namespace quarn
