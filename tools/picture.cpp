#include "picture.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <utility>

#include "terminal.h"
#include "undirected_links.h"

namespace tool {
namespace {

link_sort sort_of_link(q_node_t parent, q_node_t child) {
    const bool is_real_valued =
        q_node_get_category(parent) == q_category_function && q_node_get_kind(parent) == q_kind_other;
    if (is_real_valued || q_node_get_category(child) == q_category_function) return link_sort::functional;
    return q_node_get_category(child) == q_category_decision ? link_sort::informational : link_sort::ordinary;
}

// Nodes that are joined, directly or not: few of them stand side by side, many would make a long line.
std::vector<std::vector<size_t>> components(const std::vector<picture_link>& links, size_t count) {
    constexpr size_t most = 4;
    std::vector<size_t> first(count);  // of the component of each node
    for (size_t i = 0; i < count; ++i) first[i] = i;
    for (const picture_link& link : links) {
        if (link.sort != link_sort::undirected) continue;
        const auto [kept, merged] = std::minmax(first[link.from], first[link.to]);
        std::ranges::replace(first, merged, kept);
    }
    std::vector<std::vector<size_t>> found(count);
    for (size_t i = 0; i < count; ++i) found[first[i]].push_back(i);
    std::erase_if(found,
                  [](const std::vector<size_t>& nodes) { return nodes.size() < 2 || nodes.size() > most; });
    return found;
}

}  // namespace

std::string title_of(const model& asked) {
    const char* const title = q_domain_get_attribute(asked.domain(), "title");
    if (title != nullptr && *title != '\0') return visible(title);
    return asked.file() == "-" ? "Network" : visible(std::filesystem::path(asked.file()).stem().string());
}

picture make_picture(const model& asked, const model_beliefs& results, card_content content) {
    picture made{title_of(asked), {}, {}, {}, {}};
    std::unordered_map<std::string, size_t> numbers;
    for (const node_beliefs& node : results.nodes) {
        numbers[node.node] = made.cards.size();
        made.names.push_back(node.node);
        made.cards.push_back(make_card(node, results, content));
    }
    const auto add_link = [&](const std::string& from, const std::string& to, link_sort sort) {
        const auto start = numbers.find(from), end = numbers.find(to);
        if (start != numbers.end() && end != numbers.end())
            made.links.push_back({start->second, end->second, sort});
    };
    for (const std::string& name : made.names) {
        const q_node_t child = asked.node_called(name);
        for (const q_node_t* parent = q_node_get_parents(child); *parent != nullptr; ++parent)
            add_link(q_node_get_name(*parent), name, sort_of_link(*parent, child));
    }
    for (const auto& [one, other] : undirected_links(asked.domain()))
        add_link(one, other, link_sort::undirected);
    made.abreast = components(made.links, made.cards.size());
    return made;
}

}  // namespace tool
