// Texts in tests: what parsers say, files that go with the test, networks as text.
#pragma once
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

#include "owned_domain.h"

// All messages of a parser, each after its position.
struct heard {
    static void hear(size_t position, const char* message, void* data) {
        static_cast<heard*>(data)->messages.push_back(std::to_string(position) + ": " + message);
    }
    std::vector<std::string> messages;
};

// Named after the test; there may be one at a time.
struct temporary_file {
    explicit temporary_file(const std::string& text = "") { std::ofstream(path, std::ios::binary) << text; }
    ~temporary_file() { std::filesystem::remove(path); }
    temporary_file(const temporary_file&) = delete;
    temporary_file& operator=(const temporary_file&) = delete;
    std::string contents() const { return (std::stringstream() << std::ifstream(path).rdbuf()).str(); }

    static std::string name() {
        const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
        return std::string(test->test_suite_name()) + '.' + test->name();
    }
    const std::string path = testing::TempDir() + name();
};

// What is logged meanwhile.
template <class Action>
std::string logged(q_domain_t domain, const Action& action) {
    const temporary_file file;
    EXPECT_EQ(q_domain_set_log_file(domain, file.path.c_str(), 0), q_error_none);
    action();
    EXPECT_EQ(q_domain_set_log_file(domain, "/dev/null", 0), q_error_none);
    return file.contents();
}

// A network in the NET language, and one of a text without errors.
inline std::string written(q_domain_t domain) {
    const std::unique_ptr<char, void (*)(char*)> text(q_domain_to_net(domain), q_string_delete);
    EXPECT_NE(text, nullptr) << q_error_description(uint32_t(q_error_code()));
    return text == nullptr ? "" : text.get();
}
inline owned_domain read(const std::string& text) {
    const auto hear = [](size_t position, const char* message, void*) {
        EXPECT_TRUE(std::string_view(message).starts_with("warning")) << position << ": " << message;
    };
    owned_domain domain(q_net_parse_domain(text.c_str(), hear, nullptr));
    EXPECT_NE(domain, nullptr) << text;
    return domain;
}

inline std::string repeated(std::size_t times, const std::string& text) {
    std::string all;
    while (times-- > 0) all += text;
    return all;
}
