// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_ABILITY_CONNECT_CALLBACK_INTERFACE_H
#define OHOS_ABILITY_CONNECT_CALLBACK_INTERFACE_H

#include "element_name.h"
#include "iremote_broker.h"

namespace OHOS::AAFwk {

// Hears what becomes of a connection to an ability. Both callbacks come on IPC threads, with no lock held.
class IAbilityConnection : public OHOS::IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"ohos.abilityshell.DistributedConnection");

    virtual void OnAbilityConnectDone(
        const AppExecFwk::ElementName &element, const sptr<IRemoteObject> &remoteObject, int resultCode) = 0;
    // `resultCode` 0 after DisconnectAbility, -1 when the ability's process died; in that case death recipients of the
    // remote object are called too, before or after.
    virtual void OnAbilityDisconnectDone(const AppExecFwk::ElementName &element, int resultCode) = 0;

    enum {
        ON_ABILITY_CONNECT_DONE = 1,
        ON_ABILITY_DISCONNECT_DONE,
        ON_REMOTE_STATE_CHANGED,
    };
};

} // namespace OHOS::AAFwk

#endif // OHOS_ABILITY_CONNECT_CALLBACK_INTERFACE_H
