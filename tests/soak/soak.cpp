// Random networks of every kind, with ever new seeds, through random changes against enumeration. Stops at the first
// difference, with the command that repeats it; memory that stays behind is a failure too.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <malloc.h>
#include <mutex>
#include <optional>
#include <thread>
#include <unistd.h>

#include "function_networks.h"

namespace {

using std::chrono::steady_clock;

constexpr const char* usage =
    "usage: soak [--seconds N] [--models N] [--threads N] [--seed N] [--kind NAME]\n"
    "Until the seconds or the models are over; from that seed on; of that kind only.\n";

struct settings {
    double seconds = 1e9;
    unsigned models = ~0u, threads = 1, seed = 1;
    const char* kind = nullptr;
};

bool read(settings& into, int argc, char** argv) {
    for (int i = 1; i < argc; i += 2) {
        const std::string option = argv[i];
        if (i + 1 == argc) return false;
        const auto number = unsigned(std::strtoul(argv[i + 1], nullptr, 10));
        if (option == "--seconds")
            into.seconds = number;
        else if (option == "--models")
            into.models = number;
        else if (option == "--threads")
            into.threads = number;
        else if (option == "--seed")
            into.seed = number;
        else if (option == "--kind")
            into.kind = argv[i + 1];
        else
            return false;
    }
    return into.threads > 0 && (into.seconds < 1e9 || into.models < ~0u);
}

// A kind, and whether it has functions.
struct sort_of_model {
    const kind* of;
    bool has_functions;
};
std::vector<sort_of_model> chosen(const char* name) {
    std::vector<sort_of_model> found;
    for (const kind& of : kinds) found.push_back({&of, false});
    for (const kind& of : function_kinds) found.push_back({&of, true});
    if (name != nullptr)
        std::erase_if(found, [&](const auto& sort) { return std::strcmp(sort.of->name, name) != 0; });
    return found;
}

// A configuration drawn from the posterior distribution is as probable as enumeration says.
void draw(model& tested) {
    const answers expected = oracle::enumerate(tested.reference);
    if (!std::isfinite(expected.log_probability) || expected.noiseless) return;
    if (q_domain_propagate(tested.domain, q_equilibrium_sum, q_mode_normal) != q_error_none) return;
    ASSERT_EQ(q_domain_simulate(tested.domain), q_error_none);
    std::size_t drawn = 0;
    for (std::size_t node = 0; node < tested.nodes.size(); ++node)
        if (tested.is_discrete(node))
            drawn = drawn * tested.reference[node].states +
                    std::size_t(q_node_get_sampled_state(tested.nodes[node]));
    tested.expect_near(q_domain_get_sampled_log_probability(tested.domain),
                       oracle::posterior(tested.reference).at(drawn).log_weight, 1e-9, 0);
}

struct soak {
    explicit soak(const settings& asked) : set(asked), sorts(chosen(asked.kind)) {}

    const settings set;
    const std::vector<sort_of_model> sorts;
    const steady_clock::time_point start = steady_clock::now();
    std::atomic<unsigned> begun = 0;
    std::mutex sums;  // guards what follows
    std::size_t models = 0, propagations = 0, numbers = 0;
    double largest_difference = 0;

    double elapsed() const { return std::chrono::duration<double>(steady_clock::now() - start).count(); }

    // With a number of threads in the library, and work for them, that differs from network to network.
    template <class Model>
    void compare(unsigned seed, const kind& of) {
        Model tested(seed, of);
        q_domain_set_concurrency_level(tested.domain, 1 + seed % 3);
        q_domain_set_grain_size(tested.domain, 1 + seed % 50);
        tested.run(10);
        if constexpr (std::is_same_v<Model, model>) draw(tested);
        const std::lock_guard lock(sums);
        ++models;
        propagations += tested.successes;
        numbers += tested.record.size();
        largest_difference = std::max(largest_difference, tested.largest_difference);
    }

    void work(unsigned limit) {
        while (!testing::Test::HasFailure() && elapsed() < set.seconds) {
            const unsigned number = begun++;
            if (number >= limit) break;
            const unsigned seed = set.seed + number / unsigned(sorts.size());
            const auto& [of, has_functions] = sorts[number % sorts.size()];
            SCOPED_TRACE("to repeat it: scripts/soak --models 1 --seed " + std::to_string(seed) + " --kind " +
                         of->name);
            has_functions ? compare<function_network>(seed, *of) : compare<model>(seed, *of);
        }
    }
    // The networks of these numbers, shared out among the threads.
    void run(unsigned first, unsigned limit) {
        begun = first;
        std::vector<std::thread> others;
        for (unsigned i = 1; i < set.threads; ++i) others.emplace_back([&] { work(limit); });
        work(limit);
        for (std::thread& other : others) other.join();
    }
};

// What is allocated and not freed, and what the process occupies for it.
struct memory {
    static constexpr const char* names[] = {"allocated", "resident"};
    // Without a leak both vary by less than a hundred kilobytes. A hundred bytes a network are more than what is allowed after
    // 2,600 networks, a few seconds, and after 10,000.
    static constexpr std::size_t allowed_growth[] = {256 << 10, 1 << 20};
    std::size_t bytes[2];

    static memory now() {
        malloc_trim(0);
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages >> pages;
        const auto heap = mallinfo2();
        return {{heap.uordblks + heap.hblkhd, pages * std::size_t(sysconf(_SC_PAGESIZE))}};
    }
};

// Sanitizers keep memory back, and find leaks themselves.
#ifdef QUARN_INSTRUMENTED
constexpr bool measures_memory = false;
#else
constexpr bool measures_memory = true;
#endif

}  // namespace

int main(int argc, char** argv) {
    settings set;
    const bool understood = read(set, argc, argv);
    soak soaked(set);
    if (!understood || soaked.sorts.empty()) return std::fputs(usage, stderr), 2;

    mallopt(M_ARENA_MAX, 1);  // others come and go with the threads, so that what is resident says little
    const unsigned warm_up = std::min(set.models, 900u);
    soaked.run(0, warm_up);
    const memory before = memory::now();
    soaked.run(warm_up, set.models);
    const memory after = memory::now();

    std::printf("%zu networks in %.0f s: %zu propagations, %zu numbers compared; largest difference %.3g of "
                "what is allowed\n",
                soaked.models, soaked.elapsed(), soaked.propagations, soaked.numbers,
                soaked.largest_difference);
    bool good = !testing::Test::HasFailure();
    for (std::size_t i = 0; measures_memory && i < 2; ++i) {
        const auto growth = std::ptrdiff_t(after.bytes[i] - before.bytes[i]);
        const bool grew = growth > std::ptrdiff_t(memory::allowed_growth[i]);
        good = good && !grew;
        std::printf("%s memory: %zu kB, %td kB more than after %u networks%s\n", memory::names[i],
                    after.bytes[i] >> 10, growth / 1024, warm_up, grew ? ": FAILED" : "");
    }
    return good ? 0 : 1;
}
