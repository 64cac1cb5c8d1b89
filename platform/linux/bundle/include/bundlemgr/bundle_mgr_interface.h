// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_BUNDLE_MGR_INTERFACE_H
#define OHOS_BUNDLE_MGR_INTERFACE_H

#include <cstdint>
#include <string>

#include "application_info.h"
#include "errors.h"
#include "iremote_broker.h"

namespace OHOS::AppExecFwk {

// Asks the bundle manager (system ability 401). Any thread; may block for an IPC call.
class IBundleMgr : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"ohos.appexecfwk.BundleMgr");

    // False, with `appInfo` unchanged, on any failure: an empty name, an unknown bundle, no answer. The defaults here
    // know no bundle.
    virtual bool GetApplicationInfo(
        const std::string &appName, const ApplicationFlag flag, const int userId, ApplicationInfo &appInfo);
    virtual bool GetApplicationInfo(
        const std::string &appName, int32_t flags, int32_t userId, ApplicationInfo &appInfo);
    // Takes the flags of GetApplicationFlag. ERR_OK or an error.
    virtual ErrCode GetApplicationInfoV9(
        const std::string &appName, int32_t flags, int32_t userId, ApplicationInfo &appInfo);
};

} // namespace OHOS::AppExecFwk

#endif // OHOS_BUNDLE_MGR_INTERFACE_H
