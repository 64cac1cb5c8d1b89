// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_ISERVICE_REGISTRY_H
#define OHOS_ISERVICE_REGISTRY_H

#include "if_system_ability_manager.h"
#include "refbase.h"

namespace OHOS {

// The way to the system abilities. One per process, never destroyed; any thread.
class SystemAbilityManagerClient {
public:
    static SystemAbilityManagerClient &GetInstance();

    sptr<ISystemAbilityManager> GetSystemAbilityManager();

private:
    SystemAbilityManagerClient() = default;
    ~SystemAbilityManagerClient() = default;
};

} // namespace OHOS

#endif // OHOS_ISERVICE_REGISTRY_H
