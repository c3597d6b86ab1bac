// Reading and writing NET text: bytes per second, for tables (mostly numbers) and for many small nodes (mostly words).
#include <cstring>
#include <string>

#include <benchmark/benchmark.h>
#include <quarn.h>

namespace {

std::string with_tables() {
    std::string text = "net {}\n";
    for (int i = 0; i < 40; ++i) {
        const std::string name = "n" + std::to_string(i);
        text += "node " + name + " { states = (\"a\" \"b\" \"c\" \"d\" \"e\" \"f\" \"g\" \"h\"); }\n";
        if (i < 4) continue;
        text += "potential (" + name + " |";
        for (int parent = i - 4; parent < i; ++parent) text += " n" + std::to_string(parent);
        text += ") { data = (";
        for (int entry = 0; entry < 8 * 4096; ++entry)
            text += "0." + std::to_string(1 + (entry * 7919) % 999983) + ' ';
        text += "); }\n";
    }
    return text;
}

std::string with_many_nodes() {
    std::string text = "net {}\n";
    for (int i = 0; i < 20'000; ++i) {
        const std::string name = "node_" + std::to_string(i);
        text += "node " + name + " { label = \"Node\"; position = (10 20); states = (\"no\" \"yes\"); }\n";
        text += "potential (" + name + (i > 0 ? " | node_" + std::to_string(i - 1) : "") + ") { data = (";
        text += i > 0 ? "0.1 0.9 0.8 0.2" : "0.5 0.5";
        text += "); }\n";
    }
    return text;
}

void read(benchmark::State& state, const std::string& text) {
    for (auto _ : state) {
        q_domain_t domain = q_net_parse_domain(text.c_str(), nullptr, nullptr);
        if (domain == nullptr) return state.SkipWithError("the network was not read");
        state.PauseTiming();
        q_domain_delete(domain);
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void write(benchmark::State& state, const std::string& text) {
    q_domain_t domain = q_net_parse_domain(text.c_str(), nullptr, nullptr);
    std::size_t written = 0;
    for (auto _ : state) {
        char* made = q_domain_to_net(domain);
        written = std::strlen(made);
        q_string_delete(made);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(written));
    q_domain_delete(domain);
}

BENCHMARK_CAPTURE(read, tables, with_tables())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(read, many_nodes, with_many_nodes())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(write, tables, with_tables())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(write, many_nodes, with_many_nodes())->Unit(benchmark::kMillisecond);

}  // namespace
