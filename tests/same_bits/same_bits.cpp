// Uses each network in the same way with one, two and four threads, prints a hash of all that the library said and writes
// it to FOLDER; fails when it depends on the number of threads. Equal lines mean equal bits in all results.
// usage: same_bits FOLDER FILE...
#include <cinttypes>
#include <filesystem>
#include <iostream>

#include "transcript.h"

namespace {

// The hash of Fowler, Noll and Vo.
std::uint64_t hash_of(const std::string& text) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    return hash;
}

}  // namespace

int main(int count, char** arguments) {
    bool depends_on_threads = false;
    for (int file = 2; file < count; ++file) {
        const std::filesystem::path network = arguments[file], folder = arguments[1];
        const std::string files = folder / (std::to_string(file - 1) + '_' + network.stem().string());
        const std::string said = transcript(network, {1, 1, files}).text();
        std::ofstream(files + ".txt") << said;
        for (const std::size_t threads : {2u, 4u}) {
            if (transcript(network, {1, threads, files}).text() == said) continue;
            std::cerr << network << ": not the same with " << threads << " threads\n";
            depends_on_threads = true;
        }
        std::printf("%016" PRIx64 " %s\n", hash_of(said), arguments[file]);
    }
    return depends_on_threads ? 1 : 0;
}
