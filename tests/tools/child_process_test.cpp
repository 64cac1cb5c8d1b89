// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "child_process.h"

#include <csignal>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command_error.h"
#include "interrupt.h"
#include "temp_dir.h"

namespace NubisTool {
namespace {
constexpr std::chrono::seconds LONG_TIME(30);

ProcessSpec Shell(const std::string &script, bool pipes = false)
{
    return {{"sh", "-c", script}, {{"TOOL_TEST", "given"}}, pipes, pipes};
}

TEST(ChildProcess, ReportsHowAProgramEnded)
{
    EXPECT_EQ(ChildProcess(Shell("exit 3")).Wait(LONG_TIME), 3);
    EXPECT_EQ(ChildProcess(Shell("kill -TERM $$")).Wait(LONG_TIME), 128 + SIGTERM);
    EXPECT_THROW(ChildProcess({{"/no/such/program"}, {}, false, false}), CommandError);
    EXPECT_THROW(ChildProcess({{"/no/such/program"}, {}, true, true}), CommandError);
}

TEST(ChildProcess, TalksInLines)
{
    ChildProcess child(Shell("echo $TOOL_TEST; read x; echo \"got $x\"; echo error >&2; printf tail", true));
    EXPECT_EQ(child.ReadLine(LONG_TIME), "given");
    EXPECT_TRUE(child.WriteLine("hello"));
    EXPECT_EQ(child.ReadLine(LONG_TIME), "got hello");
    EXPECT_EQ(child.ReadAll(), "error\ntail");
    EXPECT_EQ(child.Wait(LONG_TIME), 0);
    EXPECT_EQ(child.ReadLine(LONG_TIME), std::nullopt);
    EXPECT_FALSE(child.WriteLine("nobody reads") && child.WriteLine("this"));
}

TEST(ChildProcess, EndsWithItsObjectEvenWhenItWillNot)
{
    pid_t pid = 0;
    {
        ChildProcess child(Shell("trap '' TERM; echo ready; while :; do read x; done", true));
        ASSERT_EQ(child.ReadLine(LONG_TIME), "ready");
        EXPECT_EQ(child.ReadLine(std::chrono::milliseconds(1)), std::nullopt);
        pid = child.Pid();
        EXPECT_FALSE(WaitUntilGone(pid, std::chrono::milliseconds(0)));
        child.Stop(std::chrono::milliseconds(1));
        EXPECT_EQ(child.Wait(LONG_TIME), 128 + SIGKILL);
    }
    EXPECT_TRUE(WaitUntilGone(pid, LONG_TIME));
}

TEST(ChildProcess, PassesTerminationOn)
{
    InterruptGuard guard(SecondSignal::IS_REMEMBERED);
    ChildProcess child(Shell("trap 'exit 9' TERM; echo ready; while :; do read x; done", true));
    ASSERT_EQ(child.ReadLine(LONG_TIME), "ready");
    raise(SIGTERM);
    EXPECT_TRUE(Interrupted());
    EXPECT_EQ(child.WaitForwardingSignals(), 9);
}

TEST(Interrupt, IsRememberedOnlyWhileGuarded)
{
    EXPECT_FALSE(Interrupted());
    {
        InterruptGuard guard;
        EXPECT_FALSE(WaitForInterrupt(std::chrono::milliseconds(0)));
        raise(SIGINT);
        EXPECT_TRUE(WaitForInterrupt(std::chrono::hours(1)));
        EXPECT_EQ(TakeSignal(), SIGINT);
        EXPECT_EQ(TakeSignal(), 0);
    }
    EXPECT_FALSE(Interrupted());
}

TEST(TempDir, IsPrivateAndGoesWithEverythingInIt)
{
    std::string path;
    {
        TempDir folder;
        path = folder.Path();
        std::filesystem::create_directories(folder.Make("deep") + "/er");
        EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms::owner_all);
        EXPECT_THROW(folder.Make("deep"), CommandError);
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}
} // namespace
} // namespace NubisTool
