#include "batch_worker.h"

#include <new>

#include "arguments.h"
#include "csv_text.h"
#include "open_decision.h"
#include "terminal.h"
#include "tool_failure.h"

namespace tool {
namespace {

void append_kept(const case_columns& columns, const case_block& block, const case_row& row,
                 std::string& line) {
    for (const size_t column : columns.kept) {
        if (column < row.field_count) append_field(line, block.field(row, column));
        line += ',';
    }
}

}  // namespace

batch_worker::batch_worker(std::unique_ptr<model> asked, const case_columns& columns,
                           const std::vector<std::string>& targets)
    : asked_(std::move(asked)), columns_(columns) {
    for (const case_columns::evidence_column& column : columns.evidence) {
        const q_node_t node = asked_->node_called(column.node);
        readers_.emplace_back(node, node);
    }
    asked_->compute_what_can_be();
    beliefs_ = std::make_unique<belief_columns>(*asked_, nodes_called(*asked_, targets));
    fresh_ = std::make_unique<fresh_start>(*asked_);
}

answered_block batch_worker::answer(const case_block& block, const std::stop_token& stop) {
    answered_block answered;
    answered.rows = block.rows.size();
    answered.bytes_read = block.bytes_read;
    answered.lines.reserve(usual_length_);
    fresh_->make();
    for (const case_row& row : block.rows) {
        if (stop.stop_requested()) break;
        answer_row(block, row, answered);
    }
    usual_length_ = answered.lines.size() + answered.lines.size() / 16;
    return answered;
}

void batch_worker::answer_row(const case_block& block, const case_row& row, answered_block& answered) {
    append_kept(columns_, block, row, answered.lines);
    try {
        enter_row(block, row);
        propagate();
    } catch (const command_failure& failed) {
        if (answered.failed_rows++ == 0) {
            answered.first_failed_line = row.line;
            answered.first_failure = failed.what();
        }
        beliefs_->append_nothing(answered.lines);
        answered.lines += ',';
        append_field(answered.lines, visible(failed.what()));
        answered.lines += '\n';
        return;
    }
    beliefs_->append_values(answered.lines);
    append_number(answered.lines, q_domain_get_log_normalization_constant(asked_->domain()));
    answered.lines += ",\n";
}

void batch_worker::enter_row(const case_block& block, const case_row& row) {
    if (row.field_count != columns_.count)
        throw command_failure("the row has " + std::to_string(row.field_count) +
                              (row.field_count == 1 ? " field instead of " : " fields instead of ") +
                              std::to_string(columns_.count));
    for (size_t i = 0; i < readers_.size(); ++i) {
        const auto& [node, reader] = readers_[i];
        const std::string_view field = block.field(row, columns_.evidence[i].column);
        if (field.empty())
            q_node_retract_findings(node);
        else
            reader.enter(field);
    }
}

void batch_worker::propagate() {
    const q_error_t code = q_domain_propagate(asked_->domain(), q_equilibrium_sum, q_mode_normal);
    if (code == q_error_none) return;
    if (code == q_error_no_memory) throw std::bad_alloc();
    std::string fault;
    if (code == q_error_invalid_evidence) fault = find_open_decision(asked_->nodes());
    throw command_failure(fault.empty() ? in_words(code) : fault);
}

}  // namespace tool
