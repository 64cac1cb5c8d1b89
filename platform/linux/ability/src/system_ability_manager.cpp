// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "iservice_registry.h"

#include "bundle_mgr_service.h"
#include "iremote_stub.h"
#include "system_ability_definition.h"

namespace OHOS {

namespace {

class SystemAbilityManager : public IRemoteStub<ISystemAbilityManager> {
public:
    sptr<IRemoteObject> GetSystemAbility(int32_t systemAbilityId) override
    {
        return CheckSystemAbility(systemAbilityId);
    }

    sptr<IRemoteObject> CheckSystemAbility(int32_t systemAbilityId) override
    {
        return systemAbilityId == BUNDLE_MGR_SERVICE_SYS_ABILITY_ID ? AppExecFwk::ConnectBundleMgr() : nullptr;
    }
};

} // namespace

SystemAbilityManagerClient &SystemAbilityManagerClient::GetInstance()
{
    static auto *client = new SystemAbilityManagerClient();
    return *client;
}

sptr<ISystemAbilityManager> SystemAbilityManagerClient::GetSystemAbilityManager()
{
    static auto *manager = new sptr<ISystemAbilityManager>(new SystemAbilityManager());
    return *manager;
}

} // namespace OHOS
