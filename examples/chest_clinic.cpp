// Builds the chest clinic network of Lauritzen and Spiegelhalter (1988), learns of a patient who has been to Asia and is
// short of breath, and prints what that makes of everything else: chest_clinic.c with quarn.hpp.
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

#include <quarn.hpp>

namespace {

// Tables hold, for each configuration of the parents, the last one varying fastest: yes, no.
quarn::domain chest_clinic() {
    quarn::domain clinic;
    const auto add = [&](const char* name, const char* label, const std::vector<quarn::node>& parents,
                         const std::vector<double>& table) {
        const quarn::node node = clinic.new_chance(name, {"yes", "no"}, parents);
        node.set_label(label);
        node.set_table(table);
        return node;
    };
    const auto asia = add("asia", "Visit to Asia", {}, {0.01, 0.99});
    const auto smoking = add("smoking", "Smoker", {}, {0.5, 0.5});
    const auto tuberculosis = add("tuberculosis", "Tuberculosis", {asia}, {0.05, 0.95, 0.01, 0.99});
    const auto cancer = add("cancer", "Lung cancer", {smoking}, {0.1, 0.9, 0.01, 0.99});
    const auto bronchitis = add("bronchitis", "Bronchitis", {smoking}, {0.6, 0.4, 0.3, 0.7});
    const auto either =
        add("either", "Tuberculosis or cancer", {tuberculosis, cancer}, {1, 0, 1, 0, 1, 0, 0, 1});
    add("xray", "Positive X-ray", {either}, {0.98, 0.02, 0.05, 0.95});
    add("dyspnoea", "Dyspnoea", {either, bronchitis}, {0.9, 0.1, 0.7, 0.3, 0.8, 0.2, 0.1, 0.9});
    return clinic;
}

void print_beliefs(const quarn::domain& clinic) {
    for (const quarn::node node : clinic.nodes())
        std::cout << std::left << std::setw(25) << node.label() << node.belief("yes") << '\n';
}

}  // namespace

int main() try {
    quarn::domain clinic = chest_clinic();
    clinic.compile();
    clinic.propagate();
    std::cout << std::fixed << std::setprecision(4) << "Before anything is known:\n";
    print_beliefs(clinic);

    clinic.node("asia").select("yes");
    clinic.node("dyspnoea").select("yes");
    clinic.propagate();
    std::cout << "\nAfter a visit to Asia, with dyspnoea (probability " << std::setprecision(6)
              << clinic.normalization_constant() << "):\n"
              << std::setprecision(4);
    print_beliefs(clinic);
    return std::cout.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const quarn::error& failure) {
    std::cerr << failure.what() << '\n';
    return EXIT_FAILURE;
}
