#include "potential_writer.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

#include "expression_printer.h"
#include "expression_types.h"
#include "model.h"
#include "table_writer.h"

namespace quarn {
namespace {

using nodes = std::span<node* const>;

template <class Test>
void append_if(std::vector<node*>& to, nodes from, Test&& test) {
    std::ranges::copy_if(from, std::back_inserter(to), test);
}

// The parents as a head must list them.
struct listed_parents {
    explicit listed_parents(const node& child) {
        const nodes all{child.parents.begin(), child.parents.size()};
        const auto is_discrete = [](const node* n) { return n->is_discrete(); };
        const auto is_real_function = [](const node* n) { return n->is_real_function(); };
        append_if(list, all, is_discrete);
        discrete_count = list.size();
        append_if(list, all, [&](const node* n) { return !is_discrete(n) && !is_real_function(n); });
        end_of_others = list.size();
        append_if(list, all, is_real_function);
    }

    nodes all() const noexcept { return list; }
    nodes discrete() const noexcept { return all().first(discrete_count); }
    nodes others() const noexcept { return all().subspan(discrete_count, end_of_others - discrete_count); }

    std::vector<node*> list;  // discrete ones, others, real-valued functions; each kind in its own order
    std::size_t discrete_count;
    std::size_t end_of_others;
};

void write_names(std::string& to, nodes named, const char* before) {
    for (const node* each : named) {
        to.append(before).append(each->name.get());
        before = " ";
    }
}

void write_head(std::string& to, nodes children, nodes parents) {
    to += "\npotential (";
    write_names(to, children, "");
    write_names(to, parents, " | ");
    to += ')';
}

void write_model(std::string& to, const model& written) {
    to += "\tmodel_nodes = (";
    write_names(to, {written.nodes.begin(), written.nodes.size()}, "");
    to += ");\n";
    if (written.samples_per_interval != 0)
        to.append("\tsamples_per_interval = " + std::to_string(written.samples_per_interval) + ";\n");
    to += "\tmodel_data = (";
    const char* separator = "\n\t    ";
    for (const owned_expression& expression : written.expressions) {
        to += separator;
        if (expression) {
            require_still_suitable(*written.owner, *expression);
            to += print(*expression);
        }
        separator = ",\n\t    ";
    }
    to += ");\n";
}

// Numbers that nobody has asked for are those that the reader makes where there are none.
bool is_written(const std::unique_ptr<table>& own_table) noexcept {
    return own_table && own_table->is_materialised();
}

void write_data(std::string& to, node& child, const listed_parents& parents) {
    const table& written = *child.own_table;
    if (child.is_continuous()) return write_normals(to, written, parents.discrete(), parents.others());
    std::vector<node*> order;
    if (!child.is_function()) append_if(order, parents.discrete(), [](const node*) { return true; });
    if (child.is_discrete()) order.push_back(&child);
    write_numbers(to, "data", written, order, child.is_discrete());
}

}  // namespace

void write_potential(std::string& to, node& child) {
    const bool says_nothing =
        !is_written(child.own_table) && !child.model && !child.experience && !child.fading;
    if (says_nothing && child.parents.empty()) return;
    const listed_parents parents(child);
    node* const children[] = {&child};
    write_head(to, children, parents.all());
    if (says_nothing) {
        to += " {}\n";
        return;
    }
    to += "\n{\n";
    if (child.model) write_model(to, *child.model);
    if (is_written(child.own_table)) write_data(to, child, parents);
    for (const auto& [attribute, written] :
         {std::pair("experience", child.experience.get()), std::pair("fading", child.fading.get())}) {
        if (written == nullptr) continue;
        written->materialise();
        write_numbers(to, attribute, *written, parents.discrete(), false);
    }
    to += "}\n";
}

void write_potential(std::string& to, const chain_component& component, const table& shared) {
    const nodes all{shared.nodes.begin(), shared.discrete_count};
    const auto is_member = [&](const node* n) { return n->component == &component; };
    std::vector<node*> order;
    append_if(order, all, [&](const node* n) { return !is_member(n); });
    const std::size_t parents = order.size();
    append_if(order, all, is_member);
    const nodes listed = order;
    write_head(to, listed.subspan(parents), listed.first(parents));
    if (!shared.is_materialised()) {
        to += " {}\n";
        return;
    }
    to += "\n{\n";
    write_numbers(to, "data", shared, listed, true);
    to += "}\n";
}

}  // namespace quarn
