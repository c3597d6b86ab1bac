// Files that mean harm, and hosts with another locale.
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <pthread.h>

#include "texts.h"

namespace {

#ifdef QUARN_INSTRUMENTED
constexpr std::size_t small_stack = std::size_t{8} << 20;
#else
constexpr std::size_t small_stack = std::size_t{256} << 10;
#endif

void run_on_small_stack(std::function<void()> body) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, small_stack), 0);
    pthread_t thread;
    const auto call = [](void* given) -> void* {
        (*static_cast<std::function<void()>*>(given))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, call, &body), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

std::string numbered(std::size_t count, const char* format) {
    std::string all;
    char text[100];
    for (std::size_t i = 1; i <= count; ++i)
        all.append(text, std::size_t(std::snprintf(text, sizeof text, format, i, i - 1)));
    return all;
}

// What comes of a text; what was read is compiled as far as that goes, and written.
q_error_t result_of(const std::string& text) {
    const owned_domain domain(q_net_parse_domain(text.c_str(), nullptr, nullptr));
    const q_error_t code = q_error_code();
    if (domain) q_string_delete(q_domain_to_net(domain.get()));
    return code;
}

TEST(hostile_files, end_in_a_network_or_an_error) {
    constexpr std::size_t million = 1'000'000, many = 100'000;
    const std::string function = "net {} function f {} potential (f) { model_nodes = (); model_data = (";
    const std::string node = R"(net {} node n { states = ("a" "b"); } potential (n) { data = ()";
    const std::string nodes = "net {} node n0 {} " + numbered(many, "node n%zu {} ");
    const struct {
        std::string text;
        q_error_t code;
    } rows[] = {
        {node + repeated(million, "(") + "1 2" + repeated(million, ")") + "); }", q_error_none},
        {node + "1 2" + repeated(million, " 3") + "); }", q_error_parse},
        {node + repeated(million, "9") + " 1e" + repeated(million, "9") + "); }", q_error_none},
        {function + repeated(million, "(") + "1", q_error_parse},
        {function + repeated(million, "min(") + "1", q_error_parse},
        {function + repeated(million, "2^") + "1", q_error_parse},
        {function + "1" + repeated(million, "+1") + "); }", q_error_none},
        {"net {} node " + repeated(million, "n") + " { label = \"" + repeated(million, "\\377") + "\"; }",
         q_error_none},
        {"net {} node n { " + repeated(many, "label = \"a\"; k = \"v\"; ") + "}", q_error_none},
        {"net {} %" + repeated(million, "x"), q_error_none},
        {"net {} \"" + repeated(million, "\\\n"), q_error_parse},
        {nodes + numbered(many, "potential (n%zu | n%zu) {} "), q_error_none},
        {nodes + numbered(many, "potential (n%zu | n0) {} "), q_error_none},
        {nodes + numbered(many, "potential (n%zu n%zu) {} "), q_error_none},
        {nodes + "potential (n0 |" + numbered(many, " n%zu"), q_error_parse},
    };
    run_on_small_stack([&] {
        for (const auto& row : rows) EXPECT_EQ(result_of(row.text), row.code) << &row - rows;
    });
}

// A locale with a decimal comma, made for the time of the test.
class decimal_comma {
public:
    decimal_comma() {
        const std::string made = folder_ + "/comma.UTF-8", make = "localedef -i de_DE -f UTF-8 " + made;
        std::filesystem::create_directories(folder_);
        if (std::system((make + " >/dev/null 2>&1").c_str()) != 0) return;
        setenv("LOCPATH", folder_.c_str(), 1);
        is_set = std::setlocale(LC_ALL, "comma.UTF-8") != nullptr && *std::localeconv()->decimal_point == ',';
    }
    ~decimal_comma() {
        std::setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
        std::filesystem::remove_all(folder_);
    }
    bool is_set = false;

private:
    std::string folder_ = testing::TempDir() + "quarn_locale";
};

TEST(locale, of_the_host_changes_no_number_and_stays) {
    const std::string network =
        "net {} node n { subtype = number; states = (\"a\" \"b\"); state_values = (0.5 1.5); } "
        "potential (n) { data = (0.25 0.75); } function f {} "
        "potential (f | n) { model_nodes = (); model_data = (n * 1.25); }";
    const std::string expected = written(read(network).get());
    const decimal_comma set;
    if (!set.is_set) GTEST_SKIP() << "localedef cannot make a locale with a decimal comma here";
    const std::string present = std::setlocale(LC_ALL, nullptr);
    const owned_domain domain = read(network);
    EXPECT_EQ(written(domain.get()), expected);
    EXPECT_NE(expected.find("0.25 0.75"), std::string::npos);
    EXPECT_EQ(q_net_parse_domain("net { broken", nullptr, nullptr), nullptr);
    const temporary_file file;
    const q_node_t node = q_domain_get_node_by_name(domain.get(), "n");
    q_node_enter_finding(node, 0, 0.125);
    EXPECT_EQ(q_domain_save_case(domain.get(), file.path.c_str()), q_error_none);
    EXPECT_EQ(q_domain_parse_case(domain.get(), file.path.c_str(), nullptr, nullptr), q_error_none);
    EXPECT_EQ(q_node_get_entered_finding(node, 0), 0.125);
    EXPECT_EQ(q_domain_parse_case(domain.get(), "/none", nullptr, nullptr), q_error_io);
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), present);
}

}  // namespace
