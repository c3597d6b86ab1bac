#include "elimination_order.h"

#include "errors.h"
#include "node.h"

namespace quarn {

std::size_t elimination_count(const domain& asked) noexcept {
    return asked.counts.discrete + asked.counts.continuous - asked.settings.excluded.size();
}

handle_list<node> checked_elimination_order(domain& asked, const q_node_t* order) {
    const uint64_t taken = asked.new_mark();
    for (node* excluded : asked.settings.excluded) excluded->mark = taken;
    handle_list<node> checked;
    bool discrete_seen = false;
    for (; *order != nullptr; ++order) {
        node& next = **order;
        require(next.domain == &asked && next.has_kind() && next.mark != taken, q_error_enumeration);
        require(!(discrete_seen && next.is_continuous()), q_error_enumeration);
        discrete_seen = discrete_seen || next.is_discrete();
        next.mark = taken;
        checked.append(&next);
    }
    require(checked.size() == elimination_count(asked), q_error_enumeration);
    return checked;
}

}  // namespace quarn
