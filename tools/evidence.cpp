#include "evidence.h"

#include <set>

#include "finding_reader.h"
#include "source_file.h"
#include "tool_failure.h"

namespace tool {
namespace {

evidence parse_argument(const std::string& argument) {
    const size_t equals = argument.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == argument.size())
        throw usage_failure(argument + ": evidence is written NODE=STATE");
    evidence parsed{argument.substr(0, equals), argument.substr(equals + 1)};
    try {
        if (is_likelihood(parsed.finding)) parse_weights(parsed.finding, argument);
    } catch (const command_failure& wrong) {
        throw usage_failure(wrong.what());
    }
    return parsed;
}

// Instead of what the model has.
void enter_case(const model& target, const std::string& case_file) {
    source_file file(case_file);
    file.finish(q_domain_parse_case(target.domain(), file.path().c_str(), source_file::hear, &file));
}

}  // namespace

std::vector<evidence> parse_evidence(const std::vector<std::string>& arguments) {
    std::vector<evidence> parsed;
    std::set<std::string> nodes;
    for (const std::string& argument : arguments) {
        parsed.push_back(parse_argument(argument));
        if (!nodes.insert(parsed.back().node).second)
            throw usage_failure(argument + ": evidence on this node is given twice");
    }
    return parsed;
}

void enter_evidence(const model& target, const evidence& entered) {
    const q_node_t node = target.node_called(entered.node);
    try {
        finding_reader(node).enter(entered.finding);
    } catch (const command_failure& failed) {
        throw command_failure(target.file() + ": " + failed.what());
    }
}

void enter_evidence(const model& target, const std::optional<std::string>& case_file,
                    const std::vector<evidence>& entered) {
    if (case_file == "-" && target.file() == "-")
        throw usage_failure("the model and the case cannot both come from standard input");
    if (case_file) enter_case(target, *case_file);
    for (const evidence& more : entered) enter_evidence(target, more);
}

}  // namespace tool
