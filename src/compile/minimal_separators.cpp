// Minimal separators, each found from another one.
//
//   Maps     connected graph -> its minimal separators
//   Cost     for each of them and each of its vertices one walk over the graph
//   Method   [Berry, Bordat & Cogis 2000]. Around a vertex: the borders of the components beyond its neighbours. From
//            a separator: for each of its vertices, the borders of the components that are left without the separator
//            and the neighbours of the vertex
//   Differs  bounded number, size and work
#include "minimal_separators.h"

namespace quarn {
namespace {

class separator_search {
public:
    separator_search(const bit_graph& connected, const search_limits& limits, search_work& work)
        : whole_(connected),
          limits_(limits),
          work_(work),
          walk_(connected, work),
          all_(connected.first(connected.vertex_count())),
          removed_(connected.words()),
          found_{set_table(connected.words())} {}

    found_separators run() {
        for (vertex v = 0; v < whole_.vertex_count() && !found_.are_more; ++v) {
            removed_ = whole_.to_bits({});
            insert(removed_, v);
            add_beyond(v);
        }
        for (std::size_t from = 0; from < found_.sets.size() && !found_.are_more; ++from) {
            const vertex_bits separator = copy_of(found_.sets[from]);
            for_each(separator, [&](vertex v) {
                removed_ = separator;
                if (!found_.are_more) add_beyond(v);
            });
        }
        return std::move(found_);
    }

private:
    void add_beyond(vertex v) {
        unite(removed_, whole_.neighbors(v));
        for (walk_.start(all_, removed_); walk_.next() && !found_.are_more;) {
            if (limits_.separator_size != 0 && count(walk_.border()) > limits_.separator_size)
                found_.were_large_ones = true;
            else if (found_.sets.size() < limits_.separators && !work_.is_over())
                found_.sets.add(walk_.border());
            else
                found_.are_more = work_.is_over() || !found_.sets.contains(walk_.border());
        }
    }

    const bit_graph& whole_;
    const search_limits& limits_;
    search_work& work_;
    component_walk walk_;
    vertex_bits all_;
    vertex_bits removed_;
    found_separators found_;
};

}  // namespace

found_separators find_minimal_separators(const bit_graph& connected, const search_limits& limits,
                                         search_work& work) {
    return separator_search(connected, limits, work).run();
}

}  // namespace quarn
