// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef IPC_TEST_SUPPORT_H
#define IPC_TEST_SUPPORT_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ability_connect_callback_stub.h"
#include "ipc_test_ability.h"
#include "iremote_object.h"

namespace IpcTest {

constexpr std::chrono::seconds GENEROUS(50);

// The folders and the environment of this test program, removed at the end together with the services started in them.
class TestHost {
public:
    // Sets the environment at the first call.
    static TestHost &Get();

    std::string RuntimeDir() const;
    std::string ManifestFile(const std::string &bundleName) const;
    // A manifest whose ability is served by the test service, which ends when idle for that long. Returns the file to
    // which each service adds a line.
    std::string OfferService(const std::string &bundleName, int idleMilliseconds = 10000);
    void WriteManifest(const std::string &bundleName, const std::string &text);
    // How many services have started.
    static size_t Lines(const std::string &file);
    void RemoveAll();

private:
    TestHost();

    std::string root_;
    std::vector<std::string> bundles_;
};

// A connection that remembers what it heard. Waits are generous and fail the test when nothing comes.
class TestConnection : public OHOS::AAFwk::AbilityConnectionStub {
public:
    void OnAbilityConnectDone(const OHOS::AppExecFwk::ElementName &element,
        const OHOS::sptr<OHOS::IRemoteObject> &remoteObject, int resultCode) override;
    void OnAbilityDisconnectDone(const OHOS::AppExecFwk::ElementName &element, int resultCode) override;

    OHOS::sptr<OHOS::IRemoteObject> AwaitAbility(size_t count = 1);
    // The codes so far, at least `count`.
    std::vector<int> AwaitDisconnects(size_t count = 1);
    void DropAbility();
    // All that it heard, in order.
    std::vector<std::string> Heard();
    // Called inside OnAbilityDisconnectDone, before it is noted; set before it is connected.
    std::function<void()> insideDisconnect;

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> heard_;
    OHOS::sptr<OHOS::IRemoteObject> ability_;
    size_t connects_ = 0;
    std::vector<int> disconnects_;
};

// Where the ability of a test lives.
enum class Place {
    THIS_PROCESS,
    OTHER_PROCESS
};

// What holds for every ability, wherever it lives.
class PlacesTest : public testing::TestWithParam<Place> {
protected:
    void SetUp() override;
    void TearDown() override;
    // Makes the ability, unless it is a process, which is started on demand.
    static void Offer();
    // By a connection of its own.
    void ConnectAgain();

    OHOS::sptr<TestConnection> connection_;
    OHOS::sptr<OHOS::IRemoteObject> ability_;
};

std::string NameOf(const testing::TestParamInfo<Place> &place);

class TestRecipient : public OHOS::IRemoteObject::DeathRecipient {
public:
    void OnRemoteDied(const OHOS::wptr<OHOS::IRemoteObject> &object) override;
    // How often it was called, at least `count` times.
    size_t AwaitDeaths(size_t count = 1);
    // Called inside OnRemoteDied; set before it is registered.
    std::function<void(const OHOS::wptr<OHOS::IRemoteObject> &)> inside;

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    size_t deaths_ = 0;
};

int Connect(const OHOS::sptr<TestConnection> &connection, const std::string &bundleName, int32_t userId = 100);

// One request; the reply is left in `reply`.
int Call(const OHOS::sptr<OHOS::IRemoteObject> &object, uint32_t code,
    const std::function<void(OHOS::MessageParcel &)> &write, OHOS::MessageParcel &reply);
int Call(const OHOS::sptr<OHOS::IRemoteObject> &object, uint32_t code,
    const std::function<void(OHOS::MessageParcel &)> &write = {});
// Lets the ability keep the object under the name; null ends that. Yields what it keeps.
void Keep(const OHOS::sptr<OHOS::IRemoteObject> &ability, const std::string &name,
    const OHOS::sptr<OHOS::IRemoteObject> &object);
OHOS::sptr<OHOS::IRemoteObject> Give(const OHOS::sptr<OHOS::IRemoteObject> &ability, const std::string &name);
// An object that the ability has made and does not keep.
OHOS::sptr<OHOS::IRemoteObject> Make(const OHOS::sptr<OHOS::IRemoteObject> &ability);
// Waits, for long, until the condition holds, which nobody tells; whether it does.
bool Await(const std::function<bool()> &condition);
// A request whose reply is one int32.
int32_t CallForInt(const OHOS::sptr<OHOS::IRemoteObject> &object, uint32_t code);
} // namespace IpcTest

#endif // IPC_TEST_SUPPORT_H
