// Elimination triangulation: remove the cheapest vertex, connect its neighbours, repeat.
//
//   Maps     connected graph -> maximal cliques of a triangulation
//   Cost     a step with d neighbours looks at their O(d^2) pairs; a fill-in link costs as said in elimination_graph.cpp,
//            and each vertex whose score changes O(log n) in the heap
//   Method   greedy one-step look-ahead [Kjaerulff 1990]; ties fall to the place in the heap, hence to vertex order
//   Differs  neighbours that form no larger clique are eliminated in the same step
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
    elimination(const graph& start, elimination_heuristic heuristic)
        : weighted_(uses_weights(heuristic)),
          left_(start, weighted_),
          queue_(initial_scores(start), key_of(heuristic)),
          step_of_(start.vertex_count()) {}

    void run() {
        while (!queue_.empty()) {
            eliminate(queue_.top());
            for (const vertex changed : left_.take_changed()) queue_.change(changed, score(changed));
        }
    }

    clique_list maximal_cliques() const;
    const std::vector<edge>& fill_ins() const noexcept { return fill_ins_; }
    vertex last() const noexcept { return last_; }

private:
    elimination_score score(vertex v) const noexcept {
        return {left_.fill_in(v),
                weighted_ ? left_.clique_weight_of(v) : static_cast<double>(left_.degree(v) + 1)};
    }

    std::vector<elimination_score> initial_scores(const graph& start) const {
        std::vector<elimination_score> scores(start.vertex_count());
        for (vertex v = 0; v < scores.size(); ++v) scores[v] = score(v);
        return scores;
    }

    void eliminate(vertex cheapest) {
        vertex_set clique = left_.neighbors(cheapest);
        connect(clique);
        std::size_t others = clique.size();
        remove(cheapest);
        for (const vertex v : clique)
            if (left_.degree(v) == others - 1) {  // linked to nothing outside the clique
                remove(v);
                --others;
            }
        clique.insert(std::ranges::lower_bound(clique, cheapest), cheapest);
        cliques_.push_back(std::move(clique));
    }

    void connect(const vertex_set& members) {
        for (auto a = members.begin(); a != members.end(); ++a)
            for (auto b = a + 1; b != members.end(); ++b)
                if (!left_.adjacent(*a, *b)) {
                    left_.add_link(*a, *b);
                    fill_ins_.push_back({*a, *b});
                }
    }

    void remove(vertex removed) {
        left_.remove(removed);
        queue_.remove(removed);
        step_of_[removed] = cliques_.size();
        last_ = removed;
    }

    bool weighted_;
    elimination_graph left_;
    vertex_heap queue_;
    clique_list cliques_;               // one for each step
    std::vector<std::size_t> step_of_;  // that eliminated each vertex
    std::vector<edge> fill_ins_;
    vertex last_ = 0;
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

clique_list triangulate_by_elimination(const graph& start, elimination_heuristic heuristic) {
    elimination run(start, heuristic);
    run.run();
    clique_list cliques = run.maximal_cliques();
    remove_redundant_fill_ins(cliques, run.fill_ins(), start.vertex_count());
    move_to_end(cliques, run.last());
    return cliques;
}

}  // namespace quarn
