// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef CRASH_CRASH_TEST_H
#define CRASH_CRASH_TEST_H

#include <cstdint>
#include <random>
#include <set>
#include <string>

#include "client_process.h"
#include "journal.h"
#include "notes_test.h"

namespace Crash {
// From the command line.
struct Options {
    uint32_t seed = 0;
    int rounds = 10;
};
extern Options g_options;

// A real service, and what is asked of its data after each blow.
class CrashTest : public NubisTest::NotesTest {
protected:
    // Everything acknowledged is there and nothing is half there, the feed of changes leads to the contents, and the
    // database is in order. Starts the service if it does not run.
    void CheckData(const Journal &journal, int round);
    // The same with the feed and the contents from the beginning.
    void CheckAllData(const Journal &journal);

    uint32_t Random(uint32_t below)
    {
        return static_cast<uint32_t>(random_() % below);
    }
    std::string DatabaseFile();
    // Waits until the service holds no more than this.
    void ExpectHoldings(pid_t service, const Holdings &before);
    // The service, which runs.
    pid_t RunningService();

private:
    void FollowChanges();
    // The titles of what a query finds.
    Titles Find(const std::string &queryText);
    void CheckFile(const std::set<std::string> &subscriptions);

    std::mt19937 random_{g_options.seed};
    Titles followed_;
    std::string cursor_;
};

// Calls fail until the notice of the service's death has arrived; the next one connects anew.
template <typename Call>
auto OnceConnected(const Call &call)
{
    const auto end = std::chrono::steady_clock::now() + PATIENCE;
    auto outcome = call();
    while (outcome.error.IsLocalError() && std::chrono::steady_clock::now() < end) {
        outcome = call();
    }
    return outcome;
}
} // namespace Crash

#endif // CRASH_CRASH_TEST_H
