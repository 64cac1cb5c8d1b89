// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

#include "command_error.h"
#include "end_to_end_fixture.h"

namespace NubisTool {
namespace {
using testing::HasSubstr;

class DoctorTest : public EndToEndTest {
protected:
    // The doctor's judgement after these shell lines, on folders in which a service has run once.
    int Examine(const std::string &lines)
    {
        Put("lines",
            "export NUBIS_RUNTIME_DIR=$PWD/run NUBIS_STATE_DIR=$PWD/state\n"
            "[ -d before ] || { nubis service start && nubis service stop && mkdir before && cp -a run state before; }"
            " >/dev/null || exit 99\n"
            "rm -rf run state && cp -a before/* . || exit 98\n" +
                lines + "\nnubis doctor --json\n");
        out_.clear();
        return NubisTest::RunCommand("sh lines", out_);
    }

    // The one check that has this verdict: what it says, and what to do.
    std::string Only(const std::string &verdict, const std::string &check) const
    {
        std::string text;
        const Json::Value json = Out();
        for (const Json::Value &entry : json["checks"]) {
            if (entry["verdict"] != "ok" || (verdict == "ok" && entry["check"].asString() == check)) {
                EXPECT_EQ(entry["check"].asString() + " " + entry["verdict"].asString(), check + " " + verdict) << out_;
                text += entry["what"].asString() + " " + entry["next"].asString();
            }
        }
        return text;
    }
};

TEST_F(DoctorTest, FindsNothingWrongAndLeavesNothingBehind)
{
    EXPECT_EQ(NubisTest::RunCommand("NUBIS_RUNTIME_DIR=$PWD/run NUBIS_STATE_DIR=$PWD/state nubis doctor", out_), 0);
    EXPECT_THAT(out_, testing::EndsWith("\nall is well\n"));
    EXPECT_THAT(out_, testing::Not(HasSubstr("\033")));
    EXPECT_TRUE(std::filesystem::is_empty(".")) << out_;

    EXPECT_EQ(Examine("find run state | sort >list"), EXIT_DONE);
    EXPECT_TRUE(Out()["ok"].asBool()) << out_;
    EXPECT_EQ(NubisTest::RunCommand("find run state | sort | diff list -", out_), 0) << out_;

    EXPECT_EQ(Examine("nubis doctor --start >/dev/null; trap 'nubis service stop >/dev/null' EXIT"), EXIT_DONE);
    EXPECT_THAT(Only("ok", "service"), HasSubstr("process "));
    EXPECT_THAT(Only("ok", "database"), HasSubstr("schema version 3"));
}

TEST_F(DoctorTest, SaysWhatIsWrongAndWhatToDo)
{
    struct Case {
        std::string lines;
        std::string check;
        std::string said;
    };
    const std::vector<Case> cases = {{"chmod 750 run", "runtime folder", "mode 0750, it must be 0700 (by "},
        {"chmod 770 state", "state folder", "chmod 700 "}, {"chmod 702 state/drive", "data folder", "chmod go-w "},
        {"printf x >run/100/com.orvane.tyra.aerostash.DriveServiceAbility.sock", "socket", "is no socket"},
        {"dd if=/dev/zero of=state/drive/user-100/drive.db bs=4096 seek=3 count=8 conv=notrunc 2>/dev/null; "
         "rm -f state/drive/user-100/drive.db-*",
            "database", "nubis service import"},
        {"mkdir state/drive/catalogue; echo '{}' >state/drive/catalogue/com.example.json", "catalogue",
            "com.example.json: bundleName"},
        {"export NUBIS_RUNTIME_DIR=$PWD/other; nubis service start >/dev/null; other=$NUBIS_RUNTIME_DIR\n"
         "trap 'NUBIS_RUNTIME_DIR=$other nubis service stop >/dev/null' EXIT; NUBIS_RUNTIME_DIR=$PWD/run",
            "database", "started with another runtime folder"},
        {"mkdir m; export NUBIS_MANIFEST_PATH=$PWD/m:" NUBIS_TEST_BIN "/../share/nubis/manifests; "
         "echo '{\"bundleName\": 5}' >m/com.example.other.json",
            "manifest", "com.example.other.json: member \"bundleName\""}};
    for (const Case &one : cases) {
        EXPECT_EQ(Examine(one.lines), EXIT_OPERATION_FAILED) << one.lines;
        EXPECT_THAT(Only("failed", one.check), HasSubstr(one.said));
    }
    EXPECT_EQ(Examine("export NUBIS_MANIFEST_PATH=/nowhere"), EXIT_OPERATION_FAILED);
    EXPECT_THAT(out_, HasSubstr("no com.orvane.tyra.aerostash.json in /nowhere"));
    EXPECT_EQ(
        NubisTest::RunCommand("NUBIS_RUNTIME_DIR=$PWD/run NUBIS_MANIFEST_PATH=/nowhere nubis user info 2>&1", out_),
        EXIT_OPERATION_FAILED);
    EXPECT_THAT(out_, testing::AllOf(HasSubstr("no manifest com.orvane"), HasSubstr("next: run `nubis doctor")));
}

TEST_F(DoctorTest, ASocketThatWasLeftBehindIsNoFailure)
{
    struct sockaddr_un address = {AF_UNIX, "socket"};
    int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(descriptor, reinterpret_cast<struct sockaddr *>(&address), sizeof(address)), 0);
    close(descriptor);
    EXPECT_EQ(Examine("mv socket run/100/com.orvane.tyra.aerostash.DriveServiceAbility.sock"), EXIT_DONE);
    EXPECT_THAT(Only("warning", "socket"), HasSubstr("nobody listens"));
}
} // namespace
} // namespace NubisTool
