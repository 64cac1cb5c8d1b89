// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef IPC_TEST_ABILITY_H
#define IPC_TEST_ABILITY_H

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "iremote_stub.h"
#include "iremote_broker.h"

namespace IpcTest {

constexpr char BUNDLE[] = "test.bundle";
constexpr char ABILITY[] = "TestAbility";

// What the ability of the test service understands.
enum Code : uint32_t {
    // Repeats all values, objects and the block of the request, in the order of WriteEverything.
    ECHO = 1,
    // int32 n: an empty reply and the result n, or with bool true a reply of int32 n.
    RESULT,
    // remote object, int32 depth: calls the object back with this ability and depth - 1; replies the sum of depths.
    CALL_BACK,
    // string name, remote object: keeps the object. GIVE by name.
    KEEP,
    GIVE,
    // Replies a new object, of which the service keeps nothing; COUNT replies how many of them are alive.
    MAKE,
    COUNT,
    // Ends the process with SIGKILL.
    DIE,
    // string name: waits until UNBLOCK of the same name; replies nothing.
    BLOCK,
    UNBLOCK,
    // Waits until n handlers are in a BLOCK: int32 n.
    AWAIT_BLOCKED,
    // Replies int32 pid, int32 uid, string device of the caller, int32 own pid.
    WHO,
    // A file descriptor: writes "hello" to it.
    WRITE_TO,
};

class ITestAbility : public OHOS::IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"test.ITestAbility");
};

class TestAbility : public OHOS::IRemoteStub<ITestAbility> {
public:
    ~TestAbility() override;

    int OnRemoteRequest(
        uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option) override;

private:
    int HandleObjects(uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply);
    int HandleBlocking(uint32_t code, OHOS::MessageParcel &data);
    int CallBack(OHOS::MessageParcel &data, OHOS::MessageParcel &reply);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, OHOS::sptr<OHOS::IRemoteObject>> kept_;
    std::map<std::string, bool> open_;
    int blocked_ = 0;
};

// Reads what another WriteEverything-like writer wrote and writes it again: token, int32, int64, bool, string, string16,
// raw block (its size as int32 first, 0 for none), two remote objects, of which the second may be missing.
bool CopyEverything(OHOS::MessageParcel &from, OHOS::MessageParcel &to);

} // namespace IpcTest

#endif // IPC_TEST_ABILITY_H
