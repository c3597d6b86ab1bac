// Numbers and distributions of tables in the NET language: entries in parentheses.
#pragma once

#include <cstddef>

#include "net_reader.h"
#include "table.h"

namespace quarn {

// data -> '(' { '(' | ')' | entry } ')', that many entries, each read by `parse_entry`. Inner parentheses only need to
// balance. Memory is to be taken as entries come: a short text with a huge table must not exhaust it.
template <class ParseEntry>
void parse_entries(net_reader& in, std::size_t count, ParseEntry&& parse_entry) {
    in.expect('(');
    std::size_t open = 1;
    for (std::size_t read = 0; read < count;) {
        const token next = in.next();
        if (next == '(') {
            ++open;
        } else if (next == ')' && open > 1) {
            --open;
        } else {
            in.push_back();
            parse_entry();
            ++read;
        }
    }
    for (; open > 0; --open) in.expect(')');
}

// Reads the numbers of a table.
void parse_numbers(net_reader& in, table& described);

}  // namespace quarn
