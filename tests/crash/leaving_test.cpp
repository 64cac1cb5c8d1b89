// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Clients that end by themselves with calls under way.

#include <iostream>
#include <string>

#include "crash_test.h"

namespace Crash {
namespace {
class LeavingTest : public CrashTest {};

TEST_F(LeavingTest, Client)
{
    const pid_t service = RunningService();
    const Holdings before = HoldingsOf(service);
    for (int round = 1; round <= g_options.rounds && !HasFailure(); ++round) {
        for (const char *way : {"return", "exit", "signal"}) {
            const std::string seed = std::to_string(Random(1U << 30U));
            ClientProcess client({NUBIS_TEST_LEAVING_CLIENT, way, seed});
            EXPECT_EQ(client.AwaitEnd(), 0) << NUBIS_TEST_LEAVING_CLIENT << " " << way << " " << seed;
        }
    }
    EXPECT_EQ(Service().Pid(), service);
    ExpectHoldings(service, before);
    std::cout << "figures: " << g_options.rounds << " clients left by each way\n";
}
} // namespace
} // namespace Crash
