#include <cmath>
#include <iostream>
#include <string>

#include <quarn.hpp>

// usage: consumer_cpp FOLDER_OF_EXAMPLES
// Asks for the chance of tuberculosis after a visit to Asia, with a positive X-ray, which is known from the literature.
int main(int, char** arguments) try {
    quarn::domain clinic = quarn::domain::load(std::string(arguments[1]) + "/chest_clinic.net");
    clinic.compile();
    for (const char* name : {"asia", "xray"}) clinic.node(name).select("yes");
    clinic.propagate();
    const double belief = clinic.node("tuberculosis").belief("yes");
    std::cout << belief << '\n';
    return std::abs(belief - 0.3377) < 5e-5 ? 0 : 1;
} catch (const quarn::error& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
