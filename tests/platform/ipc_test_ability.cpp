// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "ipc_test_ability.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <unistd.h>
#include <utility>

#include "host/calling_peer.h"
#include "ipc_types.h"

namespace IpcTest {

using OHOS::IRemoteObject;
using OHOS::MessageOption;
using OHOS::MessageParcel;
using OHOS::sptr;

namespace {

std::atomic<int> &Alive()
{
    static auto *alive = new std::atomic<int>(0);
    return *alive;
}

class CountedObject : public OHOS::IPCObjectStub {
public:
    CountedObject() : OHOS::IPCObjectStub(u"test.counted")
    {
        ++Alive();
    }
    ~CountedObject() override
    {
        --Alive();
    }
};

} // namespace

TestAbility::~TestAbility() = default;

bool CopyEverything(MessageParcel &from, MessageParcel &to)
{
    to.WriteInterfaceToken(from.ReadInterfaceToken());
    to.WriteInt32(from.ReadInt32());
    to.WriteInt64(from.ReadInt64());
    to.WriteBool(from.ReadBool());
    to.WriteString(from.ReadString());
    to.WriteString16(from.ReadString16());
    int32_t size = from.ReadInt32();
    to.WriteInt32(size);
    const void *block = size == 0 ? nullptr : from.ReadRawData(static_cast<size_t>(size));
    if (size != 0 && (block == nullptr || !to.WriteRawData(block, static_cast<size_t>(size)))) {
        return false;
    }
    for (int i = 0; i < 2; ++i) {
        to.WriteRemoteObject(from.ReadRemoteObject());
    }
    return from.GetReadableBytes() == 0;
}

int TestAbility::OnRemoteRequest(uint32_t code, MessageParcel &data, MessageParcel &reply, MessageOption &option)
{
    switch (code) {
        case ECHO:
            return CopyEverything(data, reply) ? OHOS::ERR_NONE : OHOS::ERR_INVALID_DATA;
        case RESULT: {
            int32_t result = data.ReadInt32();
            if (data.ReadBool()) {
                reply.WriteInt32(result);
            }
            return result;
        }
        case CALL_BACK:
            return CallBack(data, reply);
        case KEEP:
        case GIVE:
        case MAKE:
        case COUNT:
            return HandleObjects(code, data, reply);
        case DIE:
            kill(getpid(), SIGKILL);
            return OHOS::ERR_NONE;
        case BLOCK:
        case UNBLOCK:
        case AWAIT_BLOCKED:
            return HandleBlocking(code, data);
        case WHO:
            reply.WriteInt32(GetCallingPid());
            reply.WriteInt32(GetCallingUid());
            reply.WriteString(Host::GetCallingPeer().deviceName);
            reply.WriteInt32(getpid());
            return OHOS::ERR_NONE;
        case WRITE_TO: {
            int fd = data.ReadFileDescriptor();
            bool written = fd >= 0 && write(fd, "hello", 5) == 5;
            close(fd);
            reply.WriteBool(written);
            return OHOS::ERR_NONE;
        }
        default:
            return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
}

int TestAbility::HandleObjects(uint32_t code, MessageParcel &data, MessageParcel &reply)
{
    if (code == MAKE) {
        reply.WriteRemoteObject(new CountedObject());
        return OHOS::ERR_NONE;
    }
    if (code == COUNT) {
        reply.WriteInt32(Alive());
        return OHOS::ERR_NONE;
    }
    std::string name = data.ReadString();
    // What it replaces ends here, without the lock.
    sptr<IRemoteObject> object = data.ReadRemoteObject();
    std::lock_guard<std::mutex> lock(mutex_);
    if (code == KEEP) {
        std::swap(kept_[name], object);
    } else {
        reply.WriteRemoteObject(kept_[name]);
    }
    return OHOS::ERR_NONE;
}

int TestAbility::HandleBlocking(uint32_t code, MessageParcel &data)
{
    constexpr std::chrono::seconds generous(50);
    std::unique_lock<std::mutex> lock(mutex_);
    if (code == AWAIT_BLOCKED) {
        int count = data.ReadInt32();
        return changed_.wait_for(lock, generous, [&] { return blocked_ == count; }) ? OHOS::ERR_NONE
                                                                                    : OHOS::ERR_INVALID_STATE;
    }
    std::string name = data.ReadString();
    if (code == UNBLOCK) {
        open_[name] = true;
        changed_.notify_all();
        return OHOS::ERR_NONE;
    }
    ++blocked_;
    changed_.notify_all();
    bool opened = changed_.wait_for(lock, generous, [&] { return open_[name]; });
    --blocked_;
    changed_.notify_all();
    return opened ? OHOS::ERR_NONE : OHOS::ERR_INVALID_STATE;
}

int TestAbility::CallBack(MessageParcel &data, MessageParcel &reply)
{
    sptr<IRemoteObject> object = data.ReadRemoteObject();
    int32_t depth = data.ReadInt32();
    if (depth <= 0 || object == nullptr) {
        reply.WriteInt32(0);
        return OHOS::ERR_NONE;
    }
    MessageParcel request;
    MessageParcel answer;
    MessageOption option;
    request.WriteRemoteObject(this);
    request.WriteInt32(depth - 1);
    int result = object->SendRequest(CALL_BACK, request, answer, option);
    if (result != OHOS::ERR_NONE) {
        return result;
    }
    reply.WriteInt32(depth + answer.ReadInt32());
    return OHOS::ERR_NONE;
}

} // namespace IpcTest
