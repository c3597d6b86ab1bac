// The queue of vertices to be eliminated: a binary heap with the cheapest vertex on top.
//
// Vertices enter in ascending order. Where scores do not decide, the place in the heap does, so an elimination order is
// determined by the sequence of calls.
#pragma once

#include <cstdint>

#include "graph.h"

namespace quarn {

// What the elimination of a vertex costs at the moment.
struct elimination_score {
    uint64_t fill_in =
        0;  // pairs of neighbours that are not linked, or their weight; 0: nothing is lost by eliminating
    double clique = 0;     // size or weight of the clique that it makes
    bool is_late = false;  // to be eliminated after all that are not
};

enum class first_key { clique, fill_in };  // the other one decides between equals

class vertex_heap {
public:
    vertex_heap(std::vector<elimination_score> scores, first_key key);

    bool empty() const noexcept { return heap_.empty(); }
    vertex top() const noexcept { return heap_.front(); }
    void remove(vertex removed) noexcept;
    // Gives a vertex another score and moves it to where it then belongs.
    void change(vertex changed, const elimination_score& score) noexcept;

private:
    bool beats(vertex a, vertex b) const noexcept;
    void put(vertex placed, std::size_t place) noexcept;
    void sift_up(std::size_t place) noexcept;
    void sift_down(std::size_t place) noexcept;

    std::vector<elimination_score> scores_;  // of each vertex
    first_key key_;
    std::vector<vertex> heap_;         // the children of place p are 2p + 1 and 2p + 2
    std::vector<std::size_t> places_;  // of each vertex in the heap
};

}  // namespace quarn
