// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_BUNDLE_MGR_PROXY_H
#define OHOS_BUNDLE_MGR_PROXY_H

#include <cstdint>
#include <string>

#include "bundlemgr/bundle_mgr_interface.h"
#include "iremote_proxy.h"

namespace OHOS::AppExecFwk {

class BundleMgrProxy : public IRemoteProxy<IBundleMgr> {
public:
    explicit BundleMgrProxy(const sptr<IRemoteObject> &impl);
    ~BundleMgrProxy() override;

    bool GetApplicationInfo(
        const std::string &appName, const ApplicationFlag flag, const int userId, ApplicationInfo &appInfo) override;
    bool GetApplicationInfo(
        const std::string &appName, int32_t flags, int32_t userId, ApplicationInfo &appInfo) override;
    ErrCode GetApplicationInfoV9(
        const std::string &appName, int32_t flags, int32_t userId, ApplicationInfo &appInfo) override;

private:
    ErrCode Query(uint32_t code, const std::string &appName, int32_t flags, int32_t userId, ApplicationInfo &appInfo);

    static inline BrokerDelegator<BundleMgrProxy> delegator_;
};

} // namespace OHOS::AppExecFwk

#endif // OHOS_BUNDLE_MGR_PROXY_H
