#include "scenarios.h"

#include <string>

#include "allocation_faults.h"
#include "domain_digest.h"

void expect_refusals(const network_builder& build, const std::vector<refusal>& calls) {
    const std::string before = digest(build().get());
    for (const refusal& refused : calls) {
        SCOPED_TRACE(refused.name);
        const owned_domain domain = build();
        EXPECT_STREQ(q_error_name(static_cast<uint32_t>(refused.call(domain.get()))),
                     q_error_name(static_cast<uint32_t>(refused.code)));
        EXPECT_EQ(q_error_code(), refused.code);
        EXPECT_EQ(digest(domain.get()), before);
    }
}

namespace {

struct outcomes {
    std::string before;
    std::string after;
};

// Whether some allocation failed, that is, whether there may be a later one.
bool expect_survives_fault(const allocating_call& tested, const outcomes& expected, std::size_t n,
                           bool lasting) {
    owned_domain domain = tested.build();
    allocation_faults plan(n, lasting);
    const q_status_t status = tested.call(domain.get());
    const bool fired = plan.stop();
    const bool succeeded = status == q_error_none;
    EXPECT_TRUE(succeeded || status == q_error_no_memory) << q_error_name(static_cast<uint32_t>(status));
    EXPECT_TRUE(fired ? !succeeded || tested.can_do_without : succeeded);
    EXPECT_EQ(digest(domain.get()), succeeded ? expected.after : expected.before);
    domain.reset();
    EXPECT_EQ(plan.leaked(), 0u);
    return fired;
}

void expect_recovers_from_fault(const allocating_call& tested, const outcomes& expected, std::size_t n,
                                bool lasting) {
    const owned_domain domain = tested.build();
    {
        const allocation_faults plan(n, lasting);
        if (tested.call(domain.get()) == q_error_none) return;
    }
    EXPECT_EQ(tested.call(domain.get()), q_error_none);
    EXPECT_EQ(digest(domain.get()), expected.after);
}

}  // namespace

void expect_survives_lack_of_memory(const allocating_call& tested) {
    SCOPED_TRACE(tested.name);
    const owned_domain undisturbed = tested.build();
    ASSERT_EQ(tested.call(undisturbed.get()), q_error_none);
    const outcomes expected{digest(tested.build().get()), digest(undisturbed.get())};
    for (bool lasting : {false, true})
        for (std::size_t n = 0;; ++n) {
            SCOPED_TRACE("allocation " + std::to_string(n) + (lasting ? " and later" : ""));
            if (!expect_survives_fault(tested, expected, n, lasting)) break;
            expect_recovers_from_fault(tested, expected, n, lasting);
            if (testing::Test::HasFailure()) return;
        }
}
