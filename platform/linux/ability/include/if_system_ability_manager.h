// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_IF_SYSTEM_ABILITY_MANAGER_H
#define OHOS_IF_SYSTEM_ABILITY_MANAGER_H

#include <cstdint>

#include "iremote_broker.h"

namespace OHOS {

class ISystemAbilityManager : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"OHOS.ISystemAbilityManager");

    // Both give null when there is no such system ability.
    virtual sptr<IRemoteObject> GetSystemAbility(int32_t systemAbilityId) = 0;
    virtual sptr<IRemoteObject> CheckSystemAbility(int32_t systemAbilityId) = 0;
};

} // namespace OHOS

#endif // OHOS_IF_SYSTEM_ABILITY_MANAGER_H
