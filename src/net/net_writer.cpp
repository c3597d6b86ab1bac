#include "net_writer.h"

#include <algorithm>

#include "chain_component.h"
#include "node.h"
#include "node_writer.h"
#include "potential_writer.h"

namespace quarn {
namespace {

// No size is negative in the language.
void write_net_block(std::string& to, const domain& written) {
    to.append("net\n{\n    node_size = (" + std::to_string(std::max(written.node_width, 0)) + ' ' +
              std::to_string(std::max(written.node_height, 0)) + ");\n");
    write_attributes(to, written.attributes);
    to += "}\n";
}

// First those of real-valued functions: with decisions or utilities, the reader accepts links to them only while they
// influence nothing but other such functions. Last those that components share, which then bring no new links: the own
// potentials of nodes have all, in their order.
void write_potentials(std::string& to, const domain& written) {
    for (const bool of_real_functions : {true, false})
        for (node* each = written.oldest; each != nullptr; each = each->newer)
            if (each->is_real_function() == of_real_functions) write_potential(to, *each);
    for (const auto& component : written.components)
        for (const auto& shared : component->potentials) write_potential(to, *component, *shared);
}

}  // namespace

std::string write_net(domain& written) {
    std::string made;
    write_net_block(made, written);
    for (node* each = written.oldest; each != nullptr; each = each->newer) {
        made += '\n';
        write_node(made, *each);
    }
    write_potentials(made, written);
    return made;
}

}  // namespace quarn
