#include "nearest.h"

#include <algorithm>
#include <numeric>

namespace tool {
namespace {

// How many characters are to be added, left out, replaced, or exchanged with the next one [Damerau 1964].
size_t distance(std::string_view from, std::string_view to) {
    std::vector<size_t> before, last(to.size() + 1), next(to.size() + 1);
    std::iota(last.begin(), last.end(), 0);
    for (size_t i = 0; i < from.size(); ++i) {
        next[0] = i + 1;
        for (size_t j = 0; j < to.size(); ++j) {
            next[j + 1] = std::min({last[j] + (from[i] == to[j] ? 0 : 1), last[j + 1] + 1, next[j] + 1});
            if (i > 0 && j > 0 && from[i] == to[j - 1] && from[i - 1] == to[j])
                next[j + 1] = std::min(next[j + 1], before[j - 1] + 1);
        }
        before = last;
        last.swap(next);
    }
    return last.back();
}

}  // namespace

std::string did_you_mean(std::string_view unknown, const std::vector<std::string>& names) {
    size_t least = std::min<size_t>(unknown.size() / 3, 2) + 1;  // too far
    const std::string* nearest = nullptr;
    for (const std::string& name : names) {
        if (name.size() + least <= unknown.size() || unknown.size() + least <= name.size()) continue;
        const size_t found = distance(unknown, name);
        if (found >= least) continue;
        least = found;
        nearest = &name;
    }
    return nearest == nullptr ? "" : "; did you mean " + *nearest + "?";
}

}  // namespace tool
