#include "batch_command.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <thread>

#include <CLI/CLI.hpp>

#include "arguments.h"
#include "batch_worker.h"
#include "csv_text.h"
#include "model_copies.h"
#include "ordered_blocks.h"
#include "output_file.h"
#include "potential_data.h"
#include "progress.h"
#include "terminal.h"
#include "tool_failure.h"

namespace tool {
namespace {

constexpr const char* batch_explanations =
    "Reads cases as comma-separated values and writes for each of them, in the same\n"
    "order, what quarn beliefs computes given this evidence alone. The first row of\n"
    "CASES has the names of nodes, each further one a case: what is observed of each\n"
    "node, as it is written for quarn beliefs after NODE=, or nothing. What quarn\n"
    "sample writes will do.\n"
    "\n"
    "What is written:\n"
    "  the columns that are kept; then for each target\n"
    "    NODE=STATE          the belief of each state of a discrete node\n"
    "    NODE:mean, NODE:variance   of a continuous node\n"
    "    NODE:expected       the expected utility of a utility node\n"
    "    NODE                the value of a function; nothing where it has none\n"
    "  log_p, the natural logarithm of the probability of the evidence; and error,\n"
    "  why a case could not be computed. Then the fields before are empty. How many\n"
    "  these were, and why the first was, is told at the end; the others do not\n"
    "  suffer. Numbers have full precision.\n"
    "\n"
    "Any number of cases takes no more memory than a thousand for each job. The\n"
    "output is the same for any number of jobs.\n"
    "\n"
    "FILE stays as it was until all cases are written.\n"
    "\n"
    "Exit status:\n"
    "  0  done, whatever the errors of cases\n"
    "  1  failed: the model cannot be used, CASES cannot be read or has a column that\n"
    "     is neither a node nor kept, or the output cannot be written\n"
    "  2  the command line is wrong\n"
    "\n"
    "Example:\n"
    "  quarn batch chest_clinic.net chest_clinic_cases.csv --keep patient\n"
    "  quarn batch chest_clinic.net chest_clinic_cases.csv --keep patient -o out.csv\n"
    "  quarn sample oil_wildcatter.net -n 9 | quarn batch oil_wildcatter.net -";

size_t parse_jobs(const std::string& text) {
    constexpr size_t most = 1024;
    const size_t jobs = parse_whole_number(text).value_or(0);
    if (jobs == 0 || jobs > most)
        throw usage_failure("--jobs needs a whole number from 1 to " + std::to_string(most));
    return jobs;
}

void tell_unused(const case_rows& cases, const case_columns& columns) {
    for (const std::string& name : columns.unused)
        report(cases.file() + ": warning: column " + name +
               " is not used: the node is computed, nothing is observed of it");
}

// A real-valued function without a model has no value in any case.
bool may_be_computed(q_node_t node) {
    return q_node_get_kind(node) != q_kind_other || q_node_get_category(node) == q_category_utility ||
           q_node_get_model(node) != nullptr;
}

std::vector<std::string> find_targets(const model& asked, const std::vector<std::string>& wanted) {
    std::vector<std::string> targets;
    for (const q_node_t node : shown_nodes(asked, wanted))
        if (!wanted.empty() || may_be_computed(node)) targets.emplace_back(q_node_get_name(node));
    return targets;
}

// As many as there are processors, but no more than keep the tables, and the copies that domains have of them, below
// 1 GiB. Errors are told when the model is compiled.
size_t choose_jobs(const model& asked) {
    constexpr size_t most_numbers = (size_t{1} << 30) / (2 * sizeof(double));
    asked.require_computable();
    if (q_domain_triangulate(asked.domain(), q_triangulate_best_greedy) != q_error_none) return 1;
    size_t numbers = 1;
    for (q_junction_tree_t tree = q_domain_get_first_junction_tree(asked.domain());
         tree != nullptr && numbers < most_numbers; tree = q_junction_tree_get_next(tree))
        numbers += std::min(q_junction_tree_get_total_size(tree), most_numbers);
    return std::clamp<size_t>(most_numbers / numbers, 1, std::max(1U, std::thread::hardware_concurrency()));
}

std::string first_line(const model& asked, const case_rows& cases, const case_columns& columns,
                       const std::vector<std::string>& targets) {
    std::string line;
    for (const size_t column : columns.kept) {
        append_field(line, cases.columns()[column]);
        line += ',';
    }
    belief_columns(asked, nodes_called(asked, targets)).append_names(line);
    return line += "log_p,error\n";
}

// Passes what the workers answer on, and counts what failed.
class answer_writer {
public:
    answer_writer(const case_rows& cases, output_file& output)
        : cases_(cases), output_(output), shown_(cases.size().value_or(0), "bytes", !output.is_terminal()) {}

    void write(const answered_block& answered) {
        output_.write(answered.lines);
        if (failed_rows_ == 0 && answered.failed_rows > 0)
            first_failure_ = cases_.file() + ":" + std::to_string(answered.first_failed_line) + ": " +
                             answered.first_failure;
        failed_rows_ += answered.failed_rows;
        rows_ += answered.rows;
        shown_.reach(answered.bytes_read);
    }

    void tell_failures() const {
        if (failed_rows_ == 0) return;
        report(first_failure_);
        report(cases_.file() + ": " + std::to_string(failed_rows_) + " of " + std::to_string(rows_) +
               (rows_ == 1 ? " row" : " rows") + " failed, this one first");
    }

private:
    const case_rows& cases_;
    output_file& output_;
    progress shown_;
    size_t rows_ = 0;
    size_t failed_rows_ = 0;
    std::string first_failure_;
};

}  // namespace

void add_batch_command(CLI::App& commands, batch_options& options) {
    CLI::App& command =
        add_command(commands, "batch", "Compute beliefs for many cases", options.model, batch_explanations);
    command.add_option("CASES", options.cases, "The cases; - for standard input")
        ->type_name("FILE")
        ->required();
    add_node_list(command, "--targets", options.targets, "Write beliefs of these nodes only, in this order");
    add_node_list(command, "--keep", options.keep, "Columns that are copied, and are no evidence")
        ->type_name("COLUMN,...");
    const auto set_jobs = [&options](const std::string& text) { options.jobs = parse_jobs(text); };
    command.add_option_function<std::string>("-j,--jobs", set_jobs, "Threads (one for each processor)")
        ->type_name("N");
    command.add_option("-o,--output", options.output)
        ->type_name("FILE")
        ->description("The file to be written (standard output)");
}

void run_batch(const batch_options& options) {
    if (options.cases.empty()) throw usage_failure("the name of the CASES file is missing");
    if (options.model == "-" && options.cases == "-")
        throw usage_failure("the model and the cases cannot both come from standard input");
    const model_copies copies(options.model);
    auto asked = std::make_unique<model>(copies.first());
    warn_of_models_without_data(*asked);
    case_rows cases(options.cases);
    const case_columns columns = find_columns(cases, *asked, options.keep);
    const std::vector<std::string> targets = find_targets(*asked, options.targets);
    tell_unused(cases, columns);
    output_file output(options.output);
    const size_t jobs = options.jobs ? *options.jobs : choose_jobs(*asked);
    output.write(first_line(*asked, cases, columns, targets));

    std::mutex taking;
    ordered_blocks<case_block, answered_block> blocks(jobs, [&] {
        std::unique_ptr<model> own;
        {
            const std::lock_guard lock(taking);
            own = std::move(asked);
        }
        if (own == nullptr) own = std::make_unique<model>(copies.another());
        const auto worker = std::make_shared<batch_worker>(std::move(own), columns, targets);
        return [worker](const case_block& block, const std::stop_token& stop) {
            return worker->answer(block, stop);
        };
    });
    answer_writer writer(cases, output);
    while (std::optional<case_block> block = cases.read_block()) {
        while (blocks.is_ready() || blocks.is_full()) writer.write(blocks.take());
        blocks.put(std::move(*block));
    }
    while (!blocks.is_empty()) writer.write(blocks.take());
    output.finish();
    writer.tell_failures();
}

}  // namespace tool
