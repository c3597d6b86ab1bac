#include "beliefs_command.h"

#include <cstdio>

#include <CLI/CLI.hpp>

#include "arguments.h"
#include "beliefs.h"
#include "evidence.h"
#include "potential_data.h"
#include "tool_failure.h"

namespace tool {
namespace {

constexpr const char* beliefs_explanations =
    "Evidence:\n"
    "  NODE=LABEL        The node is in the state with this label.\n"
    "  NODE=#INDEX       The node is in the state with this number, from 0.\n"
    "  NODE=(W W ...)    A likelihood: one weight for each state, in order, that says\n"
    "                    how probable what was observed is if the node is in it.\n"
    "                    Weights are not negative; only their ratios affect beliefs.\n"
    "  NODE=NUMBER       The value of a continuous node.\n"
    "\n"
    "What is printed:\n"
    "  Discrete nodes: the belief of each state. Decisions: as their policies have\n"
    "  it, unless a state is given as evidence. Continuous nodes: mean, variance and\n"
    "  SD, the standard deviation; discrete nodes whose states are numbers: mean and\n"
    "  SD. Functions: the value; N/A and the reason where they cannot be computed,\n"
    "  and for nodes that depend on the state of one that cannot.\n"
    "  With utilities: what is expected of each utility node, of all together, and\n"
    "  (EU) of those connected with a node given each of its states that can occur.\n"
    "  P(evidence): its probability, for values of continuous nodes the density.\n"
    "\n"
    "  --mode fast-retraction: beliefs given the evidence on all nodes but the node\n"
    "  itself, which tell if its evidence was to be expected. Not possible where\n"
    "  evidence excludes states of other nodes.\n"
    "  --max: the states of all nodes that are most probable together with the\n"
    "  evidence; where several are as probable, one of them. Likelihood evidence\n"
    "  counts as weights, by which the probabilities of states are multiplied.\n"
    "  Both are for networks of discrete chance nodes only.\n"
    "  --top: the nodes that the evidence moved most, largest move first, measured\n"
    "  from the beliefs without evidence: by the total variation distance, half the\n"
    "  sum of the changes of the beliefs (0 to 1); for continuous nodes by the change\n"
    "  of the mean in standard deviations without evidence. Nodes whose state or\n"
    "  value is given are left out, except with fast retraction, and so are\n"
    "  utilities, real-valued functions, and what cannot be computed. With --nodes it\n"
    "  chooses among those.\n"
    "\n"
    "Exit status:\n"
    "  0  done\n"
    "  1  failed: the model cannot be used, the evidence is impossible in it, or the\n"
    "     state of a function cannot be computed; the rest is printed then\n"
    "  2  the command line is wrong\n"
    "\n"
    "Example:\n"
    "  quarn beliefs chest_clinic.net --evidence asia=yes 'xray=(0.9 0.2)'\n"
    "  quarn beliefs chest_clinic.net -e xray=yes --top 3\n"
    "  quarn beliefs chest_clinic.net -e dyspnoea=yes --max --nodes cancer,bronchitis\n"
    "  quarn beliefs waste_incinerator.net -e light=1.1 waste=industrial\n"
    "  quarn beliefs oil_wildcatter.net -e test=yes seismic=closed --nodes drill\n"
    "  quarn beliefs car_insurance.net -e region=town claims=two";

q_mode_t mode_called(const std::string& name) {
    if (name == "normal") return q_mode_normal;
    if (name == "fast-retraction") return q_mode_fast_retraction;
    throw usage_failure("unknown mode " + name + "; there are normal and fast-retraction");
}

// More than fits is as good as the most.
size_t parse_count(const std::string& text) {
    const size_t count = parse_whole_number(text).value_or(0);
    if (count == 0) throw usage_failure("--top needs a whole number from 1");
    return count;
}

model_beliefs compute(model& asked, const beliefs_options& options, q_mode_t mode) {
    const std::vector<q_node_t> shown = shown_nodes(asked, options.nodes);
    if (options.max) return compute_configuration(asked, shown);
    model_beliefs result = compute_beliefs(asked, shown, mode);
    if (options.top) keep_most_moved(asked, result, *options.top);
    return result;
}

}  // namespace

void add_beliefs_command(CLI::App& commands, beliefs_options& options) {
    CLI::App& command = add_command(commands, "beliefs", "Print the beliefs of all nodes given evidence",
                                    options.model, beliefs_explanations);
    add_evidence(command, options.evidence, options.case_file);
    command.add_option("--mode", options.mode, "Which evidence counts, see below (normal)")
        ->type_name("normal|fast-retraction");
    command.add_flag("--max", options.max, "Print a most probable configuration instead");
    add_node_list(command, "-n,--nodes", options.nodes, "Print these nodes only, in this order");
    const auto set_top = [&options](const std::string& text) { options.top = parse_count(text); };
    command.add_option_function<std::string>("--top", set_top, "Print the N nodes that evidence moved most")
        ->type_name("N");
    command.add_flag("--json", options.json, "Print JSON, with numbers in full precision");
}

std::string run_beliefs(const beliefs_options& options) {
    const q_mode_t mode = mode_called(options.mode);
    if (options.max && (options.top || mode != q_mode_normal))
        throw usage_failure("--max goes neither with --top nor with --mode fast-retraction");
    const std::vector<evidence> given = parse_evidence(options.evidence);
    model asked(options.model);
    warn_of_models_without_data(asked);
    enter_evidence(asked, options.case_file, given);
    const model_beliefs result = compute(asked, options, mode);
    std::string text = options.json ? beliefs_as_json(result) : beliefs_as_text(result);
    if (result.failure != q_error_none) std::fputs(text.c_str(), stdout);
    require_all_computed(result);
    return text;
}

}  // namespace tool
