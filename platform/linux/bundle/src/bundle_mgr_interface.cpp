// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "bundlemgr/bundle_mgr_interface.h"

namespace OHOS::AppExecFwk {

bool IBundleMgr::GetApplicationInfo(const std::string &, const ApplicationFlag, const int, ApplicationInfo &)
{
    return false;
}

bool IBundleMgr::GetApplicationInfo(const std::string &, int32_t, int32_t, ApplicationInfo &)
{
    return false;
}

ErrCode IBundleMgr::GetApplicationInfoV9(const std::string &, int32_t, int32_t, ApplicationInfo &)
{
    return ERR_INVALID_VALUE;
}

} // namespace OHOS::AppExecFwk
