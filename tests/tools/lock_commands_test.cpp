// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "end_to_end_fixture.h"

namespace NubisTool {
namespace {
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class LockCommandsTest : public EndToEndTest {
protected:
    // With B for the options of the bundle, and a function that saves a new note.
    int Run(const std::string &lines)
    {
        Put("save", "exec nubis record save --bundle com.example.notes --type note --new '{\"title\": \"x\"}'");
        return RunLines("B='--bundle com.example.notes'\n" + lines);
    }
};

TEST_F(LockCommandsTest, OnlyTheCommandUnderTheLockWrites)
{
    EXPECT_EQ(
        Run("nubis lock exec $B -- sh -c 'sh save >/dev/null && env -u NUBIS_LOCK_SESSION sh save; echo $?\n"
            "env -u NUBIS_LOCK_SESSION nubis lock take --bundle com.example.notes; echo $?\n"
            "nubis lock show --json --bundle com.example.notes >state; echo $NUBIS_LOCK_SESSION >session; exit 7'\n"
            "s=$?; nubis lock show $B; cat state; sh save >/dev/null; exit $s"),
        7)
        << Errors();
    const std::string lines = "1\n1\nthe container notes of com.example.notes is not locked\n";
    EXPECT_THAT(out_, testing::StartsWith(lines));
    EXPECT_THAT(Errors(), AllOf(HasSubstr("LOCK_HELD, code 1012)\n  next: see with `nubis lock show`"),
                              HasSubstr("com.example.notes is locked by the device "), HasSubstr("--wait SECONDS")));
    out_.erase(0, lines.size());
    EXPECT_THAT(Out().getMemberNames(), testing::ElementsAre("deviceName", "locked", "since", "until"));
    EXPECT_EQ(Out()["until"].asInt64() - Out()["since"].asInt64() >= 60000, true);
}

TEST_F(LockCommandsTest, ALockThatIsLostFailsTheCommandsThatRelyOnIt)
{
    const std::string exec = "nubis lock exec --bundle com.example.notes -- sh -c '";
    EXPECT_EQ(
        Run(exec + "nubis lock release --bundle com.example.notes --session ${NUBIS_LOCK_SESSION#*=}; sh save'"), 1);
    EXPECT_THAT(Errors(), AllOf(HasSubstr("the session in NUBIS_LOCK_SESSION does not hold the lock"),
                              HasSubstr("nubis: the lock was lost before the command ended")));
    EXPECT_EQ(out_, "released the lock of the container notes of com.example.notes\n") << "nothing was saved";
    EXPECT_EQ(
        Run(exec + "kill -TERM $PPID; read forever <fifo' & mkfifo fifo; wait $!; echo $?; nubis lock show $B"), 0);
    EXPECT_EQ(out_, "143\nthe container notes of com.example.notes is not locked\n") << Errors();
}

TEST_F(LockCommandsTest, ATakenLockIsPassedOnRenewedAwaitedAndReleased)
{
    EXPECT_EQ(Run("export NUBIS_LOCK_SESSION=$(nubis lock take $B)\n"
                  "[ \"$(nubis lock take $B --session $NUBIS_LOCK_SESSION)\" = $NUBIS_LOCK_SESSION ] && sh save\n"
                  "nubis lock release $B --session other; echo $?\n"
                  "nubis lock exec $B --wait 60 -- echo mine 2>waiting & waiter=$!\n"
                  "until grep -q waiting waiting || ! kill -0 $waiter; do :; done\n"
                  "nubis lock release $B --session $NUBIS_LOCK_SESSION && wait $waiter\n"
                  "nubis lock take $B --session $NUBIS_LOCK_SESSION"),
        1);
    EXPECT_THAT(out_, testing::MatchesRegex("saved note .*, version 1\n1\nreleased .*\nmine\n"));
    EXPECT_THAT(Errors(), AllOf(HasSubstr("another session than other holds the lock"),
                              HasSubstr("no longer holds the lock"), Not(HasSubstr("NUBIS_LOCK_SESSION"))));
}
} // namespace
} // namespace NubisTool
