#include "domain.h"

#include "chain_component.h"
#include "errors.h"
#include "node.h"
#include "user_data.h"

using namespace quarn;

q_domain::q_domain() = default;

q_domain::~q_domain() {
    uncompile();
    for (q_node* deleted = newest; deleted != nullptr;) {
        q_node* next = deleted->older;
        delete deleted;
        deleted = next;
    }
}

void q_domain::link(q_node& added) noexcept {
    added.older = newest;
    (newest != nullptr ? newest->newer : oldest) = &added;
    newest = &added;
    added.number = ++node_count;
    ++counts.of_category(added.category);
    if (added.is_discrete()) ++counts.discrete;
    if (added.is_continuous()) ++counts.continuous;
    if (added.has_kind()) settings.forget_orders();
    sampling.reset();
}

void q_domain::unlink(q_node& removed) noexcept {
    (removed.older != nullptr ? removed.older->newer : oldest) = removed.newer;
    (removed.newer != nullptr ? removed.newer->older : newest) = removed.older;
    if (removed.newer != nullptr) numbers_are_current = false;
    --node_count;
    --counts.of_category(removed.category);
    if (removed.is_discrete()) --counts.discrete;
    if (removed.is_continuous()) --counts.continuous;
    settings.excluded.remove(&removed);
    if (removed.has_kind()) settings.forget_orders();
    sampling.reset();
}

void q_domain::number_nodes() noexcept {
    if (numbers_are_current) return;
    std::size_t number = 0;
    for (q_node* numbered = oldest; numbered != nullptr; numbered = numbered->newer)
        numbered->number = ++number;
    numbers_are_current = true;
}

void quarn::delete_domain(domain* deleted) {
    for (node* last = deleted->oldest; last != nullptr; last = last->newer) run_cleanup(*last);
    run_cleanup(*deleted);
    const bool closed = deleted->log.close();
    delete deleted;
    require(closed, q_error_io);
}
