#include "vertex_heap.h"

#include <utility>

namespace quarn {

vertex_heap::vertex_heap(std::vector<elimination_score> scores, first_key key)
    : scores_(std::move(scores)), key_(key), places_(scores_.size()) {
    heap_.reserve(scores_.size());
    for (vertex v = 0; v < scores_.size(); ++v) {
        heap_.push_back(v);
        places_[v] = v;
        sift_up(v);
    }
}

void vertex_heap::remove(vertex removed) noexcept {
    const std::size_t place = places_[removed];
    const vertex last = heap_.back();
    heap_.pop_back();
    if (last == removed) return;
    put(last, place);
    sift_up(place);
    sift_down(places_[last]);
}

void vertex_heap::change(vertex changed, const elimination_score& score) noexcept {
    scores_[changed] = score;
    sift_up(places_[changed]);
    sift_down(places_[changed]);
}

// Among vertices that cost no fill-in the scores do not count.
bool vertex_heap::beats(vertex a, vertex b) const noexcept {
    const elimination_score& score_a = scores_[a];
    const elimination_score& score_b = scores_[b];
    if (score_a.is_late != score_b.is_late) return score_b.is_late;
    if (score_b.fill_in == 0) return false;
    if (score_a.fill_in == 0) return true;
    const bool fewer = score_a.fill_in < score_b.fill_in;
    const bool smaller = score_a.clique < score_b.clique;
    if (key_ == first_key::clique) return smaller || (score_a.clique == score_b.clique && fewer);
    return fewer || (score_a.fill_in == score_b.fill_in && smaller);
}

void vertex_heap::put(vertex placed, std::size_t place) noexcept {
    heap_[place] = placed;
    places_[placed] = place;
}

void vertex_heap::sift_up(std::size_t place) noexcept {
    const vertex moved = heap_[place];
    while (place > 0) {
        const std::size_t parent = (place - 1) / 2;
        if (!beats(moved, heap_[parent])) break;
        put(heap_[parent], place);
        place = parent;
    }
    put(moved, place);
}

void vertex_heap::sift_down(std::size_t place) noexcept {
    const vertex moved = heap_[place];
    for (std::size_t child = 2 * place + 1; child < heap_.size(); child = 2 * place + 1) {
        if (child + 1 < heap_.size() && beats(heap_[child + 1], heap_[child])) ++child;
        if (!beats(heap_[child], moved)) break;
        put(heap_[child], place);
        place = child;
    }
    put(moved, place);
}

}  // namespace quarn
