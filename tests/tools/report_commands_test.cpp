// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <string>

#include "end_to_end_fixture.h"

namespace NubisTool {
namespace {
using testing::HasSubstr;

TEST_F(EndToEndTest, MilestonesAreKeptAndListedNewestLast)
{
    const std::string send = "nubis report send --bundle com.example.notes ";
    ASSERT_EQ(RunLines(send + "prepare >/dev/null && " + send +
                       "end --trace run_1 --error-code 7 --error-message full records=12 pn=mine &&"
                       "echo broken >>$NUBIS_STATE_DIR/events/NubisSDK_100.jsonl && nubis report list &&"
                       "nubis report list --limit 1 --json >last && nubis report list --json --trace run_1 >run_1 &&"
                       "grep -c traceID last run_1"),
        0)
        << Errors();
    EXPECT_THAT(out_, testing::StartsWith("reported cloudsync_sync_end, trace run_1\n"));
    EXPECT_THAT(out_, testing::ContainsRegex("sync_prepare(.|\n)*O&M .*sync_end .* run_1 +7 +full +records=12\n"
                                             ".* operation .*sync_end .*\nlast:1\nrun_1:2\n$"));
    EXPECT_THAT(Errors(), HasSubstr("a field \"pn\" of its own; yours was left out"));
    EXPECT_THAT(Errors(), HasSubstr("left out what is no event: 1 line"));
    EXPECT_THAT(Errors(), HasSubstr("there are 3 older ones"));

    // The library says nothing of events that cannot be kept.
    EXPECT_EQ(RunLines("mkdir $NUBIS_STATE_DIR/events; ln -s nowhere $NUBIS_STATE_DIR/events/NubisSDK_100.jsonl; " +
                       send + "start"),
        1);
    EXPECT_THAT(Errors(), HasSubstr("the event client did not keep the report"));
}
} // namespace
} // namespace NubisTool
