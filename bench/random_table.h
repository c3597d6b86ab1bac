// Tables for networks that are measured.
#pragma once

#include <cstddef>
#include <random>

#include <quarn.h>

// Rows drawn at random, without zeros.
inline void fill_table(q_node_t node, std::mt19937& random) {
    q_table_t table = q_node_get_table(node);
    q_number_t* data = q_table_get_data(table);
    for (std::size_t entry = 0; entry < q_table_get_size(table); ++entry)
        data[entry] = static_cast<double>(1 + random() % 9);
}
