// Evidence read from case files and written to them.
#include <random>

#include "fault_plan.h"
#include "scenarios.h"
#include "texts.h"

namespace {

using namespace std::string_literals;

struct case_file : temporary_file {
    using temporary_file::temporary_file;
    q_status_t save(const owned_domain& domain) const {
        return q_domain_save_case(domain.get(), path.c_str());
    }
    q_status_t parse(const owned_domain& domain) {
        messages.clear();
        return q_domain_parse_case(domain.get(), path.c_str(), hear, this);
    }
    static void hear(size_t line, const char* message, void* data) {
        static_cast<case_file*>(data)->messages += std::to_string(line) + ": " + message + "\n";
    }

    std::string messages;
};

// The weights of all states and the values, nothing for continuous nodes without.
std::vector<double> entered(const owned_domain& domain) {
    std::vector<double> found;
    for (q_node_t node : nodes_of(domain.get())) {
        const size_t states =
            q_node_get_kind(node) == q_kind_discrete ? q_node_get_number_of_states(node) : 0;
        for (size_t state = 0; state < states; ++state)
            found.push_back(q_node_get_entered_finding(node, state));
        if (states == 0 && q_node_evidence_is_entered(node) == 1)
            found.push_back(q_node_get_entered_value(node));
    }
    return found;
}

owned_domain every_sort() {
    return read(
        "net {} node first { states = (\"u\" \"v\"); } function f {} continuous node x { label = \"Age\"; }"
        "node unset { subtype = number; states = (\"\" \"\"); }"
        "node i { subtype = interval; states = (\"\" \"\" \"\" \"\");"
        "  state_values = (-infinity 0 1 1 3); }"
        "node n { subtype = number; states = (\"\" \"\" \"\");"
        "  state_values = (0 1 2); }"
        "node same { states = (\"true\" \"x\" \"x\" \"\"); }"
        "node b { subtype = boolean; }"
        "node l { states = (\"s1\" \"s2\" \"s\\\"3%\\n\"); }");
}

TEST(CaseFile, TellsWhatIsWrongAndWhere) {
    const std::string no_label = "state labels are only allowed for labeled nodes\n",
                      numeric = "numeric findings are only allowed for CG, numbered, and interval nodes\n",
                      index = "1: `#' must be followed by a valid state index\n";
    const struct {
        std::string text, messages;
        q_status_t code = q_error_parse;
    } cases[] = {
        {"1", "1: node name expected\n"},
        {"l: s1\n\"b\"", "2: node name expected\n"},
        {"% l: x\n z.y: 1", "2: the domain has no node named `z.y'\n"},
        {"f: 1", "1: only chance, decision, and discrete function nodes can have findings\n"},
        {"l: s1 x: 1\nl: #1 x:\n2",
         "2: findings specified twice for `l'\n2: findings specified twice for `x'\n"},
        {"l\n;", "2: `:' expected\n"},
        {"l:\n", "2: unexpected end-of-file\n"},
        {"x: \"s1\" b: \"true\" n: s1\ni: true l: s2",
         "1: " + no_label + "1: " + no_label + "1: " + no_label + "2: " + no_label},
        {"l: s9 l: \"s\\\"3\" same: x same: \"\"",
         "1: \"s9\" is not a (unique) state label of `l'\n1: \"s\"3\" is not a (unique) state label of `l'\n"
         "1: \"x\" is not a (unique) state label of `same'\n"
         "1: \"\" is not a (unique) state label of `same'\n"},
        {"b: s1", "1: state of boolean node should be `false' or `true'\n"},
        {"l: 1\nb: 1", "1: node l: " + numeric + "2: node b: " + numeric},
        {"unset: 1", "1: the state values of `unset' do not form an increasing sequence\n"},
        {"n: 1.01 i: 3.5", "1: no state of `n' corresponds to the value 1.01\n"
                           "1: no state of `i' corresponds to the value 3.5\n"},
        {"x: #1", "1: state index can only be specified for discrete nodes\n"},
        {"b: #2", index},
        {"b: #0.5", index},
        {"b: #-1", index},
        {"b: #true", index},
        {"x: (1)", "1: likelihood can only be specified for discrete nodes\n"},
        {"l: (1 0.5)", "1: likelihood vector too short\n"},
        {"l: (1 0.5 0 2)", "1: likelihood vector too long\n"},
        {"l: (1 0.5 0 ;", "1: ')' expected\n"},
        {"l: (1 0.5 s3)", "1: number expected\n"},
        {"l: (1 -0.5 0)", "1: likelihood values must be nonnegative\n"},
        {"l: (1 0.5 1e400)", "1: API error: usage\n", q_error_usage},
        {"l: a.b", "1: illegal token\n"},
        {"x: + 1", "1: illegal token\n"},
        {"x: 1 @", "1: unexpected character: `@'\n"},
        {"l: \"s1", "1: string did not end\n"},
        {"l: s1\n\0b: true"s, "2: warning: null character ignored\n"},
    };
    const owned_domain domain = every_sort();
    const std::vector<double> nothing = entered(domain);
    for (const auto& [text, messages, code] : cases) {
        q_node_enter_value(q_domain_get_node_by_name(domain.get(), "x"), 1);
        q_node_select_state(q_domain_get_node_by_name(domain.get(), "same"), 1);
        case_file file("first: v " + text);
        EXPECT_EQ(file.parse(domain), code) << text;
        EXPECT_EQ(file.messages, messages);
        EXPECT_EQ(entered(domain), nothing) << text;
        EXPECT_EQ(q_domain_parse_case(domain.get(), file.path.c_str(), nullptr, nullptr), code);
    }
}

TEST(CaseFile, SaysTheSameWhenWrittenAgain) {
    const char* const cases[][2] = {
        {"%", ""},
        {"l: (1 1 1) b: (1 1)", ""},
        {"l: s1", "l: \"s1\"\n"},
        {"l: \"s1\"", "l: \"s1\"\n"},
        {"l: (0 1 0)", "l: \"s2\"\n"},
        {"l: #2.0", "l: \"s\\\"3%\\n\"\n"},
        {"l:(1\n.25 0)", "l: (1 0.25 0)\n"},
        {"l: (0.123456789 0 1e-300)", "l: (0.123457 0 1E-300)\n"},
        {"b: (0 0)", "b: (0 0)\n"},
        {"l: (1 1 1) l: s2", "l: \"s2\"\n"},
        {"b: true", "b: true\n"},
        {"b: #0", "b: false\n"},
        {"same: true", "same: \"true\"\n"},
        {"same: #1", "same: #1\n"},
        {"same: #3", "same: #3\n"},
        {"unset: #1", "unset: #1\n"},
        {"n: 1.0000005", "n: 1\n"},
        {"i: -1E+400", "i: #0\n"},
        {"i: 1", "i: #3\n"},
        {"i: 3", "i: #3\n"},
        {"x: 0.1", "x: 0.1\t% \"Age\"\n"},
        {"x: 1e400", "x: INF\t% \"Age\"\n"},
        {"x: -1234567890 l: s1 b: false", "l: \"s1\"\nb: false\nx: -1.2345679E+09\t% \"Age\"\n"},
    };
    const owned_domain domain = every_sort();
    for (const auto& [text, written] : cases) {
        case_file file(text);
        EXPECT_EQ(file.parse(domain), q_error_none) << text << "\n" << file.messages;
        EXPECT_EQ(file.save(domain), q_error_none);
        EXPECT_EQ(file.contents(), written);
    }
}

TEST(CaseFile, KeepsRandomEvidence) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&](unsigned end) { return unsigned(random() % end); };
        const owned_domain domain = network("cd cc cd cd fd cd");
        for (q_node_t node : nodes_of(domain.get())) {
            const size_t states = below(4) == 0 ? 2 : 1 + below(5);
            q_node_set_number_of_states(node, states);
            q_node_set_subtype(node, q_subtype_label + int(below(4)));
            for (size_t state = 0; state <= states; ++state) {
                std::string label(below(4), ' ');
                for (char& c : label)
                    c = "\"\\%\n\t\x80\1"
                        "0x#"[below(10)];
                q_node_set_state_label(node, state, label.c_str());
                if (below(8) > 0) q_node_set_state_value(node, state, double(state) * 1.5 - 2);
            }
            q_node_set_label(node, below(2) == 0 ? "" : "%\"\n");
            for (size_t state = 0; state < states && below(2) == 0; ++state)
                q_node_enter_finding(node, state, below(5) / 4.0);
            if (below(3) == 0) q_node_select_state(node, below(unsigned(states)));
            if (below(3) > 0) q_node_enter_value(node, below(1 << 16) / 8.0 - 100);
        }
        const std::vector<double> before = entered(domain);
        case_file file("");
        EXPECT_EQ(file.save(domain), q_error_none);
        EXPECT_EQ(file.parse(domain), q_error_none) << file.contents() << file.messages;
        EXPECT_EQ(entered(domain), before) << seed << "\n" << file.contents();
    }
}

TEST(CaseFile, MayNotBeAccessible) {
    const owned_domain domain = every_sort();
    const q_node_t node = nodes_of(domain.get()).back();
    EXPECT_EQ(q_domain_save_case(domain.get(), "/dev/full"), q_error_none) << "nothing to write";
    q_node_select_state(node, 1);
    EXPECT_EQ(q_domain_save_case(domain.get(), "/"), q_error_io);
    EXPECT_EQ(q_domain_save_case(domain.get(), "/dev/full"), q_error_io);
    EXPECT_EQ(q_domain_parse_case(domain.get(), "no such file", nullptr, nullptr), q_error_io);
    EXPECT_EQ(q_node_get_selected_state(node), 1);
    EXPECT_EQ(q_domain_parse_case(domain.get(), "/", nullptr, nullptr), q_error_io);
    EXPECT_EQ(q_node_get_selected_state(node), -1);
}

TEST(CaseFile, SurvivesLackOfMemory) {
    const std::string label(100, 'y');
    const case_file file("l: (1 0.25 0) b: \"" + label + "\" x: 1 % c\n");
    const network_builder build = [&] {
        owned_domain domain = every_sort();
        q_node_set_subtype(q_domain_get_node_by_name(domain.get(), "b"), q_subtype_label);
        q_node_set_state_label(q_domain_get_node_by_name(domain.get(), "b"), 1, label.c_str());
        return domain;
    };
    const auto parse = [&](q_domain_t domain) {
        return q_domain_parse_case(domain, file.path.c_str(), nullptr, nullptr);
    };
    expect_survives_lack_of_memory({"parse", build, parse});
    const auto build_read = [&] {
        owned_domain domain = build();
        EXPECT_EQ(parse(domain.get()), q_error_none);
        return domain;
    };
    const auto save = [](q_domain_t domain) { return q_domain_save_case(domain, "/dev/null"); };
    expect_survives_lack_of_memory({"save", build_read, save});
}

}  // namespace
