// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_BUNDLE_MGR_SERVICE_H
#define OHOS_BUNDLE_MGR_SERVICE_H

#include <cstdint>

#include "bundlemgr/bundle_mgr_interface.h"
#include "iremote_stub.h"

namespace OHOS::AppExecFwk {

// Codes of the requests to the bundle manager. Parcels: token, bundle name, int32 flags, int32 user; the reply is an
// int32 error, then, when it is 0, the application info.
enum BundleMgrCode : uint32_t {
    GET_APPLICATION_INFO = 1,
    GET_APPLICATION_INFO_V9 = 2,
};

// Answers from what this process offers itself, then from the manifests. Any thread.
class BundleMgrService : public IRemoteStub<IBundleMgr> {
public:
    int OnRemoteRequest(uint32_t code, MessageParcel &data, MessageParcel &reply, MessageOption &option) override;

    bool GetApplicationInfo(
        const std::string &appName, const ApplicationFlag flag, const int userId, ApplicationInfo &appInfo) override;
    bool GetApplicationInfo(
        const std::string &appName, int32_t flags, int32_t userId, ApplicationInfo &appInfo) override;
    ErrCode GetApplicationInfoV9(
        const std::string &appName, int32_t flags, int32_t userId, ApplicationInfo &appInfo) override;

private:
    bool Find(const std::string &appName, bool withMetadata, int32_t userId, ApplicationInfo &appInfo);
};

// A proxy of the bundle manager, as a process gets it on a device; the same one as long as it lives.
sptr<IRemoteObject> ConnectBundleMgr();

} // namespace OHOS::AppExecFwk

#endif // OHOS_BUNDLE_MGR_SERVICE_H
