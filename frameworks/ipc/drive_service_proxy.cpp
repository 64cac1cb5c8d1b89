// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_service_proxy.h"

#include <cstdlib>
#include <map>
#include <new>
#include <vector>

#include "bundlemgr/bundle_mgr_interface.h"
#include "bundlemgr/bundle_mgr_proxy.h"
#include "extension_manager_client.h"
#include "if_system_ability_manager.h"
#include "iservice_registry.h"
#include "json_helper.h"
#include "log.h"
#include "string_ex.h"
#include "system_ability_definition.h"
#include "want.h"

namespace Nubis {
namespace {
constexpr int32_t MAX_REQUESTS_IN_FLIGHT = 12;
constexpr int32_t APPLICATION_INFO_WITH_METADATA = 64;
constexpr int32_t VERSION_UNKNOWN = -1;
constexpr int DEFAULT_TIMEOUT = -1;
} // namespace

DriveServiceProxy::DriveServiceProxy(int userId)
    : bundleName_("com.orvane.tyra.aerostash"), abilityName_("DriveServiceAbility"),
      descriptor_(OHOS::Str8ToStr16("OHOS.Aerostash.DriveServiceAbility")), maxRequests_(MAX_REQUESTS_IN_FLIGHT),
      userId_(userId), link_(std::make_shared<ProxyLink>(this)), ipcConnect_(new (std::nothrow) DriveIpcConnect(link_)),
      callbackStub_(new (std::nothrow) DriveCallbackStub(userId_))
{
    ConnectService();
}

DriveServiceProxy::~DriveServiceProxy()
{
    link_->Close();
    ipcConnect_ = nullptr;
    callbackStub_ = nullptr;
    requestTimeOut_.Clear();
    std::lock_guard<ffrt::mutex> lock(timerMutex_);
    timerTask_ = ffrt::task_handle();
}

void DriveServiceProxy::ConnectService()
{
    const uint32_t failedBefore = failedAttempts_;
    std::lock_guard<std::mutex> lock(connectMutex_);
    if (ipcConnect_ == nullptr || ipcConnect_->IsConnected() || failedAttempts_ != failedBefore) {
        return;
    }
    requestTimeOut_.Clear();
    OHOS::AAFwk::Want want;
    want.SetAction("");
    want.SetElementName(bundleName_, abilityName_);
    NB_LOGI("connect extension ability");
    ipcConnect_->ExpectConnect();
    const int32_t result = OHOS::AAFwk::ExtensionManagerClient::GetInstance().ConnectServiceExtensionAbility(
        want, ipcConnect_->AsObject(), userId_);
    if (result == OHOS::ERR_OK) {
        if (abilityVersion_ == VERSION_UNKNOWN) {
            GetAblityVerison();
        }
        ipcConnect_->WaitIpcConnect();
    } else {
        NB_LOGE("connect ability fail, error code:%{public}d", result);
    }
    // A connection that came and is lost again is no failure: whoever waits behind it tries for itself.
    if (!ipcConnect_->IsConnected()) {
        ++failedAttempts_;
    }
}

void DriveServiceProxy::DisConnectService()
{
    std::lock_guard<std::mutex> lock(connectMutex_);
    if (ipcConnect_ == nullptr || !ipcConnect_->IsConnected()) {
        NB_LOGE("disconnect get ability manager service fail, ipcconnect is null");
        return;
    }
    const int32_t result =
        OHOS::AAFwk::ExtensionManagerClient::GetInstance().DisconnectAbility(ipcConnect_->AsObject());
    if (result != OHOS::ERR_OK) {
        NB_LOGE("disconnect ability fail, error code:%{public}d", result);
    }
    NB_LOGI("disconnect ability");
    if (result == OHOS::ERR_OK) {
        ipcConnect_->WaitIpcDisconnect();
    }
}

void DriveServiceProxy::GetAblityVerison()
{
    const auto abilityManager = OHOS::SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    if (abilityManager == nullptr) {
        NB_LOGE("load cloudbackup sa failed, samgr is null");
        return;
    }
    const auto bundleObject = abilityManager->GetSystemAbility(OHOS::BUNDLE_MGR_SERVICE_SYS_ABILITY_ID);
    if (bundleObject == nullptr) {
        NB_LOGE("fail to get bundle manager proxy.");
    }
    const auto bundleManager = OHOS::iface_cast<OHOS::AppExecFwk::IBundleMgr>(bundleObject);
    if (bundleManager == nullptr) {
        NB_LOGE("GetSelfBundleName: bundle mgr proxy is nullptr.");
        return;
    }
    OHOS::AppExecFwk::ApplicationInfo info;
    if (!bundleManager->GetApplicationInfo(bundleName_, APPLICATION_INFO_WITH_METADATA, userId_, info)) {
        return;
    }
    for (const auto &[key, customizeData] : info.metaData) {
        for (const auto &entry : customizeData) {
            if (entry.name == "abilityVersion") {
                abilityVersion_ = std::atoi(entry.value.c_str());
                NB_LOGI("get ablity verison:%{public}d", abilityVersion_.load());
                return;
            }
        }
        NB_LOGE("metadata key:%{public}s cannot find abilityVersion", key.c_str());
    }
}

void DriveServiceProxy::SendHelloToCloud()
{
    Json::Value request(Json::objectValue);
    request["function"] = "getAppState";
    std::string replyText;
    const int32_t status = SendData(request, replyText, "", "getAppState", DEFAULT_TIMEOUT);
    if (status != SEND_OK) {
        NB_LOGE("send hello to cloud failed, error code:%{public}d", status);
        return;
    }
    const Json::Value reply = JsonHelper::StringToJson(replyText);
    if (!reply.isObject()) {
        NB_LOGE("send hello to cloud failed, recv data is not object, data:%{public}s", replyText.c_str());
        return;
    }
    const int32_t code = JsonHelper::GetIntFromJson(reply, "code");
    if (code != 0) {
        NB_LOGE("send hello to cloud failed, code is :%{public}d", code);
        return;
    }
    checkAlive_ = JsonHelper::GetIntFromJson(reply, "checkAlive") == 1 ? 1 : 0;
}

void DriveServiceProxy::WakeAllRequests()
{
    if (callbackStub_ != nullptr) {
        callbackStub_->NotifyAllWaitRequest("");
    }
}
} // namespace Nubis
