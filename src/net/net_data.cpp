#include "net_data.h"

#include <algorithm>
#include <vector>

namespace quarn {

// entry -> NUMBER
void parse_numbers(net_reader& in, table& described) {
    const bool warns = described.type == table_type::probability;
    std::vector<double> numbers;
    parse_entries(in, described.size, [&] {
        numbers.push_back(in.expect_number());
        if (warns && numbers.back() < 0) in.report("warning: negative value in probability potential");
    });
    described.materialise();
    std::ranges::copy(numbers, described.data.begin());
}

}  // namespace quarn
