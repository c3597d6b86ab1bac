// What a picture says of one node.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "beliefs.h"

namespace tool {

enum class card_sort { chance, continuous, decision, utility, function };

struct card_row {
    std::string label;
    std::optional<double> belief{};
    std::string value{};   // as people read it: in percent
    std::string beside{};  // expected utility or weight
    bool is_observed = false;
    std::string details{};  // in full
};

// Texts are printable.
struct card {
    card_sort sort;
    std::string title;
    std::string name;      // empty: the title is the name
    std::string evidence;  // of which sort; empty: none
    std::string beside;    // over that column
    std::vector<card_row> rows{};
    std::string number{};  // in place of rows
    std::string caption{};
    bool is_computed = true;
    bool is_certain = false;  // a continuous node without spread
};

enum class card_content { title_only, no_results, all };

// The largest utility tells rounding errors from utilities.
card make_card(const node_beliefs& node, const model_beliefs& results, card_content content);

// "chance" and so on.
const char* name_of(card_sort sort);

// In percent: never 0 or 100 for what is neither, and 3 digits at most.
std::string format_percent(double belief);

}  // namespace tool
