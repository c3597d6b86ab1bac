#include "draw_command.h"

#include <CLI/CLI.hpp>

#include "arguments.h"
#include "attempt.h"
#include "evidence.h"
#include "output_file.h"
#include "picture.h"
#include "potential_data.h"
#include "terminal.h"

namespace tool {
namespace {

constexpr const char* draw_explanations =
    "Each node is a card with the beliefs of its states as bars, the mean and\n"
    "standard deviation of a continuous node, a value or an expected utility.\n"
    "  rounded          chance; continuous ones have a bell curve\n"
    "  sharp corners    decisions; \"utility\" is what is expected given the choice\n"
    "  cut corners      utilities\n"
    "  lines at sides   functions\n"
    "  dark head        nodes with evidence\n"
    "  dashed links     lead to decisions: what is known then\n"
    "  dotted links     lead to functions, or from real-valued ones\n"
    "  without arrow    the nodes are joined by an undirected link\n"
    "Of more than ten states the most probable ones are shown. Evidence is written as\n"
    "for quarn beliefs. A network that cannot be computed is drawn without beliefs.\n"
    "\n"
    "The picture is SVG, laid out by the program dot of Graphviz (Debian: package\n"
    "graphviz). --dot prints the text for dot instead, and needs no dot.\n"
    "\n"
    "Exit status:\n"
    "  0  done\n"
    "  1  failed: the model cannot be read, the evidence is impossible in it, there\n"
    "     is no dot, or the picture cannot be written\n"
    "  2  the command line is wrong\n"
    "\n"
    "Example:\n"
    "  quarn draw chest_clinic.net -e asia=yes xray=yes -o clinic.svg\n"
    "  quarn draw car_insurance.net --plain -o car.svg\n"
    "  quarn draw chest_clinic.net --dot | dot -Tpdf -o clinic.pdf";

picture draw(model& asked, const draw_options& options) {
    const std::vector<q_node_t> shown = shown_nodes(asked, options.nodes);
    if (options.plain) return make_picture(asked, describe_all(asked, shown), card_content::title_only);
    warn_of_models_without_data(asked);
    const attempt made = try_to_compute(asked, shown);
    if (made.problem.empty()) return make_picture(asked, made.results, card_content::all);
    report("quarn: warning: drawn without beliefs: " + made.problem);
    return make_picture(asked, made.results, card_content::no_results);
}

}  // namespace

void add_draw_command(CLI::App& commands, draw_options& options) {
    CLI::App& command =
        add_command(commands, "draw", "Draw a network with its beliefs", options.model, draw_explanations);
    add_evidence(command, options.evidence, options.case_file);
    add_node_list(command, "-n,--nodes", options.nodes, "Draw these nodes only, and the links between them");
    command.add_flag("--plain", options.plain, "Draw nodes and links only; compute nothing");
    command.add_flag("--dot", options.dot, "Write the text for dot instead of a picture");
    command.add_option("-o,--output", options.output, "The file to be written; - is standard output")
        ->type_name("FILE");
}

void run_draw(const draw_options& options) {
    const std::vector<evidence> given = parse_evidence(options.evidence);
    model asked(options.model);
    enter_evidence(asked, options.case_file, given);
    const picture drawn = draw(asked, options);
    const std::string text = options.dot ? picture_as_dot(drawn) : picture_as_svg(drawn);
    output_file file(options.output);
    file.write(text);
    file.finish();
}

}  // namespace tool
