// Elimination triangulation: remove the cheapest vertex, connect its neighbours, repeat.
//
//   Maps     connected graph -> maximal cliques of a triangulation, elimination order
//   Cost     a step with d neighbours looks at their O(d^2) pairs; a fill-in link costs as said in elimination_graph.cpp,
//            and each vertex whose score changes O(log n) in the heap
//   Method   greedy one-step look-ahead [Kjaerulff 1990]; ties fall to the place in the heap, hence to vertex order
//   Differs  neighbours that form no larger clique are eliminated in the same step; continuous vertices come first
#include "elimination.h"

#include <algorithm>

#include "elimination_graph.h"
#include "redundant_fill_ins.h"
#include "vertex_heap.h"

namespace quarn {
namespace {

first_key key_of(elimination_heuristic heuristic) noexcept {
    return heuristic < elimination_heuristic::fill_in_size ? first_key::clique : first_key::fill_in;
}

class elimination {
public:
    elimination(const graph& start, bool weighted)
        : start_(start), weighted_(weighted), left_(start, weighted), step_of_(start.vertex_count()) {
        continuous_left_ = std::ranges::count_if(start.domains, &vertex_domain::is_continuous);
    }

    void run(first_key key) {
        vertex_heap queue(initial_scores(), key);
        while (!queue.empty()) {
            const std::size_t first = result_.order.size();
            eliminate(queue.top(), true);
            for (std::size_t i = first; i < result_.order.size(); ++i) queue.remove(result_.order[i]);
            for (const vertex changed : left_.take_changed()) queue.change(changed, score(changed));
        }
    }

    void run(std::span<const vertex> order) {
        for (const vertex next : order) eliminate(next, false);
    }

    elimination_result result() {
        result_.cliques = maximal_cliques();
        result_.removed = remove_redundant_fill_ins(result_.cliques, result_.fill_ins, start_.vertex_count());
        return std::move(result_);
    }

private:
    bool is_late(vertex v) const noexcept { return !start_.domains[v].is_continuous && continuous_left_ > 0; }

    elimination_score score(vertex v) const noexcept {
        return {left_.fill_in(v),
                weighted_ ? left_.clique_weight_of(v) : static_cast<double>(left_.degree(v) + 1),
                !start_.domains[v].is_continuous};
    }

    std::vector<elimination_score> initial_scores() const {
        std::vector<elimination_score> scores(start_.vertex_count());
        for (vertex v = 0; v < scores.size(); ++v) scores[v] = score(v);
        return scores;
    }

    void eliminate(vertex next, bool with_simplicial_neighbors) {
        vertex_set clique = left_.neighbors(next);
        connect(clique);
        std::size_t others = clique.size();
        remove(next);
        for (const vertex v : clique)
            if (with_simplicial_neighbors && !is_late(v) &&
                left_.degree(v) == others - 1) {  // linked to nothing outside the clique
                remove(v);
                --others;
            }
        clique.insert(std::ranges::lower_bound(clique, next), next);
        cliques_.push_back(std::move(clique));
    }

    void connect(const vertex_set& members) {
        for (auto a = members.begin(); a != members.end(); ++a)
            for (auto b = a + 1; b != members.end(); ++b)
                if (!left_.adjacent(*a, *b)) {
                    left_.add_link(*a, *b);
                    result_.fill_ins.push_back({*a, *b});
                }
    }

    void remove(vertex removed) {
        left_.remove(removed);
        step_of_[removed] = cliques_.size();
        continuous_left_ -= start_.domains[removed].is_continuous;
        result_.order.push_back(removed);
        result_.fill_in_ends.push_back(result_.fill_ins.size());
    }

    clique_list maximal_cliques() const;

    const graph& start_;
    bool weighted_;
    elimination_graph left_;
    std::ptrdiff_t continuous_left_;
    clique_list cliques_;               // one for each step
    std::vector<std::size_t> step_of_;  // that eliminated each vertex
    elimination_result result_;
};

// What a step leaves of its clique lies in the clique of the next step that eliminates some of it. When it is as large,
// it is all of that clique; and there is no other way in which a clique can lie in an earlier one.
clique_list elimination::maximal_cliques() const {
    std::vector<char> is_maximal(cliques_.size(), true);
    for (std::size_t step = 0; step < cliques_.size(); ++step) {
        std::size_t left = 0;
        std::size_t next_step = cliques_.size();
        for (const vertex member : cliques_[step])
            if (step_of_[member] > step) {
                ++left;
                next_step = std::min(next_step, step_of_[member]);
            }
        if (left > 0 && left == cliques_[next_step].size()) is_maximal[next_step] = false;
    }
    clique_list maximal;
    for (std::size_t step = 0; step < cliques_.size(); ++step)
        if (is_maximal[step]) maximal.push_back(cliques_[step]);
    return maximal;
}

// The last of the cliques that hold the vertex goes to the end.
void move_to_end(clique_list& cliques, vertex last) {
    const auto found = std::find_if(cliques.rbegin(), cliques.rend(), [last](const vertex_set& clique) {
        return std::ranges::binary_search(clique, last);
    });
    std::rotate(found.base() - 1, found.base(), cliques.end());
}

}  // namespace

elimination_result triangulate_by_elimination(const graph& start, elimination_heuristic heuristic) {
    elimination eliminated(start, uses_weights(heuristic));
    eliminated.run(key_of(heuristic));
    elimination_result result = eliminated.result();
    move_to_end(result.cliques, result.order.back());
    return result;
}

elimination_result triangulate_in_order(const graph& start, std::span<const vertex> order) {
    elimination eliminated(start, false);
    eliminated.run(order);
    elimination_result result = eliminated.result();
    move_to_end(result.cliques, result.order.back());
    return result;
}

}  // namespace quarn
