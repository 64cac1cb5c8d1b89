// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <csignal>
#include <cstring>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "client_process.h"
#include "host/ability_control.h"
#include "note_builder.h"
#include "notes_test.h"

using namespace Nubis;
using namespace NubisTest;

namespace {
constexpr int CALLS = 20;
constexpr char HALF_A_MESSAGE[] = "\0\0\0\0\0\0\1\0half of it";

class HostileClientTest : public NotesTest {
protected:
    // As most shells set it, long before the service starts.
    void SetUp() override
    {
        constexpr rlim_t usual = 1024;
        rlimit limit{};
        ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
        limit.rlim_cur = std::min(usual, limit.rlim_max);
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
        // With asynchronous requests, whose threads clients share.
        Service().InstallManifest("3");
        NotesTest::SetUp();
    }

    // Another client's calls, each within the time-out of its own request.
    void ExpectAnswers(const std::string &whatGoesOn)
    {
        for (int i = 0; i < CALLS; ++i) {
            const std::string id = whatGoesOn + std::to_string(i);
            ASSERT_TRUE(AllSaved(Save(Database(), {Note("calm").Id(id)}))) << id;
            const auto fetched = FetchById(Database(), "note", id);
            ASSERT_FALSE(fetched.error.HasError()) << id;
            EXPECT_EQ(TitleOf(fetched.record), "calm");
        }
    }

    // A client process in this mode that has begun; -1 and a failure when it did not.
    static pid_t AwaitBegun(Crash::ClientProcess &client)
    {
        const std::vector<std::string> lines = client.ReadLines();
        EXPECT_FALSE(lines.empty()) << "the hostile client did not begin";
        return lines.empty() ? -1 : client.Pid();
    }

    std::vector<int> ConnectAndSayHalf(size_t count)
    {
        const std::string path = Host::FindAbility("com.orvane.tyra.aerostash", "DriveServiceAbility", 100).socketPath;
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
        std::vector<int> sockets;
        for (size_t i = 0; i < count; ++i) {
            const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
            EXPECT_EQ(connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0);
            send(fd, HALF_A_MESSAGE, sizeof(HALF_A_MESSAGE), MSG_NOSIGNAL);
            sockets.push_back(fd);
        }
        return sockets;
    }
};

TEST_F(HostileClientTest, OneThatSaysHalfOfAMessageHurtsNobody)
{
    constexpr size_t connections = 400;
    ExpectAnswers("before");
    rlimit descriptors{};
    ASSERT_EQ(prlimit(Service().Pid(), RLIMIT_NOFILE, nullptr, &descriptors), 0);
    EXPECT_EQ(descriptors.rlim_cur, descriptors.rlim_max) << "clients may need more than a shell gives";
    const std::vector<int> sockets = ConnectAndSayHalf(connections);
    ExpectAnswers("half");
    std::string output;
    EXPECT_EQ(RunCommand(std::string(NUBIS_TEST_BIN) + "/nubis record get --bundle com.example.notes --type note half0",
                  output),
        0)
        << "a new client finds room: " << output;
    for (const int fd : sockets) {
        close(fd);
    }
}

TEST_F(HostileClientTest, OneThatAsksForTheMostExpensiveAllTheTimeHurtsNobody)
{
    Crash::ClientProcess client({NUBIS_TEST_HOSTILE_CLIENT, "flood"});
    ASSERT_GT(AwaitBegun(client), 0);
    ExpectAnswers("flood");
}

TEST_F(HostileClientTest, StoppedOnesThatHaveRepliesPendingHurtNobody)
{
    Crash::ClientProcess first({NUBIS_TEST_HOSTILE_CLIENT, "pending"});
    Crash::ClientProcess second({NUBIS_TEST_HOSTILE_CLIENT, "pending"});
    for (Crash::ClientProcess *client : {&first, &second}) {
        const pid_t pid = AwaitBegun(*client);
        ASSERT_GT(pid, 0);
        ASSERT_EQ(kill(pid, SIGSTOP), 0);
    }
    ExpectAnswers("stopped");
}
} // namespace
