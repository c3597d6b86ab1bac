// The error codes: their texts, and whose they are.
#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <quarn.h>

namespace {

TEST(errors, every_code_has_a_name_and_a_description) {
    const struct {
        uint32_t code;
        const char* name;
        const char* description;
    } cases[] = {
        {q_error_none, "none",
         "The most recent call to a Quarn API function was successful (or no function has been called)."},
        {q_error_twice, "twice",
         "An attempt has been made to assign a name that is already in use to a node or a class."},
        {q_error_size_too_large, "size_too_large",
         "The true size is too large to represent within the `size_t' type."},
        {q_error_enumeration, "enumeration",
         "The specified elimination sequence is invalid.  Possible causes: It contains a utility or a "
         "real-valued "
         "function node, a node appears twice, the nodes are `out-of-order', or the sequence is incomplete."},
        {q_error_compressed, "compressed", "The operation is not supported on compressed domains."},
        {q_error_invalid_evidence, "invalid_evidence",
         "The specified evidence violates the \"free will\" condition, or evidence on a decision node is not "
         "an "
         "instantiation."},
        {q_error_syntax, "syntax", "A syntax error has been detected while parsing an expression."},
        {q_error_locale, "locale", "The Quarn API could not establish the C locale!"},
        {q_error_error, "error",
         "This is an \"impossible\" error.  It should never occur.  It might be caused by an error in the "
         "Quarn "
         "API."},
        {48, "no_such_error", "No such error."},
        {static_cast<uint32_t>(-1), "no_such_error", "No such error."},
        {std::numeric_limits<int32_t>::max(), "no_such_error", "No such error."},
    };
    for (const auto& [code, name, description] : cases) {
        EXPECT_STREQ(q_error_name(code), name) << code;
        EXPECT_STREQ(q_error_description(code), description) << code;
    }
    std::set<std::string> names;
    std::set<std::string> descriptions;
    for (uint32_t code = 0; code <= 47; ++code) {
        if (code >= 44 && code <= 46) {
            EXPECT_STRNE(q_error_name(code), "no_such_error");
            continue;
        }
        EXPECT_TRUE(names.insert(q_error_name(code)).second) << code;
        EXPECT_TRUE(descriptions.insert(q_error_description(code)).second) << code;
    }
}

TEST(errors, looking_texts_up_leaves_the_code_alone_and_success_resets_it) {
    EXPECT_EQ(q_domain_delete(nullptr), q_error_usage);
    q_error_name(5);
    q_error_description(500);
    EXPECT_EQ(q_error_code(), q_error_usage);
    EXPECT_EQ(q_error_code(), q_error_usage);
    q_domain_t domain = q_domain_new();
    EXPECT_EQ(q_error_code(), q_error_none);
    EXPECT_EQ(q_domain_delete(domain), q_error_none);
}

TEST(errors, each_thread_has_its_own_code) {
    EXPECT_EQ(q_domain_delete(nullptr), q_error_usage);
    std::thread other([] {
        EXPECT_EQ(q_error_code(), q_error_none);
        q_domain_t domain = q_domain_new();
        EXPECT_EQ(q_domain_set_attribute(domain, "no key", "value"), q_error_invalid_name);
        EXPECT_EQ(q_error_code(), q_error_invalid_name);
        q_domain_delete(domain);
    });
    other.join();
    EXPECT_EQ(q_error_code(), q_error_usage);
}

}  // namespace
