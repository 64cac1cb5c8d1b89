// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "lock_keeper.h"

#include <future>
#include <vector>

#include <gtest/gtest.h>

namespace NubisTool {
namespace {
constexpr std::chrono::milliseconds BRIEF(1);

TEST(LockKeeper, RenewsOverFailuresUntilTheLockIsLost)
{
    const std::vector<Renewal> outcomes = {Renewal::HELD, Renewal::UNKNOWN, Renewal::HELD, Renewal::LOST};
    size_t renewals = 0;
    std::promise<void> lost;
    LockKeeper keeper(
        BRIEF, [&] { return outcomes.at(renewals++); }, [&] { lost.set_value(); });
    ASSERT_EQ(lost.get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready);
    EXPECT_EQ(keeper.End(), Renewal::LOST);
    EXPECT_EQ(renewals, outcomes.size()) << "what is lost must not be taken anew";
}

TEST(LockKeeper, TheEndIsWhatItsOwnRenewalSays)
{
    for (Renewal last : {Renewal::HELD, Renewal::UNKNOWN, Renewal::LOST}) {
        LockKeeper keeper(
            std::chrono::hours(1), [last] { return last; }, [] {});
        EXPECT_EQ(keeper.End(), last);
    }
}
} // namespace
} // namespace NubisTool
