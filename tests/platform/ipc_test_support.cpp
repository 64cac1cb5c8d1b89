// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "ipc_test_support.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>

#include "extension_manager_client.h"
#include "host/ability_control.h"
#include "host/ability_registry.h"
#include "want.h"

namespace IpcTest {

using OHOS::IRemoteObject;
using OHOS::MessageOption;
using OHOS::MessageParcel;
using OHOS::sptr;

namespace {

// Ends what the tests have started, whatever their outcome.
class CleanUp : public testing::Environment {
public:
    void TearDown() override
    {
        TestHost::Get().RemoveAll();
    }
};

} // namespace

TestHost &TestHost::Get()
{
    static auto *host = new TestHost();
    return *host;
}

TestHost::TestHost()
{
    char path[] = "/tmp/nubis-ipc-XXXXXX";
    root_ = mkdtemp(path);
    std::string command = "mkdir -m 700 " + root_ + "/run " + root_ + "/state " + root_ + "/manifests";
    EXPECT_EQ(std::system(command.c_str()), 0);
    setenv("NUBIS_RUNTIME_DIR", (root_ + "/run").c_str(), 1);
    setenv("NUBIS_STATE_DIR", (root_ + "/state").c_str(), 1);
    setenv("NUBIS_MANIFEST_PATH", (root_ + "/manifests").c_str(), 1);
    setenv("NUBIS_DEVICE_NAME", "test-device", 1);
    testing::AddGlobalTestEnvironment(new CleanUp());
}

std::string TestHost::RuntimeDir() const
{
    return root_ + "/run";
}

std::string TestHost::ManifestFile(const std::string &bundleName) const
{
    return root_ + "/manifests/" + bundleName + ".json";
}

std::string TestHost::OfferService(const std::string &bundleName, int idleMilliseconds)
{
    std::string starts = root_ + "/" + bundleName + ".starts";
    WriteManifest(bundleName, "{\"bundleName\": \"" + bundleName + "\", \"abilities\": [{\"name\": \"" + ABILITY +
                                  "\", \"exec\": [\"" IPC_TEST_SERVICE "\", \"" + bundleName + "\", \"${user}\", \"" +
                                  std::to_string(idleMilliseconds) + "\", \"" + starts +
                                  "\"], \"metadata\": [{\"name\": \"abilityVersion\", \"value\": \"7\"}]}]}");
    return starts;
}

void TestHost::WriteManifest(const std::string &bundleName, const std::string &text)
{
    bundles_.push_back(bundleName);
    std::ofstream(ManifestFile(bundleName)) << text;
}

size_t TestHost::Lines(const std::string &file)
{
    std::ifstream stream(file);
    size_t lines = 0;
    for (std::string line; std::getline(stream, line);) {
        ++lines;
    }
    return lines;
}

void TestHost::RemoveAll()
{
    for (const std::string &bundle : bundles_) {
        auto status = Host::FindAbility(bundle, ABILITY, 100);
        if (status.running) {
            kill(status.pid, SIGKILL);
        }
    }
    EXPECT_EQ(std::system(("rm -rf " + root_).c_str()), 0);
}

void TestConnection::OnAbilityConnectDone(
    const OHOS::AppExecFwk::ElementName &element, const sptr<IRemoteObject> &remoteObject, int resultCode)
{
    EXPECT_EQ(element.GetAbilityName(), ABILITY);
    EXPECT_EQ(resultCode, 0);
    std::lock_guard<std::mutex> lock(mutex_);
    ability_ = remoteObject;
    heard_.emplace_back("connected");
    ++connects_;
    changed_.notify_all();
}

void TestConnection::OnAbilityDisconnectDone(const OHOS::AppExecFwk::ElementName &, int resultCode)
{
    if (insideDisconnect) {
        insideDisconnect();
    }
    std::lock_guard<std::mutex> lock(mutex_);
    heard_.push_back("disconnected " + std::to_string(resultCode));
    disconnects_.push_back(resultCode);
    changed_.notify_all();
}

sptr<IRemoteObject> TestConnection::AwaitAbility(size_t count)
{
    std::unique_lock<std::mutex> lock(mutex_);
    EXPECT_TRUE(changed_.wait_for(lock, GENEROUS, [&] { return connects_ >= count; }));
    return ability_;
}

std::vector<int> TestConnection::AwaitDisconnects(size_t count)
{
    std::unique_lock<std::mutex> lock(mutex_);
    EXPECT_TRUE(changed_.wait_for(lock, GENEROUS, [&] { return disconnects_.size() >= count; }));
    return disconnects_;
}

void TestConnection::DropAbility()
{
    sptr<IRemoteObject> dropped;
    std::lock_guard<std::mutex> lock(mutex_);
    dropped = ability_;
    ability_ = nullptr;
}

std::vector<std::string> TestConnection::Heard()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return heard_;
}

void TestRecipient::OnRemoteDied(const OHOS::wptr<IRemoteObject> &object)
{
    if (inside) {
        inside(object);
    }
    std::lock_guard<std::mutex> lock(mutex_);
    ++deaths_;
    changed_.notify_all();
}

size_t TestRecipient::AwaitDeaths(size_t count)
{
    std::unique_lock<std::mutex> lock(mutex_);
    EXPECT_TRUE(changed_.wait_for(lock, GENEROUS, [&] { return deaths_ >= count; }));
    return deaths_;
}

int Connect(const sptr<TestConnection> &connection, const std::string &bundleName, int32_t userId)
{
    OHOS::AAFwk::Want want;
    want.SetAction("").SetElementName(bundleName, ABILITY);
    return OHOS::AAFwk::ExtensionManagerClient::GetInstance().ConnectServiceExtensionAbility(
        want, connection->AsObject(), userId);
}

int Call(const sptr<IRemoteObject> &object, uint32_t code, const std::function<void(MessageParcel &)> &write,
    MessageParcel &reply)
{
    MessageParcel data;
    MessageOption option;
    if (write) {
        write(data);
    }
    return object->SendRequest(code, data, reply, option);
}

int Call(const sptr<IRemoteObject> &object, uint32_t code, const std::function<void(MessageParcel &)> &write)
{
    MessageParcel reply;
    return Call(object, code, write, reply);
}

int32_t CallForInt(const sptr<IRemoteObject> &object, uint32_t code)
{
    MessageParcel reply;
    EXPECT_EQ(Call(object, code, {}, reply), 0);
    return reply.ReadInt32();
}

void Keep(const sptr<IRemoteObject> &ability, const std::string &name, const sptr<IRemoteObject> &object)
{
    const auto write = [&](MessageParcel &data) {
        data.WriteString(name);
        data.WriteRemoteObject(object);
    };
    EXPECT_EQ(Call(ability, KEEP, write), 0);
}

sptr<IRemoteObject> Give(const sptr<IRemoteObject> &ability, const std::string &name)
{
    MessageParcel reply;
    const auto write = [&](MessageParcel &data) { data.WriteString(name); };
    EXPECT_EQ(Call(ability, GIVE, write, reply), 0);
    return reply.ReadRemoteObject();
}

sptr<IRemoteObject> Make(const sptr<IRemoteObject> &ability)
{
    MessageParcel reply;
    EXPECT_EQ(Call(ability, MAKE, {}, reply), 0);
    return reply.ReadRemoteObject();
}

bool Await(const std::function<bool()> &condition)
{
    const auto deadline = std::chrono::steady_clock::now() + GENEROUS;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

void PlacesTest::SetUp()
{
    TestHost::Get().OfferService(BUNDLE);
    Offer();
    ConnectAgain();
}

void PlacesTest::TearDown()
{
    OHOS::AAFwk::ExtensionManagerClient::GetInstance().DisconnectAbility(connection_->AsObject());
    Host::AbilityRegistry::Withdraw(BUNDLE, ABILITY, 100);
}

void PlacesTest::Offer()
{
    if (GetParam() == Place::THIS_PROCESS) {
        Host::AbilityRegistry::Offer(BUNDLE, ABILITY, 100, new TestAbility());
    }
}

void PlacesTest::ConnectAgain()
{
    connection_ = new TestConnection();
    ASSERT_EQ(Connect(connection_, BUNDLE), 0);
    ability_ = connection_->AwaitAbility();
    ASSERT_NE(ability_, nullptr);
}

std::string NameOf(const testing::TestParamInfo<Place> &place)
{
    return place.param == Place::THIS_PROCESS ? "Registered" : "Process";
}

} // namespace IpcTest
