// Any bytes as NET text: a network that can be looked through comes out, or an error was reported.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "net_parser.h"
#include "node.h"
#include "states.h"
#include "table.h"

namespace {

using namespace quarn;

void require_sound(bool condition) {
    if (!condition) std::abort();
}

// What every reader of a table goes by.
void check_table(const node& owner) {
    const table& checked = *owner.own_table;
    require_sound(checked.is_materialised() && checked.data.size() == checked.size);
    require_sound(checked.nodes.contains(&owner) == owner.has_kind());
    std::size_t members = owner.has_kind() ? 1 : 0;
    for (const node* parent : owner.parents) {
        const bool belongs = parent->has_kind() && !owner.is_function();
        require_sound(checked.nodes.contains(parent) == belongs);
        members += belongs ? 1 : 0;
    }
    require_sound(checked.nodes.size() == members);
    std::size_t size = 1;
    for (const node* member : checked.nodes) size *= member->is_discrete() ? member->state_count : 1;
    require_sound(size == checked.size && checked.moments.size() == checked.cg_size());
    for (const double number : checked.data) require_sound(!std::isnan(number));
}

void check_node(const node& checked) {
    require_sound(checked.name != nullptr &&
                  checked.domain->names.find(*checked.domain, checked.name.get()) == &checked);
    require_sound(checked.state_labels.empty() || checked.state_labels.size() == checked.state_count);
    require_sound(checked.subtype != q_subtype_boolean || checked.state_count == 2);
    (void)state_values_are_valid(checked);
    if (checked.own_table) check_table(checked);
}

void parse(std::string_view text, position_unit unit) {
    parse_reports reports(nullptr, nullptr);
    try {
        const auto parsed = parse_net(text, unit, reports);
        require_sound(reports.error_count() == 0);
        for (const node* checked = parsed->oldest; checked != nullptr; checked = checked->newer)
            check_node(*checked);
    } catch (const failure&) {
        require_sound(reports.error_count() > 0);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    parse(text, position_unit::line);
    parse(text, position_unit::character);
    return 0;
}
