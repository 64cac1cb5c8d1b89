// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "extension_manager_client.h"

#include <exception>

#include "connection_table.h"
#include "ipc_log.h"
#include "want.h"

namespace OHOS::AAFwk {

ExtensionManagerClient &ExtensionManagerClient::GetInstance()
{
    static auto *client = new ExtensionManagerClient();
    return *client;
}

ErrCode ExtensionManagerClient::ConnectServiceExtensionAbility(
    const Want &want, const sptr<IRemoteObject> &connect, int32_t userId)
{
    return ConnectServiceExtensionAbility(want, connect, nullptr, userId);
}

ErrCode ExtensionManagerClient::ConnectServiceExtensionAbility(
    const Want &want, const sptr<IRemoteObject> &connect, const sptr<IRemoteObject> &, int32_t userId)
{
    try {
        return ConnectionTable::Get().Connect(want.GetElement(), connect, userId);
    } catch (const std::exception &error) {
        IPC_LOGE("cannot connect: %{public}s", error.what());
        return ERR_NO_INIT;
    }
}

ErrCode ExtensionManagerClient::DisconnectAbility(const sptr<IRemoteObject> &connect)
{
    return ConnectionTable::Get().Disconnect(connect);
}

} // namespace OHOS::AAFwk
