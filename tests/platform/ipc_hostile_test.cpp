// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include <capnp/message.h>
#include <capnp/rpc.capnp.h>
#include <capnp/serialize.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "extension_manager_client.h"
#include "host/ability_control.h"
#include "host/log_level.h"
#include "ipc_limits.h"
#include "ipc_test_support.h"
#include "unix_socket.h"
#include "wire_acceptor.h"

using namespace IpcTest;
using Host::Ipc::UniqueFd;
using Host::Ipc::WireAcceptor;
using Host::Ipc::WireSession;
using OHOS::sptr;

namespace {

// Waits until the other end has closed the connection, whatever it sends before.
bool AwaitClose(const UniqueFd &socket)
{
    char bytes[256];
    ssize_t count = 0;
    while ((count = read(socket.Get(), bytes, sizeof(bytes))) > 0) {
    }
    return count <= 0;
}

} // namespace

TEST(IpcHostileTest, GarbageEndsOnlyItsOwnConnection)
{
    TestHost::Get().OfferService(BUNDLE);
    sptr<TestConnection> connection = new TestConnection();
    ASSERT_EQ(Connect(connection, BUNDLE), 0);
    auto ability = connection->AwaitAbility();
    const std::string inputs[] = {
        std::string(4096, '\xff'),
        // A message that claims to have 2 GiB.
        std::string("\0\0\0\0\xff\xff\xff\x0f", 8),
        // Many segments.
        std::string("\xff\xff\0\0", 4) + std::string(1000, '\x01'),
        "GET / HTTP/1.1\r\n\r\n",
    };
    for (const std::string &input : inputs) {
        std::string error;
        bool nobody = false;
        UniqueFd socket = Host::Ipc::ConnectSocket(Host::FindAbility(BUNDLE, ABILITY, 100).socketPath, error, nobody);
        ASSERT_TRUE(socket) << error;
        ASSERT_EQ(write(socket.Get(), input.data(), input.size()), static_cast<ssize_t>(input.size()));
        if (input.size() > 100) {
            EXPECT_TRUE(AwaitClose(socket));
        }
        EXPECT_EQ(Call(ability, RESULT), 0);
    }
    OHOS::AAFwk::ExtensionManagerClient::GetInstance().DisconnectAbility(connection->AsObject());
}

TEST(IpcHostileTest, BothEndsRefuseAnotherUser)
{
    std::string path = TestHost::Get().RuntimeDir() + "/user.sock";
    std::string error;
    UniqueFd listener(Host::Ipc::ListenSocket(path, error));
    ASSERT_TRUE(listener) << error;
    int own = static_cast<int>(geteuid());
    auto find = [](const std::string &, const std::string &, int32_t) { return sptr<OHOS::IRemoteObject>(); };
    auto acceptor = std::make_shared<WireAcceptor>(
        find, [] {}, own + 1);
    bool nobody = false;
    EXPECT_EQ(WireSession::Connect(path, own + 1, error, nobody), nullptr);
    EXPECT_THAT(error, testing::HasSubstr("belongs to another user"));
    EXPECT_FALSE(nobody);

    UniqueFd client = Host::Ipc::ConnectSocket(path, error, nobody);
    // The first one is the refused client from above.
    for (int i = 0; i < 2; ++i) {
        acceptor->Accept(UniqueFd(accept(listener.Get(), nullptr, nullptr)));
    }
    EXPECT_TRUE(AwaitClose(client));
    EXPECT_EQ(acceptor->SessionCount(), 0U);
    acceptor->Close();
}

TEST(IpcHostileTest, SilentConnectionsKeepNobodyOut)
{
    TestHost::Get().OfferService("test.silent");
    sptr<TestConnection> connection = new TestConnection();
    ASSERT_EQ(Connect(connection, "test.silent"), 0);
    auto status = Host::FindAbility("test.silent", ABILITY, 100);
    std::vector<UniqueFd> silent;
    constexpr size_t many = 300;
    for (size_t i = 0; i < many; ++i) {
        std::string error;
        bool nobody = false;
        silent.push_back(Host::Ipc::ConnectSocket(status.socketPath, error, nobody));
        ASSERT_TRUE(silent.back()) << error;
    }
    EXPECT_TRUE(AwaitClose(silent.front()));
    // A process of its own connects anew.
    EXPECT_EQ(std::system((IPC_TEST_CLIENT " test.silent who | grep -qx " + std::to_string(status.pid)).c_str()), 0);
    OHOS::AAFwk::ExtensionManagerClient::GetInstance().DisconnectAbility(connection->AsObject());
}

TEST(IpcHostileTest, AProcessThatAcceptsNobodyDoesNotHoldUpForEver)
{
    std::string path = TestHost::Get().RuntimeDir() + "/full.sock";
    std::string error;
    UniqueFd listener(Host::Ipc::ListenSocket(path, error));
    ASSERT_TRUE(listener) << error;
    std::vector<UniqueFd> waiting;
    bool nobody = false;
    do {
        waiting.push_back(Host::Ipc::ConnectSocket(path, error, nobody));
    } while (waiting.back());
    EXPECT_FALSE(nobody);
    EXPECT_THAT(error, testing::HasSubstr("cannot connect to"));
}

TEST(IpcHostileTest, OneThatAsksOnWithoutReadingIsCutOff)
{
    TestHost::Get().OfferService("test.unread");
    sptr<TestConnection> connection = new TestConnection();
    ASSERT_EQ(Connect(connection, "test.unread"), 0);
    auto ability = connection->AwaitAbility();
    std::string error;
    bool nobody = false;
    UniqueFd socket =
        Host::Ipc::ConnectSocket(Host::FindAbility("test.unread", ABILITY, 100).socketPath, error, nobody);
    ASSERT_TRUE(socket) << error;
    bool isCut = false;
    for (size_t i = 0; i < 16 * Host::Ipc::MAX_UNREAD_MESSAGES && !isCut; ++i) {
        capnp::MallocMessageBuilder builder;
        builder.initRoot<capnp::rpc::Message>().initBootstrap().setQuestionId(static_cast<uint32_t>(i));
        auto words = capnp::messageToFlatArray(builder);
        auto bytes = words.asBytes();
        isCut = send(socket.Get(), bytes.begin(), bytes.size(), MSG_NOSIGNAL) < 0;
    }
    EXPECT_TRUE(isCut);
    EXPECT_EQ(Call(ability, RESULT), 0);
    OHOS::AAFwk::ExtensionManagerClient::GetInstance().DisconnectAbility(connection->AsObject());
}

TEST(IpcHostileTest, AClientMayLeaveAsMuchQueuedAsItLikes)
{
    // The service refuses some of so many, and the log would name each.
    Host::SetLogLevel(LOG_FATAL);
    TestHost::Get().OfferService("test.queue");
    sptr<TestConnection> connection = new TestConnection();
    ASSERT_EQ(Connect(connection, "test.queue"), 0);
    auto ability = connection->AwaitAbility();
    const pid_t service = Host::FindAbility("test.queue", ABILITY, 100).pid;
    ASSERT_EQ(kill(service, SIGSTOP), 0);
    // Few more than the limit: the service must not find as many of its own answers unread.
    for (size_t i = 0; i < Host::Ipc::MAX_UNREAD_MESSAGES + 1024; ++i) {
        OHOS::MessageParcel data;
        OHOS::MessageParcel reply;
        OHOS::MessageOption option(OHOS::MessageOption::TF_ASYNC);
        EXPECT_EQ(ability->SendRequest(RESULT, data, reply, option), 0);
    }
    ASSERT_EQ(kill(service, SIGCONT), 0);
    // The first answers come while most of the requests still wait to be sent.
    EXPECT_TRUE(Await([&] { return Call(ability, RESULT) == 0 || ability->IsObjectDead(); }));
    EXPECT_FALSE(ability->IsObjectDead());
    OHOS::AAFwk::ExtensionManagerClient::GetInstance().DisconnectAbility(connection->AsObject());
}

TEST(IpcHostileTest, AProcessHasSoManySessionsAndRequestsUnderWay)
{
    TestHost::Get().OfferService("test.many");
    sptr<TestConnection> connection = new TestConnection();
    ASSERT_EQ(Connect(connection, "test.many"), 0);
    auto ability = connection->AwaitAbility();
    const std::string path = Host::FindAbility("test.many", ABILITY, 100).socketPath;
    const int own = static_cast<int>(geteuid());
    std::vector<std::shared_ptr<WireSession>> sessions;
    std::string error;
    bool nobody = false;
    std::vector<sptr<OHOS::IRemoteObject>> abilities;
    const auto hasRoom = [&] {
        sessions.push_back(WireSession::Connect(path, own, error, nobody));
        abilities.push_back(sessions.back()->GetAbility("test.many", ABILITY, 100, error));
        return abilities.back() != nullptr;
    };
    // The connection above has one already.
    for (size_t i = 1; i < Host::Ipc::MAX_SESSIONS_OF_PROCESS; ++i) {
        ASSERT_TRUE(hasRoom()) << i << error;
    }
    EXPECT_FALSE(hasRoom());
    EXPECT_THAT(error, testing::HasSubstr("does not answer"));
    for (auto &session : sessions) {
        session->Die();
    }

    for (size_t i = 0; i < Host::Ipc::MAX_CALLS_UNDER_WAY; ++i) {
        OHOS::MessageParcel data;
        OHOS::MessageParcel reply;
        OHOS::MessageOption option(OHOS::MessageOption::TF_ASYNC);
        data.WriteString("gate");
        ASSERT_EQ(ability->SendRequest(BLOCK, data, reply, option), 0);
    }
    EXPECT_NE(Call(ability, RESULT), 0) << "one too many";
    // Large ones have a connection of their own, which has room.
    const std::string large(Host::Ipc::WireSession::BIG_PARCEL + 1, 'x');
    EXPECT_EQ(Call(ability, UNBLOCK,
                  [&](OHOS::MessageParcel &data) {
                      data.WriteString("gate");
                      data.WriteString(large);
                  }),
        0);
    EXPECT_TRUE(Await([&] { return Call(ability, RESULT) == 0; }));
    OHOS::AAFwk::ExtensionManagerClient::GetInstance().DisconnectAbility(connection->AsObject());
}
