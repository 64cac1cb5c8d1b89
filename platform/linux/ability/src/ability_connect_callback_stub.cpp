// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "ability_connect_callback_stub.h"

#include <memory>

#include "ipc_types.h"

namespace OHOS::AAFwk {

AbilityConnectionStub::AbilityConnectionStub() = default;

AbilityConnectionStub::~AbilityConnectionStub() = default;

int AbilityConnectionStub::OnRemoteRequest(
    uint32_t code, MessageParcel &data, MessageParcel &reply, MessageOption &option)
{
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        return ERR_INVALID_STATE;
    }
    if (code != ON_ABILITY_CONNECT_DONE && code != ON_ABILITY_DISCONNECT_DONE) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    std::unique_ptr<AppExecFwk::ElementName> element(AppExecFwk::ElementName::Unmarshalling(data));
    if (element == nullptr) {
        return ERR_INVALID_DATA;
    }
    if (code == ON_ABILITY_DISCONNECT_DONE) {
        OnAbilityDisconnectDone(*element, data.ReadInt32());
        return ERR_NONE;
    }
    sptr<IRemoteObject> remoteObject = data.ReadRemoteObject();
    if (remoteObject == nullptr) {
        return ERR_NULL_OBJECT;
    }
    OnAbilityConnectDone(*element, remoteObject, data.ReadInt32());
    return ERR_NONE;
}

} // namespace OHOS::AAFwk
