// Cases as comma-separated values (RFC 4180), read in blocks of rows.
#pragma once

#include <cstddef>
#include <cstdio>
#include <csv.h>
#include <deque>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

struct case_row {
    size_t line;         // where it begins, from 1
    size_t first_field;  // of those in the block
    size_t field_count;  // as in the file; in the block there are no more than columns
};

struct case_block {
    std::string text;                // of all fields
    std::vector<size_t> field_ends;  // in it
    std::vector<case_row> rows;
    size_t bytes_read = 0;  // from the file so far

    std::string_view field(const case_row& row, size_t column) const noexcept {
        const size_t place = row.first_field + column, begin = place == 0 ? 0 : field_ends[place - 1];
        return std::string_view(text).substr(begin, field_ends[place] - begin);
    }
};

// Lines end in LF, CR or both; empty lines are no rows. Fails with command_failure when the file cannot be read or its
// quotes are not in order, so that it is not known where rows end.
class case_rows {
public:
    // Reads the first row. `-` stands for standard input. The name must outlive this.
    explicit case_rows(const std::string& file);
    case_rows(const case_rows&) = delete;
    case_rows& operator=(const case_rows&) = delete;

    const std::string& file() const noexcept { return file_; }
    // The fields of the first row.
    const std::vector<std::string>& columns() const noexcept { return columns_; }
    // The line that it begins in.
    size_t columns_line() const noexcept { return columns_line_; }
    // The size of the file; nothing where it has none.
    std::optional<size_t> size() const;
    // The next rows: as many as a block has, fewer at the end, or where they are very long. Nothing at the end.
    std::optional<case_block> read_block();

private:
    struct file_closer {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    struct parser_deleter {
        void operator()(csv_parser* parser) const noexcept;
    };

    static void hear_field(void* text, size_t length, void* rows) noexcept;
    static void hear_row(int end, void* rows) noexcept;
    void add_field(std::string_view text);
    void end_row(int end);
    void read_more();
    void skip_byte_order_mark(std::string_view& text) const;
    void parse(std::string_view text);
    void finish_parsing();
    void check_parser(bool is_done);

    const std::string& file_;
    std::unique_ptr<std::FILE, file_closer> source_;
    std::unique_ptr<csv_parser, parser_deleter> parser_;
    std::exception_ptr failure_;  // inside the parser, which exceptions must not leave
    std::vector<std::string> columns_;
    size_t columns_line_ = 0;
    std::deque<case_block> blocks_{1};  // the last one is growing
    case_row row_{};                    // the one that is being read
    size_t line_ = 1;                   // of what follows the last field
    bool follows_return_ = false;       // whether a carriage return has just ended a row
    size_t bytes_read_ = 0;
    bool is_at_end_ = false;
};

}  // namespace tool
