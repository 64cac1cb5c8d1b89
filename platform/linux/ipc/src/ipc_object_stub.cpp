// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "ipc_object_stub.h"

#include <utility>

#include "host/calling_peer.h"
#include "ipc_types.h"

namespace OHOS {

IPCObjectStub::IPCObjectStub(std::u16string descriptor, bool serialInvokeFlag)
    : IRemoteObject(std::move(descriptor)), serialInvokeFlag_(serialInvokeFlag)
{}

IPCObjectStub::~IPCObjectStub() = default;

bool IPCObjectStub::IsProxyObject() const
{
    return false;
}

int32_t IPCObjectStub::GetObjectRefCount()
{
    return GetSptrRefCount();
}

int IPCObjectStub::SendRequest(uint32_t code, MessageParcel &data, MessageParcel &reply, MessageOption &option)
{
    if (!serialInvokeFlag_) {
        return OnRemoteRequest(code, data, reply, option);
    }
    std::lock_guard<std::recursive_mutex> lock(serialMutex_);
    return OnRemoteRequest(code, data, reply, option);
}

bool IPCObjectStub::AddDeathRecipient(const sptr<DeathRecipient> &)
{
    return false;
}

bool IPCObjectStub::RemoveDeathRecipient(const sptr<DeathRecipient> &)
{
    return false;
}

int IPCObjectStub::Dump(int, const std::vector<std::u16string> &)
{
    return ERR_NONE;
}

int IPCObjectStub::OnRemoteRequest(uint32_t, MessageParcel &, MessageParcel &, MessageOption &)
{
    return IPC_STUB_UNKNOW_TRANS_ERR;
}

int IPCObjectStub::GetCallingPid()
{
    return Host::GetCallingPeer().pid;
}

int IPCObjectStub::GetCallingUid()
{
    return Host::GetCallingPeer().uid;
}

uint32_t IPCObjectStub::GetCallingTokenID()
{
    // There are no access tokens on this machine: 0 names none.
    return 0;
}

} // namespace OHOS
