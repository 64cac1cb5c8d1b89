// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "ev_utils.h"

#include <map>
#include <mutex>
#include <new>

#include <json/value.h>

#include "ev_client_core_inner_api.h"
#include "json_helper.h"
#include "log.h"
#include "nb_error.h"
#include "nubis_kit.h"
#include "urgent_scope.h"

namespace Nubis {
namespace {
constexpr const char *APP_ID = "com.orvane.tyra.aerostash";
constexpr const char *EVENT_ID = "CloudDrive";
constexpr int32_t EVENT_TYPE_OM = 1;
constexpr int32_t EVENT_TYPE_OP = 2;
constexpr int REPORT_INFO_TIMEOUT = 60;
constexpr const char *ALBUM_PN = "cloudalbum";
constexpr const char *GALLERY_VERSION = "5.3.1.300";

std::shared_ptr<EvCloud::EventTypeConfig> NewEventTypeConfig(
    int32_t eventType, const std::string &reportUrl, const EvUtils::Fields &reportParams)
{
    std::shared_ptr<EvCloud::EventTypeConfig> config(new (std::nothrow) EvCloud::EventTypeConfig);
    if (config != nullptr) {
        config->eventType = eventType;
        config->reportUrl = reportUrl;
        config->reportParams = reportParams;
    }
    return config;
}
} // namespace

EvUtils::EvUtils(int userId) : instanceTag_("NubisSDK_" + std::to_string(userId)), userId_(userId)
{}

std::shared_ptr<EvUtils> EvUtils::GetInstance(int userId)
{
    static auto *mutex = new std::mutex;
    static auto *instances = new std::map<int, std::shared_ptr<EvUtils>>;
    std::lock_guard<std::mutex> lock(*mutex);
    auto found = instances->find(userId);
    if (found != instances->end()) {
        return found->second;
    }
    std::shared_ptr<EvUtils> instance(new (std::nothrow) EvUtils(userId));
    if (instance != nullptr) {
        instances->emplace(userId, instance);
    }
    return instance;
}

void EvUtils::SetCloudUserId(const std::string &cloudUserId)
{
    {
        std::lock_guard<ffrt::mutex> lock(mutex_);
        if (cloudUserId_ != cloudUserId) {
            cloudUserId_ = cloudUserId;
            isInit_ = false;
        }
    }
    Init();
}

void EvUtils::ClearCloudUserId()
{
    std::lock_guard<ffrt::mutex> lock(mutex_);
    cloudUserId_.clear();
    isInit_ = false;
}

std::string EvUtils::GetCloudUserId()
{
    std::lock_guard<ffrt::mutex> lock(mutex_);
    return cloudUserId_;
}

bool EvUtils::Init()
{
    if (isInit_) {
        return true;
    }
    std::lock_guard<ffrt::mutex> lock(mutex_);
    // Many requests fail at once when the cloud does; the first reporter has configured for those that waited here.
    if (isInit_) {
        return true;
    }
    if (cloudUserId_.empty()) {
        NB_LOGD("ev init failed, cloud user is empty");
        return false;
    }
    int32_t saId = 0;
    std::string dbPath;
    if (!GetSaIdAndDbPath(saId, dbPath)) {
        return false;
    }
    if (reportParams_.empty() && !GetReportInfo()) {
        NB_LOGE("ev init failed, get report info failed");
        return false;
    }
    // The parameters may have been fetched for an earlier user.
    reportParams_["userId"] = cloudUserId_;
    return Configure(saId, dbPath);
}

bool EvUtils::Configure(int32_t saId, const std::string &dbPath)
{
    auto omConfig = NewEventTypeConfig(EVENT_TYPE_OM, reportUrl_, reportParams_);
    auto opConfig = NewEventTypeConfig(EVENT_TYPE_OP, reportUrl_, reportParams_);
    if (omConfig == nullptr || opConfig == nullptr) {
        NB_LOGE("ev init failed, new event type config failed");
        return false;
    }
    EvCloud::ConfigOptions options;
    options.instanceTag = instanceTag_;
    options.appId = APP_ID;
    options.eventTypeConfigs = {omConfig, opConfig};
    options.databasePath = dbPath;
    options.serviceId = saId;
    int32_t result = EvCloud::EvClientCoreInnerApi::SetConfigOptions(options);
    if (result != 0) {
        NB_LOGE("ev init failed, set config options failed, error code:%{public}d", result);
        return false;
    }
    isInit_ = true;
    return true;
}

bool EvUtils::GetSaIdAndDbPath(int32_t &saId, std::string &dbPath) const
{
    auto nubis = NubisNative::GetInstance(userId_);
    if (nubis == nullptr) {
        return false;
    }
    switch (nubis->GetCloudSyncDemon()) {
        case NB_SYNC_DEMON_DATA:
            saId = 1301;
            dbPath = "/data/service/el1/public/database/distributeddata/";
            return true;
        case NB_SYNC_DEMON_FILE:
            saId = 5204;
            dbPath = "/data/service/el2/" + std::to_string(userId_) + "/hmdfs/cache/cloud_cache/";
            return true;
        case NB_SYNC_DEMON_ASSET:
            saId = 8100;
            dbPath = "/data/service/el2/" + std::to_string(userId_) + "/asset_service/";
            return true;
        default:
            NB_LOGE("ev init failed, nubis demon is unkown");
            return false;
    }
}

bool EvUtils::GetReportInfo()
{
    auto nubis = NubisNative::GetInstance(userId_);
    if (nubis == nullptr) {
        return false;
    }
    Json::Value request;
    request["function"] = "getReportInfo";
    Json::Value reply;
    {
        // Sent with the mutex held, for which requests on behalf of the service may wait.
        const UrgentScope urgent;
        if (nubis->SendDataToCloudSrv(request, reply, REPORT_INFO_TIMEOUT).HasError()) {
            return false;
        }
    }
    if (!reply.isObject()) {
        NB_LOGE("get report info failed, reply is not object");
        return false;
    }
    reportUrl_ = JsonHelper::GetStringFromJson(reply, "reportUrl");
    if (reportUrl_.empty()) {
        NB_LOGE("get report info failed, report url is empty");
        return false;
    }
    const Json::Value *params = JsonHelper::FindMember(reply, "reportParam");
    if (params == nullptr || !params->isObject()) {
        NB_LOGE("get report info failed, no report param  or report param is not object");
        return false;
    }
    for (auto param = params->begin(); param != params->end(); ++param) {
        if (param->isString()) {
            reportParams_[param.name()] = param->asString();
        }
    }
    reportParams_["userId"] = cloudUserId_;
    return true;
}

ReportParam EvUtils::MakeReportParam(const std::string &traceId, const std::string &bundleName,
    const std::string &eventName, const std::string &errorCode, const std::string &errorMsg)
{
    return {traceId, bundleName, eventName, errorCode, errorMsg};
}

std::string EvUtils::GetOmPnByBundleName(const std::string &bundleName)
{
    static const auto *pns = new std::map<std::string, std::string>{
        {"com.ohos.photos", ALBUM_PN},
        {"com.orvane.tyra.filemanager", "syncdisk"},
        {"com.ohos.contactsdataability", "sync_contact"},
        {"com.orvane.tyra.notepad", "sync_notepad"},
        {"com.orvane.tyra.calendardata", "sync_calendar"},
        {"com.orvane.tyra.browser", "sync_browser"},
        {"com.orvane.tyra.jotpad", "sync_jotpad"},
        {"common", "common"},
    };
    auto found = pns->find(bundleName);
    return found != pns->end() ? found->second : "sync_" + bundleName;
}

EvUtils::Fields EvUtils::MakeFields(
    const ReportParam &param, const std::string &pn, const std::string &text, const std::string &prepareTraceId)
{
    return {
        {"pn", pn},
        {"operationType", param.traceId.substr(0, param.traceId.find('_'))},
        {"business_id", param.eventName},
        {"traceID", param.traceId},
        {"prepareTraceId", prepareTraceId},
        {"userID", GetCloudUserId()},
        {"extraInfo", text},
    };
}

void EvUtils::OmReport(
    const ReportParam &param, const std::string &text, const std::string &prepareTraceId, const Fields &extras)
{
    if (!Init()) {
        return;
    }
    const std::string pn = GetOmPnByBundleName(param.bundleName);
    Fields fields = MakeFields(param, pn, text, prepareTraceId);
    if (pn == ALBUM_PN) {
        fields["error_code"] = param.errorCode;
        fields["error_msg"] = param.errorMsg;
        fields["galleryVersion"] = GALLERY_VERSION;
    } else {
        fields["returnCode"] = param.errorCode;
        fields["errorReason"] = param.errorMsg;
    }
    fields.insert(extras.begin(), extras.end());
    int32_t result = EvCloud::EvClientCoreInnerApi::OnEvent(instanceTag_, EVENT_ID, EVENT_TYPE_OM, fields);
    if (result != 0) {
        NB_LOGE("om report failed, ev on event failed, error code:%{public}d", result);
    }
}

void EvUtils::OpReport(
    const ReportParam &param, const std::string &text, const std::string &prepareTraceId, const Fields &extras)
{
    if (!Init()) {
        return;
    }
    Fields fields = MakeFields(param, GetOmPnByBundleName(param.bundleName), text, prepareTraceId);
    fields["returnCode"] = param.errorCode;
    fields["errorReason"] = param.errorMsg;
    fields.insert(extras.begin(), extras.end());
    int32_t result = EvCloud::EvClientCoreInnerApi::OnEvent(instanceTag_, EVENT_ID, EVENT_TYPE_OP, fields);
    if (result != 0) {
        NB_LOGE("op report failed, ev on event failed, error code:%{public}d", result);
    }
}
} // namespace Nubis
