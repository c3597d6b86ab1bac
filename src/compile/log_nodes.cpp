#include "log_nodes.h"

#include <cstring>

namespace quarn {

void log_nodes(log_file& log, std::span<node* const> nodes) {
    constexpr std::size_t line_width = 80;
    std::size_t column = 0;
    for (node* listed : nodes) {
        const char* const name = node_name(*listed);
        const std::size_t length = std::strlen(name);
        if (column > 0 && column + 2 + length < line_width) {
            log.print(", %s", name);
            column += 2 + length;
        } else {
            log.print("%s    %s", column > 0 ? ",\n" : "", name);
            column = 4 + length;
        }
    }
    log.print("\n");
}

}  // namespace quarn
