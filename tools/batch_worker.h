// Answers cases, one after the other, with a model of its own.
#pragma once

#include <memory>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "belief_columns.h"
#include "case_columns.h"
#include "case_rows.h"
#include "finding_reader.h"
#include "fresh_start.h"
#include "model.h"

namespace tool {

struct answered_block {
    std::string lines;
    size_t rows = 0;
    size_t failed_rows = 0;
    size_t first_failed_line = 0;  // in the file of cases
    std::string first_failure{};
    size_t bytes_read = 0;  // as in the case_block
};

class batch_worker {
public:
    // Compiles the model. The columns must outlive this.
    batch_worker(std::unique_ptr<model> asked, const case_columns& columns,
                 const std::vector<std::string>& targets);

    // A line for each row: fields that are kept, beliefs, logarithm of the probability of the evidence, why there is
    // nothing of these. Depends on nothing but the block. Is incomplete where it is stopped.
    answered_block answer(const case_block& block, const std::stop_token& stop);

private:
    // Fail with command_failure where the row is at fault.
    void enter_row(const case_block& block, const case_row& row);
    void propagate();
    void answer_row(const case_block& block, const case_row& row, answered_block& answered);

    std::unique_ptr<model> asked_;
    const case_columns& columns_;
    std::vector<std::pair<q_node_t, finding_reader>> readers_;  // one for each column with evidence
    std::unique_ptr<belief_columns> beliefs_;
    std::unique_ptr<fresh_start> fresh_;
    size_t usual_length_ = 0;  // of the lines of a block, and a little more
};

}  // namespace tool
