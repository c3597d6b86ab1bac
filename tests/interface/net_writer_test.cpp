// Networks written in the NET language, and read again.
#include <algorithm>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <sys/resource.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "expression_trees.h"
#include "node_models.h"
#include "scenarios.h"
#include "texts.h"

namespace {

namespace fs = std::filesystem;
constexpr double largest = std::numeric_limits<double>::max();

// The text of a net, a node or a potential: its head and the lines within its braces.
std::string item(const std::string& head, const std::vector<std::string>& lines = {}) {
    std::string text = (head == "net" ? "" : "\n") + head + "\n{\n";
    for (const std::string& line : lines)
        text += (head.starts_with("potential") ? "\t" : "    ") + line + '\n';
    return text + "}\n";
}

const std::string whole_network =
    item("net", {"node_size = (80 40);", R"(remark = "a \"b\"\\\t\1\0017\1778";)", "author = \"\";"}) +
    item("node A", {R"(label = "first\nsecond";)", "position = (0 -3);", R"(states = ("x%" "");)",
                    R"(owner = "me";)"}) +
    item("node B.c", {R"(states = ("false" "");)", "subtype = boolean;"}) +
    item("node I",
         {R"(states = ("" "");)", "subtype = interval;", "state_values = (-infinity 0.33333333 infinity);"}) +
    item("node N", {R"(states = ("" "" "three");)", "subtype = number;", "state_values = (-1 1E-05 2.5);"}) +
    item("continuous node X") + item("continuous node Y") + item("function f") +
    item("potential (f | B.c Y)", {"model_nodes = (B.c);", "samples_per_interval = 25;", "model_data = (",
                                   "    if(B.c, Y, 2),", "    );"}) +
    item("potential (A)", {"model_nodes = ();", "model_data = (", "    Distribution(1, 2));",
                           "data = (0.2 0.8);", "experience = (10);", "fading = (1);"}) +
    item("potential (B.c | A I)", {"data = (((1 -0)\t% A=x%  I=interval(-infinity,0.33333333)",
                                   "\t (0.5 0.5))\t% A=x%  I=interval(0.33333333,infinity)",
                                   "\t((0.25 0.75)\t% A=#1  I=interval(-infinity,0.33333333)",
                                   "\t (1E-10 0.12345679)));\t% A=#1  I=interval(0.33333333,infinity)"}) +
    "\npotential (N | B.c) {}\n" + item("potential (X)", {"data = (normal ( 0, 1 ));"}) +
    item("potential (Y | N B.c X)",
         {"data = ((normal ( 1.5 + 2 * X, 0.25 )\t% N=-1  B.c=false",
          "\t normal ( 1.5, 0 ))\t% N=-1  B.c=true", "\t(normal ( -2 * X, 3 )\t% N=1E-05  B.c=false",
          "\t normal ( -1 - 2 * X, 3 ))\t% N=1E-05  B.c=true", "\t(normal ( 0, 3 )\t% N=three  B.c=false",
          "\t normal ( 1E+20, 3 )));\t% N=three  B.c=true"});
const std::string two = R"(states = ("a" "b");)";
const std::string diagram = item("net", {"node_size = (0 0);"}) + item("decision D", {two}) +
                            item("utility U") + item("discrete function G", {two}) +
                            item("potential (D)", {"data = (0.5 0.5);"}) +
                            item("potential (U | D)", {"data = (-1\t% D=a", "\t2.5);\t% D=b"}) +
                            item("potential (G)", {"data = (0.25 0.75);"});
// The own potential of a member brings all of its links.
const std::string shared_potentials =
    item("net", {"node_size = (0 0);"}) + item("node p", {two}) + item("node a", {two}) +
    item("node b", {two}) + item("node c", {two}) +
    item("potential (a | p)", {"data = ((1 2)\t% p=a", "\t(3 4));\t% p=b"}) + "\npotential (b | p) {}\n" +
    item("potential (b a | p)", {"data = (((1 2)\t% p=a  b=a", "\t (3 4))\t% p=a  b=b",
                                 "\t((5 6)\t% p=b  b=a", "\t (7 8)));\t% p=b  b=b"}) +
    "\npotential (b c) {}\n";

TEST(NetWriter, WritesEverything) {
    for (const std::string& text : {whole_network, diagram, shared_potentials})
        EXPECT_EQ(written(read(text).get()), text);
    const owned_domain empty(q_domain_new());
    q_domain_set_node_size(empty.get(), -1, 5);
    EXPECT_EQ(written(empty.get()), "net\n{\n    node_size = (0 5);\n}\n") << "sizes are not negative";
}

// A network of random nodes with random texts, links, numbers and models, in which tables are made between the links.
struct random_network {
    explicit random_network(unsigned seed) : random(seed) {
        const std::vector<const char*> kinds = seed % 2 == 0
                                                   ? std::vector{"cd", "cd", "cd", "dd", "uo", "fo", "fd"}
                                                   : std::vector{"cd", "cd", "cd", "cc", "cc", "fo", "fd"};
        for (std::size_t count = 2 + below(8); count > 0; --count)
            set_up(new_node(domain.get(), kinds[below(kinds.size())]));
        q_domain_set_attribute(domain.get(), "text", texts.any_label().c_str());
        for (int i = 0; i < 40; ++i) {
            if (below(3) == 0) join();
            q_node_t child = any();
            q_node_add_parent(child, any());
            if (below(8) == 0) fill(q_node_get_table(child), child);
            if (below(8) == 0) q_node_new_experience_table(child);
            if (below(8) == 0) fill(q_node_get_experience_table(child), child);
            if (below(8) == 0) q_node_new_fading_table(child);
            if (below(8) == 0) fill(q_node_get_fading_table(child), child);
        }
        for (q_node_t node : nodes)
            if (below(3) == 0) add_model(node);
    }

    std::size_t below(std::size_t bound) { return random() % bound; }
    q_node_t any() { return nodes[below(nodes.size())]; }

    // By a shared potential, as only a file can.
    void join() {
        std::size_t size = 1;
        std::string potential = "potential (", data;
        for (const char* after : {" ", " | ", ") { data = ("}) {
            q_node_t node = any();
            potential += q_node_get_name(node) + std::string(after);
            size *= q_node_get_number_of_states(node);
        }
        for (; size > 0 && size < 100; --size) data += eight_digits(texts.any_number()) + ' ';
        const std::string text = written(domain.get()) + potential + data + "); }";
        if (q_domain_t joined = q_net_parse_domain(text.c_str(), nullptr, nullptr)) {
            domain.reset(joined);
            nodes = nodes_of(joined);
            ++joins;
        }
    }

    void set_up(q_node_t node) {
        if (below(3) > 0) q_node_set_name(node, ("k." + std::string(1, char('a' + nodes.size()))).c_str());
        if (below(2) == 0) q_node_set_label(node, texts.any_label().c_str());
        if (below(2) == 0) q_node_set_attribute(node, "remark", texts.any_label().c_str());
        if (below(2) == 0)
            q_node_set_position(node, int32_t(below(9)) - 4, std::numeric_limits<int32_t>::min());
        nodes.push_back(node);
        if (q_node_set_number_of_states(node, 1 + below(4)) != q_error_none) return;
        q_node_set_subtype(node, q_subtype_t(q_subtype_label + below(4)));
        const std::size_t states = q_node_get_number_of_states(node);
        for (std::size_t s = 0; s < states; ++s)
            if (below(2) == 0) q_node_set_state_label(node, s, texts.any_label().c_str());
        for (std::size_t i = 0; i <= states && below(5) > 0; ++i)
            q_node_set_state_value(node, i, below(4) == 0 ? HUGE_VAL : texts.any_number());
    }
    void fill(q_table_t table, q_node_t node) {
        if (table == nullptr) return;
        for (std::size_t c = 0; c < q_table_get_size(table); ++c) {
            q_table_get_data(table)[c] = texts.any_number();
            q_node_set_cg_intercept(node, c, texts.any_number());
            q_node_set_cg_variance(node, c, texts.any_number());
            for (q_node_t parent : listed(q_node_get_parents(node)))
                q_node_set_cg_coefficient(node, parent, c, texts.any_number());
        }
    }
    void add_model(q_node_t node) {
        std::vector<q_node_t> over = listed(q_node_get_parents(node));
        tree_generator trees(random, over);
        std::erase_if(over,
                      [&](q_node_t n) { return q_node_get_kind(n) != q_kind_discrete || below(2) == 0; });
        std::ranges::shuffle(over, random);
        over.push_back(nullptr);
        const q_model_t model = q_node_new_model(node, over.data());
        if (model == nullptr) return;
        for (std::size_t i = std::min<std::size_t>(q_model_get_size(model), 50); i-- > 0;)
            if (q_expression_t tree = trees.make(yields(below(4)), 3);
                q_model_set_expression(model, i, tree) != q_error_none)
                q_expression_delete(tree);
        if (below(2) == 0) q_model_set_samples_per_interval(model, 1 + below(99));
    }

    std::mt19937 random;
    owned_domain domain{q_domain_new()};
    std::vector<q_node_t> nodes;
    tree_generator texts{random, {}};
    std::size_t joins = 0;
};

// The numbers of a table by the names and states that they are for, to eight digits.
std::map<std::string, std::string> entries(q_table_t table, q_node_t of) {
    std::map<std::string, std::string> found;
    if (table == nullptr) return found;
    for (std::size_t c = 0; c < q_table_get_size(table); ++c) {
        std::map<std::string, std::size_t> states;
        std::size_t rest = c;
        std::vector<q_node_t> nodes = listed(q_table_get_nodes(table));
        for (; !nodes.empty(); nodes.pop_back()) {
            if (q_node_get_kind(nodes.back()) != q_kind_discrete) continue;
            const std::size_t count = q_node_get_number_of_states(nodes.back());
            states[q_node_get_name(nodes.back())] = rest % count, rest /= count;
        }
        std::string key, numbers;
        for (const auto& [name, state] : states) key += name + std::to_string(state) + ' ';
        const auto add = [&](double number) { numbers += eight_digits(number + 0.0) + ' '; };
        if (q_node_get_kind(of) == q_kind_continuous && table == q_node_get_table(of)) {
            add(q_node_get_cg_intercept(of, c)), add(q_node_get_cg_variance(of, c));
            for (q_node_t parent : listed(q_node_get_parents(of)))
                if (q_node_get_kind(parent) == q_kind_continuous)
                    add(q_node_get_cg_coefficient(of, parent, c));
        } else {
            add(q_table_get_data(table)[c]);
        }
        found[key] = numbers;
    }
    return found;
}

// All that a file says of a node.
std::string description(q_node_t node) {
    std::ostringstream text;
    int32_t x = 0, y = 0;
    q_node_get_position(node, &x, &y);
    text << q_node_get_name(node) << q_node_get_category(node) << q_node_get_kind(node)
         << q_node_get_subtype(node) << ' ' << x << ' ' << y << '[' << q_node_get_label(node) << ']';
    for (q_attribute_t at = q_node_get_first_attribute(node); at != nullptr; at = q_attribute_get_next(at))
        text << q_attribute_get_key(at) << '=' << q_attribute_get_value(at) << ';';
    std::vector<q_node_t> parents = listed(q_node_get_parents(node));
    std::ranges::stable_sort(parents, {}, [](q_node_t parent) {
        return q_node_get_kind(parent) == q_kind_discrete           ? 0
               : q_node_get_category(parent) == q_category_function ? 2
                                                                    : 1;
    });
    for (q_node_t parent : parents) text << ' ' << q_node_get_name(parent);
    if (q_node_get_kind(node) == q_kind_discrete) {
        for (std::size_t s = 0; s < q_node_get_number_of_states(node); ++s)
            text << '"' << q_node_get_state_label(node, s) << '"';
        for (std::size_t i = 0; i <= q_node_get_number_of_states(node); ++i)
            if (i < q_node_get_number_of_states(node) || q_node_get_subtype(node) == q_subtype_interval)
                text << ' ' << eight_digits(std::clamp(q_node_get_state_value(node, i), -largest, largest));
    }
    text << ' ' << model_of(node);
    if (const q_model_t model = q_node_get_model(node)) text << q_model_get_samples_per_interval(model);
    for (q_table_t table :
         {q_node_get_table(node), q_node_get_experience_table(node), q_node_get_fading_table(node)})
        for (const auto& [key, numbers] : entries(table, node)) text << '\n' << key << ": " << numbers;
    return text.str();
}

TEST(NetWriter, WhatIsReadAgainIsTheSame) {
    std::size_t joins = 0;
    for (unsigned seed = 0; seed < 200 && !HasFailure(); ++seed) {
        const random_network network(seed);
        const std::string text = written(network.domain.get());
        const owned_domain again = read(text);
        ASSERT_NE(again, nullptr) << seed;
        EXPECT_EQ(written(again.get()), text) << seed;
        EXPECT_STREQ(q_domain_get_attribute(again.get(), "text"),
                     q_domain_get_attribute(network.domain.get(), "text"));
        const std::vector<q_node_t> nodes = nodes_of(again.get());
        ASSERT_EQ(nodes.size(), network.nodes.size()) << seed;
        joins += network.joins;
        for (std::size_t i = 0; i < nodes.size(); ++i)
            EXPECT_EQ(description(nodes[i]), description(network.nodes[i])) << seed << '\n' << text;
    }
    EXPECT_GT(joins, 10u);
}

TEST(NetWriter, RefusesNumbersThatNoFileHolds) {
    const double none = std::nan("");
    for (double wrong : {none, HUGE_VAL, -HUGE_VAL})
        for (const char* kind : {"cd", "cc", "dd", "uo", "fd"}) {
            const owned_domain domain = network(kind);
            q_node_t node = node_at(domain.get(), 0);
            q_node_set_cg_intercept(node, 0, wrong);
            q_table_get_data(q_node_get_table(node))[0] = wrong;
            EXPECT_EQ(q_domain_to_net(domain.get()), nullptr) << kind;
            EXPECT_EQ(q_error_code(), q_error_invalid_probability_potential) << kind;
        }
    const owned_domain domain = network("cd");
    q_node_set_subtype(node_at(domain.get(), 0), q_subtype_number);
    q_node_set_state_value(node_at(domain.get(), 0), 0, none);
    EXPECT_EQ(q_domain_to_net(domain.get()), nullptr);
    EXPECT_EQ(q_error_code(), q_error_invalid_state_values);
}

// Whatever fails: the old file stays, and nothing comes to be beside it.
TEST(NetWriter, FilesAreCompleteOrAsTheyWere) {
    const fs::path folder = fs::path(testing::TempDir()) / "quarn_net_writer", file = folder / "a.net";
    fs::remove_all(folder);
    fs::create_directory(folder);
    const owned_domain domain = network("cd cd", "01");
    const std::string text = written(domain.get());
    const auto save = [&](const fs::path& path) { return q_domain_save_as_net(domain.get(), path.c_str()); };
    const auto contents = [](const fs::path& path) {
        return (std::stringstream() << std::ifstream(path).rdbuf()).str();
    };
    const auto names = [&] {
        return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
    };

    std::ofstream(file) << "old";
    std::ofstream(folder / ".quarn-0.tmp") << "not ours";
    const auto limited = [&](const fs::path& path) {
        rlimit before{};
        getrlimit(RLIMIT_FSIZE, &before);
        const auto handler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{10, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        const q_status_t status = save(path);
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
        return status;
    };
    for (const fs::path& path : {file, folder / "new.net"}) EXPECT_EQ(limited(path), q_error_io);
    for (const fs::path& path : {fs::path("/dev/full"), folder, folder / "none" / "a.net", fs::path("")})
        EXPECT_EQ(save(path), q_error_io) << path;
    if (geteuid() != 0) {
        fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
        EXPECT_EQ(save(file), q_error_io);
        fs::permissions(folder, fs::perms::owner_all);
        fs::permissions(file, fs::perms::owner_read);
        EXPECT_EQ(save(file), q_error_io);
    }
    EXPECT_EQ(contents(file), "old");
    EXPECT_EQ(names(), 2);

    const auto mode = fs::perms(0640);
    fs::permissions(file, mode);
    fs::create_symlink("a.net", folder / "link.net");
    fs::create_symlink("b.net", folder / "dangling.net");
    for (const char* name : {"link.net", "dangling.net", "new.net"})
        EXPECT_EQ(save(folder / name), q_error_none);
    for (const char* name : {"a.net", "b.net", "new.net"}) EXPECT_EQ(contents(folder / name), text) << name;
    EXPECT_TRUE(fs::is_symlink(folder / "link.net"));
    EXPECT_EQ(fs::status(file).permissions(), mode);
    EXPECT_EQ(save("/dev/null"), q_error_none);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_EQ(contents(folder / ".quarn-0.tmp"), "not ours");
    EXPECT_EQ(names(), 6);
    fs::remove_all(folder);
}

TEST(NetWriter, SurvivesLackOfMemory) {
    const auto build = [] { return read(whole_network); };
    const auto to_net = [](q_domain_t domain) {
        const std::unique_ptr<char, void (*)(char*)> text(q_domain_to_net(domain), q_string_delete);
        return outcome(text.get());
    };
    const temporary_file file;
    const auto save = [&](q_domain_t domain) { return q_domain_save_as_net(domain, file.path.c_str()); };
    expect_survives_lack_of_memory({"to_net", build, to_net});
    expect_survives_lack_of_memory({"save", build, save});
}

}  // namespace
