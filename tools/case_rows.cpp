#include "case_rows.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <new>

#include "source_file.h"
#include "tool_failure.h"

namespace tool {
namespace {

constexpr size_t rows_in_block = 256;
constexpr size_t longest_field = size_t{16} << 20;  // before the quote that ends it must have been forgotten
constexpr size_t most_text_in_block = size_t{4} << 20;

int is_no_space(unsigned char /*c*/) { return 0; }  // all belong to the fields that they stand in

}  // namespace

case_rows::case_rows(const std::string& file)
    : file_(file), source_(std::fopen(source_file(file).path().c_str(), "rbe")) {
    if (source_ == nullptr) source_file(file).fail_to_read(q_error_io);
    parser_.reset(new csv_parser{});
    csv_init(parser_.get(), CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL);
    csv_set_space_func(parser_.get(), is_no_space);
    csv_set_blk_size(parser_.get(), 4096);
    while (columns_.empty() && !is_at_end_) read_more();
    if (columns_.empty()) throw command_failure(file + ": there is no row with the names of nodes");
}

void case_rows::parser_deleter::operator()(csv_parser* parser) const noexcept {
    csv_free(parser);
    delete parser;
}

std::optional<size_t> case_rows::size() const {
    std::error_code none;
    const auto size = std::filesystem::file_size(source_file(file_).path(), none);
    return none ? std::nullopt : std::optional<size_t>(size);
}

std::optional<case_block> case_rows::read_block() {
    while (blocks_.size() == 1 && !is_at_end_) read_more();
    if (blocks_.front().rows.empty()) return {};
    case_block block = std::move(blocks_.front());
    blocks_.pop_front();
    if (blocks_.empty()) blocks_.emplace_back();
    block.bytes_read = bytes_read_;
    return block;
}

void case_rows::hear_field(void* text, size_t length, void* rows) noexcept {
    auto& hearing = *static_cast<case_rows*>(rows);
    try {
        hearing.add_field({static_cast<const char*>(text), length});
    } catch (...) {
        hearing.failure_ = std::current_exception();
    }
}

void case_rows::hear_row(int end, void* rows) noexcept {
    auto& hearing = *static_cast<case_rows*>(rows);
    try {
        hearing.end_row(end);
    } catch (...) {
        hearing.failure_ = std::current_exception();
    }
}

void case_rows::add_field(std::string_view text) {
    case_block& block = blocks_.back();
    if (row_.field_count == 0) row_ = {line_, block.field_ends.size(), 0};
    line_ += static_cast<size_t>(std::ranges::count(text, '\n'));
    follows_return_ = false;
    if (++row_.field_count > columns_.size() && columns_line_ > 0) return;
    block.text += text;
    block.field_ends.push_back(block.text.size());
}

// Also called for each further character of ends of lines.
void case_rows::end_row(int end) {
    if (row_.field_count > 0 && columns_line_ == 0) {
        for (size_t column = 0; column < row_.field_count; ++column)
            columns_.emplace_back(blocks_.back().field(row_, column));
        columns_line_ = row_.line;
        blocks_.back() = {};
    } else if (row_.field_count > 0) {
        case_block& block = blocks_.back();
        block.rows.push_back(row_);
        if (block.rows.size() == rows_in_block || block.text.size() > most_text_in_block)
            blocks_.emplace_back();
    }
    row_.field_count = 0;
    if (end == '\r' || (end == '\n' && !follows_return_)) ++line_;
    follows_return_ = end == '\r';
}

void case_rows::read_more() {
    std::array<char, 64 * 1024> buffer;
    const size_t count = std::fread(buffer.data(), 1, buffer.size(), source_.get());
    if (std::ferror(source_.get()) != 0) source_file(file_).fail_to_read(q_error_io);
    std::string_view text(buffer.data(), count);
    if (bytes_read_ == 0) skip_byte_order_mark(text);
    bytes_read_ += count;
    is_at_end_ = count < buffer.size();
    parse(text);
    if (is_at_end_) finish_parsing();
}

void case_rows::skip_byte_order_mark(std::string_view& text) const {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    if (text.starts_with(mark)) text.remove_prefix(mark.size());
}

void case_rows::parse(std::string_view text) {
    check_parser(csv_parse(parser_.get(), text.data(), text.size(), hear_field, hear_row, this) ==
                 text.size());
    if (csv_get_buffer_size(parser_.get()) > longest_field) check_parser(false);
}

void case_rows::finish_parsing() { check_parser(csv_fini(parser_.get(), hear_field, hear_row, this) == 0); }

void case_rows::check_parser(bool is_done) {
    if (failure_ != nullptr) std::rethrow_exception(failure_);
    if (is_done) return;
    if (csv_error(parser_.get()) == CSV_ENOMEM) throw std::bad_alloc();
    const size_t line = row_.field_count > 0 ? row_.line : line_;
    throw command_failure(
        file_ + ":" + std::to_string(line) +
        ": the quotes in this row are not in order: a field with a quote in it must begin and end "
        "with quotes, and have those in it doubled");
}

}  // namespace tool
