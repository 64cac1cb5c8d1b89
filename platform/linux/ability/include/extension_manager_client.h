// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_EXTENSION_MANAGER_CLIENT_H
#define OHOS_EXTENSION_MANAGER_CLIENT_H

#include <cstdint>

#include "errors.h"
#include "iremote_object.h"
#include "refbase.h"

namespace OHOS::AAFwk {

class Want;

// Connects to service abilities and starts them where needed. One per process, never destroyed; any thread.
class ExtensionManagerClient {
public:
    static ExtensionManagerClient &GetInstance();

    // Looks for the wanted ability in this process, then for a running service of the user, then starts the program that
    // the ability's manifest names and waits for it, about four seconds at most. `connect` is the object of an
    // AbilityConnectionStub. ERR_OK: OnAbilityConnectDone follows on an IPC thread; `connect` is kept until it has been
    // disconnected. Any other result: nothing follows; Host::LastConnectError tells the reason in words.
    // Connecting again with the same `connect` is harmless: it hears OnAbilityConnectDone again if it is connected. While
    // an earlier call for it is under way, this one waits for that and has the same result.
    ErrCode ConnectServiceExtensionAbility(const Want &want, const sptr<IRemoteObject> &connect, int32_t userId);
    // `callerToken` is not used here.
    ErrCode ConnectServiceExtensionAbility(
        const Want &want, const sptr<IRemoteObject> &connect, const sptr<IRemoteObject> &callerToken, int32_t userId);
    // OnAbilityDisconnectDone with 0 follows on an IPC thread. ERR_INVALID_VALUE when `connect` is not connected.
    ErrCode DisconnectAbility(const sptr<IRemoteObject> &connect);

private:
    ExtensionManagerClient() = default;
    ~ExtensionManagerClient() = default;
};

} // namespace OHOS::AAFwk

#endif // OHOS_EXTENSION_MANAGER_CLIENT_H
