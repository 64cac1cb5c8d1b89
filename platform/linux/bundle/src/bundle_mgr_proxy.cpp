// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "bundlemgr/bundle_mgr_proxy.h"

#include "bundle_mgr_service.h"
#include "ipc_types.h"

namespace OHOS::AppExecFwk {

BundleMgrProxy::BundleMgrProxy(const sptr<IRemoteObject> &impl) : IRemoteProxy<IBundleMgr>(impl)
{}

BundleMgrProxy::~BundleMgrProxy() = default;

bool BundleMgrProxy::GetApplicationInfo(
    const std::string &appName, const ApplicationFlag flag, const int userId, ApplicationInfo &appInfo)
{
    return GetApplicationInfo(appName, static_cast<int32_t>(flag), static_cast<int32_t>(userId), appInfo);
}

bool BundleMgrProxy::GetApplicationInfo(
    const std::string &appName, int32_t flags, int32_t userId, ApplicationInfo &appInfo)
{
    return Query(GET_APPLICATION_INFO, appName, flags, userId, appInfo) == ERR_OK;
}

ErrCode BundleMgrProxy::GetApplicationInfoV9(
    const std::string &appName, int32_t flags, int32_t userId, ApplicationInfo &appInfo)
{
    return Query(GET_APPLICATION_INFO_V9, appName, flags, userId, appInfo);
}

ErrCode BundleMgrProxy::Query(
    uint32_t code, const std::string &appName, int32_t flags, int32_t userId, ApplicationInfo &appInfo)
{
    sptr<IRemoteObject> remote = Remote();
    MessageParcel data;
    MessageParcel reply;
    MessageOption option;
    if (appName.empty() || remote == nullptr) {
        return ERR_INVALID_VALUE;
    }
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteString(appName) || !data.WriteInt32(flags) ||
        !data.WriteInt32(userId)) {
        return ERR_INVALID_DATA;
    }
    int result = remote->SendRequest(code, data, reply, option);
    if (result != ERR_NONE || (result = reply.ReadInt32()) != ERR_OK) {
        return result;
    }
    return appInfo.ReadFromParcel(reply) ? static_cast<ErrCode>(ERR_OK) : static_cast<ErrCode>(ERR_INVALID_DATA);
}

} // namespace OHOS::AppExecFwk
