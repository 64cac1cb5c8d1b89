// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nubis_kit.h"

#include <json/value.h>

#include "ev_utils.h"
#include "json_helper.h"
#include "log.h"
#include "nb_container.h"

// The signed-in cloud user.
namespace Nubis {
namespace {
constexpr int32_t CLOUD_STATUS_END = 5;

// Ends the reporting of events in the name of the cloud user.
void ForgetCloudUser(int32_t userId)
{
    const auto evUtils = EvUtils::GetInstance(userId);
    if (evUtils != nullptr) {
        evUtils->ClearCloudUserId();
    }
}
} // namespace

NBError NubisNative::GetCloudUserInfo(NBUserInfo &userInfo, bool needSpaceInfo)
{
    Json::Value request(Json::objectValue);
    request["function"] = "GetCloudUserInfo";
    request["signVersion"] = SIGN_VERSION;
    request["needSpaceInfo"] = needSpaceInfo;
    Json::Value reply;
    NBError error = SendInPlace(request, reply, REQUEST_TIMEOUT);
    if (error.HasError()) {
        return error;
    }
    error = GetUserInfoFromJson(reply, userInfo);
    const auto evUtils = EvUtils::GetInstance(userId_);
    if (!error.HasError() && evUtils != nullptr) {
        evUtils->SetCloudUserId(userInfo.userId);
    }
    return error;
}

NBError NubisNative::GetUserInfoFromJson(const Json::Value &reply, NBUserInfo &userInfo)
{
    if (!reply.isObject()) {
        return NBError(NB_LOCAL_BAD_DATA);
    }
    const Json::Value *serverError = JsonHelper::FindMember(reply, "error");
    if (serverError != nullptr) {
        NB_LOGE("get user info failed, the service has error, the msg is %{public}s",
            JsonHelper::JsonToString(reply).c_str());
        NBError error;
        error.ParseErrorFromJson(*serverError, JsonHelper::GetIntFromJson(reply, "code"));
        return error;
    }
    const Json::Value *user = JsonHelper::FindMember(reply, "userInfo");
    if (user == nullptr || !user->isObject()) {
        return NBError();
    }
    userInfo.userId = JsonHelper::GetStringFromJson(*user, "userId");
    userInfo.cloudStatus = JsonHelper::GetIntFromJson(*user, "cloudStatus");
    if (userInfo.cloudStatus >= CLOUD_STATUS_END) {
        NB_LOGE("get user info recv unknown cloud status:%{public}d", userInfo.cloudStatus);
        userInfo.cloudStatus = 0;
    }
    userInfo.totalSpace = JsonHelper::GetUInt64FromJson(*user, "totalSpace");
    userInfo.remainSpace = JsonHelper::GetUInt64FromJson(*user, "remainSpace");
    userInfo.isSpaceFull = userInfo.remainSpace == 0;
    userInfo.pushKeyId = JsonHelper::GetStringFromJson(*user, "pushKeyId");
    userInfo.pushKeyValue = JsonHelper::GetStringFromJson(*user, "pushKeyValue");
    std::lock_guard<std::mutex> lock(userInfoMutex_);
    pushKeyId_ = userInfo.pushKeyId;
    std::atomic_store(&pushKeyValue_, std::make_shared<const std::string>(userInfo.pushKeyValue));
    return NBError();
}

std::string NubisNative::GetPushKeyId() const
{
    std::lock_guard<std::mutex> lock(userInfoMutex_);
    return pushKeyId_;
}

void NubisNative::ReleaseCloudUserInfo()
{
    NB_LOGI("release cloud user info");
    for (AppInfos *appInfos : {&appInfos_, &fileAppInfos_}) {
        std::lock_guard<std::mutex> lock(appInfos->mutex);
        appInfos->entries.clear();
    }
    for (Containers *containers : {&containers_, &fileContainers_}) {
        std::lock_guard<std::mutex> lock(containers->mutex);
        for (const auto &[key, container] : containers->entries) {
            container->Release();
        }
        containers->entries.clear();
    }
    ForgetCloudUser(userId_);
}

void NubisNative::CleanCloudUserInfo()
{
    NB_LOGI("clean cloud user info");
    {
        std::lock_guard<std::mutex> lock(containers_.mutex);
        for (const auto &[key, container] : containers_.entries) {
            NB_LOGI("clean bundlename:%{public}s user info", key.c_str());
            container->Release();
        }
    }
    {
        std::lock_guard<std::mutex> lock(fileContainers_.mutex);
        for (const auto &[key, container] : fileContainers_.entries) {
            NB_LOGI("clean file bundlename:%{public}s user info", key.c_str());
            container->Release();
        }
    }
    ForgetCloudUser(userId_);
}
} // namespace Nubis
