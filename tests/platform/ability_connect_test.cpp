// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <future>
#include <poll.h>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "extension_manager_client.h"
#include "host/ability_control.h"
#include "host/ability_registry.h"
#include "host/ability_server.h"
#include "host/paths.h"
#include "ipc_object_stub.h"
#include "ipc_test_support.h"
#include "service_launcher.h"
#include "unix_socket.h"

using namespace IpcTest;
using OHOS::IRemoteObject;
using OHOS::MessageParcel;
using OHOS::sptr;
using testing::HasSubstr;

namespace {

auto &Manager()
{
    return OHOS::AAFwk::ExtensionManagerClient::GetInstance();
}

// A client program under way, and what it printed.
class Client {
public:
    Client(const std::string &bundleName, const std::string &mode)
        : pipe_(popen((IPC_TEST_CLIENT " " + bundleName + " " + mode).c_str(), "r"))
    {}
    // The exit status.
    int Await(std::string &output)
    {
        char line[256];
        while (fgets(line, sizeof(line), pipe_) != nullptr) {
            output += line;
        }
        int status = pclose(pipe_);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    FILE *pipe_;
};

std::string ManifestWith(const std::string &bundleName, const std::string &exec)
{
    return "{\"bundleName\": \"" + bundleName + "\", \"abilities\": [{\"name\": \"TestAbility\", \"exec\": " + exec +
           "}]}";
}

Host::AbilityServerOptions OptionsFor(const std::string &bundleName)
{
    Host::AbilityServerOptions options;
    options.bundleName = bundleName;
    options.abilityName = ABILITY;
    return options;
}

// An ability whose program waits before it runs `command`, so that something can happen while it is being connected.
class SlowStart {
public:
    SlowStart(const std::string &bundleName, const std::string &command)
        : gate_(TestHost::Get().RuntimeDir() + "/" + bundleName + ".gate"), started_(gate_ + ".started")
    {
        EXPECT_EQ(mkfifo(gate_.c_str(), 0600), 0);
        // Both ways: then neither this end nor the program waits in opening it.
        writer_.Reset(open(gate_.c_str(), O_RDWR | O_CLOEXEC));
        TestHost::Get().WriteManifest(bundleName,
            ManifestWith(bundleName,
                "[\"/bin/sh\", \"-c\", \": > " + started_ + "; read line < " + gate_ + "; " + command + "\"]"));
    }
    bool AwaitStart() const
    {
        return Await([this] { return access(started_.c_str(), F_OK) == 0; });
    }
    // Lets several programs run.
    void GoOn() const
    {
        EXPECT_EQ(write(writer_.Get(), "\n\n\n", 3), 3);
    }

private:
    const std::string gate_;
    const std::string started_;
    Host::Ipc::UniqueFd writer_;
};

} // namespace

TEST(AbilityConnectTest, ManyProcessesStartOneServiceAndMayExitWithCallsUnderWay)
{
    std::string starts = TestHost::Get().OfferService("test.many");
    for (const char *mode : {"who", "exit"}) {
        std::vector<Client> clients;
        std::set<std::string> outputs;
        for (int i = 0; i < 8; ++i) {
            clients.emplace_back("test.many", mode);
        }
        for (Client &client : clients) {
            std::string output;
            EXPECT_EQ(client.Await(output), 0) << output;
            outputs.insert(output);
        }
        EXPECT_EQ(outputs.size(), 1U) << testing::PrintToString(outputs);
    }
    EXPECT_EQ(TestHost::Lines(starts), 1U);
}

TEST(AbilityConnectTest, ServiceThatEndsWhileItIsReachedIsReplaced)
{
    std::string starts = TestHost::Get().OfferService("test.ending");
    std::string path = Host::AbilitySocketPath("test.ending", ABILITY, 100);
    std::string error;
    ASSERT_TRUE(Host::PrepareRuntimeDir(100, error)) << error;
    Host::Ipc::UniqueFd listener = Host::Ipc::ListenSocket(path, error);
    ASSERT_TRUE(listener) << error;
    sptr<TestConnection> connection = new TestConnection();
    auto result = std::async(std::launch::async, [&] { return Connect(connection, "test.ending"); });
    // The client is in the queue, where the ending service leaves it.
    pollfd arrived = {listener.Get(), POLLIN, 0};
    EXPECT_EQ(poll(&arrived, 1, std::chrono::milliseconds(GENEROUS).count()), 1);
    unlink(path.c_str());
    listener.Reset();
    ASSERT_EQ(result.wait_for(GENEROUS), std::future_status::ready);
    EXPECT_EQ(result.get(), 0) << Host::LastConnectError();
    EXPECT_EQ(Call(connection->AwaitAbility(), RESULT), 0);
    EXPECT_EQ(TestHost::Lines(starts), 1U);
    Manager().DisconnectAbility(connection->AsObject());
}

TEST(AbilityConnectTest, ConnectionsOfOneProcessShareOneSession)
{
    std::string starts = TestHost::Get().OfferService("test.shared", 1000);
    sptr<TestConnection> first = new TestConnection();
    sptr<TestConnection> second = new TestConnection();
    ASSERT_EQ(Connect(first, "test.shared"), 0);
    ASSERT_EQ(Connect(second, "test.shared"), 0);
    sptr<IRemoteObject> ability = first->AwaitAbility();
    EXPECT_EQ(ability, second->AwaitAbility());
    // Again with the same object: harmless, and answered again.
    ASSERT_EQ(Connect(first, "test.shared"), 0);
    EXPECT_EQ(first->AwaitAbility(2), ability);
    EXPECT_EQ(TestHost::Lines(starts), 1U);

    EXPECT_EQ(Manager().DisconnectAbility(first->AsObject()), 0);
    EXPECT_THAT(first->AwaitDisconnects(), testing::ElementsAre(0));
    EXPECT_NE(Manager().DisconnectAbility(first->AsObject()), 0);
    EXPECT_EQ(Call(ability, RESULT), 0);
    // A proxy in use keeps the session, the last one to go closes it; then the service ends for want of clients.
    EXPECT_EQ(Manager().DisconnectAbility(second->AsObject()), 0);
    EXPECT_THAT(second->AwaitDisconnects(), testing::ElementsAre(0));
    EXPECT_EQ(Call(ability, RESULT), 0);
    first->DropAbility();
    second->DropAbility();
    ability = nullptr;
    EXPECT_TRUE(Await([] { return !Host::FindAbility("test.shared", ABILITY, 100).running; }));

    ASSERT_EQ(Connect(first, "test.shared"), 0);
    EXPECT_EQ(Call(first->AwaitAbility(3), RESULT), 0);
    EXPECT_EQ(TestHost::Lines(starts), 2U);
    Manager().DisconnectAbility(first->AsObject());
}

TEST(AbilityConnectTest, AConnectionObjectHearsEverythingInOrder)
{
    Host::AbilityRegistry::Offer("test.order", ABILITY, 100, new TestAbility());
    std::promise<void> gate;
    std::shared_future<void> open = gate.get_future().share();
    sptr<TestConnection> connection = new TestConnection();
    connection->insideDisconnect = [open] { open.wait_for(GENEROUS); };
    ASSERT_EQ(Connect(connection, "test.order"), 0);
    connection->AwaitAbility();
    EXPECT_EQ(Manager().DisconnectAbility(connection->AsObject()), 0);
    ASSERT_EQ(Connect(connection, "test.order"), 0);
    // What is posted later than the second connection has been told by now.
    sptr<TestConnection> later = new TestConnection();
    ASSERT_EQ(Connect(later, "test.order"), 0);
    later->AwaitAbility();
    gate.set_value();
    connection->AwaitAbility(2);
    EXPECT_THAT(connection->Heard(), testing::ElementsAre("connected", "disconnected 0", "connected"));
    EXPECT_EQ(Manager().DisconnectAbility(connection->AsObject()), 0);
    EXPECT_EQ(Manager().DisconnectAbility(later->AsObject()), 0);
    Host::AbilityRegistry::Withdraw("test.order", ABILITY, 100);
}

TEST(AbilityConnectTest, ConcurrentConnectsOfOneObjectShareTheirFate)
{
    SlowStart slow("test.fate", "exit 3");
    sptr<TestConnection> connection = new TestConnection();
    std::vector<std::future<int>> results;
    for (int i = 0; i < 3; ++i) {
        results.push_back(std::async(std::launch::async, [&] { return Connect(connection, "test.fate"); }));
    }
    ASSERT_TRUE(slow.AwaitStart());
    slow.GoOn();
    for (auto &result : results) {
        ASSERT_EQ(result.wait_for(GENEROUS), std::future_status::ready);
        EXPECT_NE(result.get(), 0);
    }
    EXPECT_TRUE(connection->Heard().empty());
}

TEST(AbilityConnectTest, DisconnectWhileConnectingHolds)
{
    SlowStart slow("test.pending", "exec " IPC_TEST_SERVICE " test.pending 100 10000");
    sptr<TestConnection> connection = new TestConnection();
    auto result = std::async(std::launch::async, [&] { return Connect(connection, "test.pending"); });
    ASSERT_TRUE(slow.AwaitStart());
    EXPECT_EQ(Manager().DisconnectAbility(connection->AsObject()), 0);
    EXPECT_THAT(connection->AwaitDisconnects(), testing::ElementsAre(0));
    slow.GoOn();
    ASSERT_EQ(result.wait_for(GENEROUS), std::future_status::ready);
    EXPECT_NE(Manager().DisconnectAbility(connection->AsObject()), 0);
    // The next attempt is a new one.
    ASSERT_EQ(Connect(connection, "test.pending"), 0) << Host::LastConnectError();
    EXPECT_EQ(Call(connection->AwaitAbility(), RESULT), 0);
    EXPECT_THAT(connection->Heard(), testing::ElementsAre("disconnected 0", "connected"));
    Manager().DisconnectAbility(connection->AsObject());
}

TEST(AbilityConnectTest, ALogThatIsFullIsPutAsideWhenItsServiceStarts)
{
    namespace fs = std::filesystem;
    TestHost::Get();
    const fs::path folder = fs::path(Host::StateDir()) / "log";
    fs::create_directories(folder);
    for (const size_t excess : {0, 1}) {
        const std::string bundle = "test.log" + std::to_string(excess);
        const fs::path log = folder / (bundle + ".log");
        std::ofstream(log).close();
        fs::resize_file(log, Host::MAX_SERVICE_LOG_BYTES + excess);
        TestHost::Get().OfferService(bundle);
        sptr<TestConnection> connection = new TestConnection();
        ASSERT_EQ(Connect(connection, bundle), 0);
        ASSERT_NE(connection->AwaitAbility(), nullptr);
        EXPECT_EQ(fs::exists(log.string() + ".old"), excess > 0);
        EXPECT_EQ(fs::file_size(log) < Host::MAX_SERVICE_LOG_BYTES, excess > 0);
        Manager().DisconnectAbility(connection->AsObject());
    }
}

TEST(AbilityConnectTest, StaleSocketIsReplacedAndAPlaceIsTakenOnce)
{
    TestHost::Get().OfferService("test.stale");
    std::string error;
    ASSERT_TRUE(Host::PrepareRuntimeDir(100, error)) << error;
    std::string path = Host::AbilitySocketPath("test.stale", ABILITY, 100);
    Host::Ipc::ListenSocket(path, error);
    ASSERT_EQ(access(path.c_str(), F_OK), 0);
    EXPECT_FALSE(Host::FindAbility("test.stale", ABILITY, 100).running);
    sptr<TestConnection> connection = new TestConnection();
    ASSERT_EQ(Connect(connection, "test.stale"), 0) << Host::LastConnectError();
    EXPECT_EQ(Call(connection->AwaitAbility(), RESULT), 0);
    EXPECT_EQ(Host::LastConnectError(), "");

    auto status = Host::FindAbility("test.stale", ABILITY, 100);
    EXPECT_TRUE(status.running);
    Host::AbilityServer server(OptionsFor("test.stale"), new TestAbility());
    EXPECT_FALSE(server.Start(error));
    EXPECT_THAT(error, HasSubstr("process " + std::to_string(status.pid)));
    EXPECT_EQ(Call(connection->AwaitAbility(), RESULT), 0);
    Manager().DisconnectAbility(connection->AsObject());
}

TEST(AbilityConnectTest, AServerThatStopsFinishesWhileItsClientsAreConnected)
{
    TestHost::Get();
    int finished = 0;
    sptr<TestConnection> connection = new TestConnection();
    Host::AbilityServerOptions options = OptionsFor("test.finish");
    options.beforeClose = [&] { finished += Call(connection->AwaitAbility(), RESULT) == 0 ? 1 : 0; };
    Host::AbilityServer server(options, new TestAbility());
    std::string error;
    ASSERT_TRUE(server.Start(error)) << error;
    std::thread running([&server] { server.Run(); });
    EXPECT_EQ(Connect(connection, "test.finish"), 0) << Host::LastConnectError();
    EXPECT_NE(connection->AwaitAbility(), nullptr);
    server.Stop();
    running.join();
    EXPECT_EQ(finished, 1);
    EXPECT_EQ(connection->AwaitDisconnects().size(), 1U);
    connection->DropAbility();
}

TEST(AbilityConnectTest, AServerThatStopsAnswersWhatItHasTaken)
{
    constexpr size_t large = size_t{8} << 20;
    // Answers by the other connection, and not before the server is about to close.
    class Late : public OHOS::IPCObjectStub {
    public:
        Late() : OHOS::IPCObjectStub(u"test.Late")
        {}
        int OnRemoteRequest(uint32_t, MessageParcel &, MessageParcel &reply, OHOS::MessageOption &) override
        {
            taken.set_value();
            closing.get_future().wait();
            const std::string text(large, 'x');
            return reply.WriteRawData(text.data(), text.size()) ? 0 : 1;
        }
        std::promise<void> taken;
        std::promise<void> closing;
    };
    TestHost::Get();
    sptr<Late> ability = new Late();
    Host::AbilityServerOptions options = OptionsFor("test.late");
    options.beforeClose = [&] { ability->closing.set_value(); };
    Host::AbilityServer server(options, ability);
    std::string error;
    ASSERT_TRUE(server.Start(error)) << error;
    std::thread running([&server] { server.Run(); });
    sptr<TestConnection> connection = new TestConnection();
    EXPECT_EQ(Connect(connection, "test.late"), 0) << Host::LastConnectError();
    auto proxy = connection->AwaitAbility();
    std::thread calling([&proxy] {
        MessageParcel reply;
        EXPECT_EQ(Call(proxy, RESULT, {}, reply), 0);
        EXPECT_NE(reply.ReadRawData(large), nullptr);
    });
    ability->taken.get_future().wait();
    server.Stop();
    calling.join();
    running.join();
    connection->DropAbility();
}

TEST(AbilityConnectTest, FailuresAreToldInWords)
{
    struct {
        const char *bundle;
        std::string manifest;
        const char *expected;
    } const cases[] = {
        {"test.none", "", "no manifest test.none.json"},
        {"test/../evil", "", "is not the name"},
        {"test.fifo", "", "is not a file"},
        {"test.text", "{", "is not JSON"},
        {"test.deep", std::string(5000, '['), "not usable JSON"},
        {"test.list", "[]", "expected a JSON object"},
        {"test.name", "{\"bundleName\": 5, \"abilities\": []}", "member \"bundleName\": expected a string"},
        {"test.other", ManifestWith("test.another", "[\"x\"]"), "expected \"test.other\""},
        {"test.abilities", "{\"bundleName\": \"test.abilities\", \"abilities\": {}}", "member \"abilities\""},
        {"test.noability", "{\"bundleName\": \"test.noability\", \"abilities\": []}", "no ability \"TestAbility\""},
        {"test.exec", ManifestWith("test.exec", "[1]"), "member \"abilities[0].exec\""},
        {"test.metadata", ManifestWith("test.metadata", "[\"x\"], \"metadata\": [{\"name\": \"n\", \"value\": 1}]"),
            "member \"abilities[0].metadata[0].value\": expected a string"},
        {"test.holder", ManifestWith("test.holder", "[\"/bin/true\", \"${nothing}\"]"), "${nothing}"},
        {"test.program", ManifestWith("test.program", "[\"no-such-program\"]"), "no-such-program"},
        {"test.ends", ManifestWith("test.ends", "[\"/bin/sh\", \"-c\", \"echo a; echo why >&2; exit 9\"]"),
            "ended at once, with status 9: why; its log is "},
    };
    ASSERT_EQ(mkfifo(TestHost::Get().ManifestFile("test.fifo").c_str(), 0600), 0);
    for (const auto &item : cases) {
        SCOPED_TRACE(item.bundle);
        if (!item.manifest.empty()) {
            TestHost::Get().WriteManifest(item.bundle, item.manifest);
        }
        sptr<TestConnection> connection = new TestConnection();
        EXPECT_NE(Connect(connection, item.bundle), 0);
        EXPECT_THAT(Host::LastConnectError(), HasSubstr(item.expected));
        EXPECT_NE(Manager().DisconnectAbility(connection->AsObject()), 0);
    }
    EXPECT_NE(Manager().DisconnectAbility(nullptr), 0);
}

TEST(AbilityConnectTest, UnsafeRuntimeFolderIsRefused)
{
    std::string folder = TestHost::Get().RuntimeDir();
    std::string error;
    ASSERT_TRUE(Host::PrepareRuntimeDir(100, error)) << error;
    ASSERT_EQ(chmod((folder + "/100").c_str(), 0750), 0);
    EXPECT_FALSE(Host::PrepareRuntimeDir(100, error));
    EXPECT_THAT(error, HasSubstr("has mode 0750"));
    ASSERT_EQ(chmod((folder + "/100").c_str(), 0700), 0);
    ASSERT_EQ(symlink("/tmp", (folder + "/101").c_str()), 0);
    EXPECT_FALSE(Host::PrepareRuntimeDir(101, error));
    EXPECT_THAT(error, HasSubstr("is not a folder"));

    setenv("NUBIS_RUNTIME_DIR", (folder + "/" + std::string(100, 'x')).c_str(), 1);
    Host::AbilityServer server(OptionsFor("test.long"), new TestAbility());
    EXPECT_FALSE(server.Start(error));
    EXPECT_THAT(error, HasSubstr("choose a shorter NUBIS_RUNTIME_DIR"));
    setenv("NUBIS_RUNTIME_DIR", folder.c_str(), 1);
}

TEST(AbilityConnectTest, RegisteredAbilitiesComeFirstAndCanBeWithdrawn)
{
    std::string starts = TestHost::Get().OfferService("test.first");
    EXPECT_FALSE(Host::AbilityRegistry::Offer("test.first", ABILITY, 100, nullptr));
    EXPECT_TRUE(Host::AbilityRegistry::Offer("test.first", ABILITY, 100, new TestAbility()));
    sptr<TestConnection> connection = new TestConnection();
    ASSERT_EQ(Connect(connection, "test.first"), 0);
    sptr<IRemoteObject> ability = connection->AwaitAbility();
    EXPECT_TRUE(ability->IsProxyObject());
    EXPECT_EQ(TestHost::Lines(starts), 0U);
    EXPECT_TRUE(Host::AbilityRegistry::Withdraw("test.first", ABILITY, 100));
    EXPECT_FALSE(Host::AbilityRegistry::Withdraw("test.first", ABILITY, 100));
    EXPECT_EQ(Call(ability, RESULT), 0);
    Manager().DisconnectAbility(connection->AsObject());
    ASSERT_EQ(Connect(connection, "test.first"), 0);
    EXPECT_EQ(TestHost::Lines(starts), 1U);
    // Another user has another service.
    EXPECT_FALSE(Host::FindAbility("test.first", ABILITY, 101).running);
    Manager().DisconnectAbility(connection->AsObject());
}
