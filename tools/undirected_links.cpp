#include "undirected_links.h"

#include <iterator>
#include <sstream>
#include <string_view>

namespace tool {

std::vector<std::pair<std::string, std::string>> undirected_links(q_domain_t domain) {
    constexpr std::string_view keyword = "potential (";
    std::vector<std::pair<std::string, std::string>> links;
    std::istringstream lines(net_text(domain));
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with(keyword)) continue;
        std::istringstream words(line.substr(keyword.size(), line.find_first_of("|)") - keyword.size()));
        const std::vector<std::string> children(std::istream_iterator<std::string>(words), {});
        for (size_t i = 0; i < children.size(); ++i)
            for (size_t j = i + 1; j < children.size(); ++j) links.emplace_back(children[i], children[j]);
    }
    return links;
}

}  // namespace tool
