// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_database.h"

#include <array>
#include <optional>
#include <utility>

#include <json/value.h>

#include "ev_utils.h"
#include "ffrt_inner.h"
#include "json_helper.h"
#include "log.h"
#include "nb_container.h"
#include "nb_report.h"
#include "nubis_kit.h"
#include "uuid_helper.h"

// The database object and the way of its requests to the kit.
namespace Nubis {
namespace {
// Takes the envelope members that a send adds out of the request again. That spares a copy of the request, which may
// carry thousands of records.
class EnvelopeGuard {
public:
    explicit EnvelopeGuard(Json::Value &request) : request_(request)
    {
        for (size_t i = 0; i < KEYS.size(); ++i) {
            const Json::Value *member = JsonHelper::FindMember(request_, KEYS[i]);
            if (member != nullptr) {
                before_[i] = *member;
            }
        }
    }
    ~EnvelopeGuard()
    {
        if (!request_.isObject()) {
            return;
        }
        for (size_t i = 0; i < KEYS.size(); ++i) {
            if (before_[i].has_value()) {
                request_[KEYS[i]] = std::move(*before_[i]);
            } else {
                request_.removeMember(KEYS[i]);
            }
        }
    }
    EnvelopeGuard(const EnvelopeGuard &) = delete;
    EnvelopeGuard &operator=(const EnvelopeGuard &) = delete;

private:
    static constexpr std::array<const char *, 4> KEYS = {"traceId", "nbVersion", "saVersion", "uuid"};

    Json::Value &request_;
    std::array<std::optional<Json::Value>, KEYS.size()> before_;
};
} // namespace

NBDatabase::NBDatabase(std::shared_ptr<NBContainer> container, NBDatabaseScope scope, int syncType)
    : container_(container), scope_(scope), syncType_(syncType), serviceKeyMutex_(std::make_unique<ffrt::mutex>())
{
    if (container == nullptr) {
        return;
    }
    bundleName_ = container->GetBundleName();
    containerName_ = container->GetContainerName();
    const auto kit = container->GetNubis();
    if (kit == nullptr) {
        return;
    }
    // Filled aside: the kit takes its catalogue lock, under which it updates the schemas of other databases.
    NBSchema schema;
    kit->GetSchemaInfo(bundleName_, containerName_, schema, syncType_);
    std::unique_lock<std::shared_mutex> lock(schemaMutex_);
    schema_ = std::move(schema);
}

NBDatabase::~NBDatabase() = default;

void NBDatabase::Init()
{
    if (scope_ != NB_DATABASE_PRIVATE) {
        return;
    }
    GetRecordIdRules();
    std::lock_guard<ffrt::mutex> lock(*serviceKeyMutex_);
    serviceKey_ = std::make_shared<UserKey>();
    FetchServiceKey();
}

void NBDatabase::Release()
{
    NB_LOGI("database release, will stop upload task");
    CleanUserInfo();
    StopUploadTask();
}

int NBDatabase::GetUserId() const
{
    const auto kit = GetKit();
    return kit == nullptr ? -1 : kit->GetUserId();
}

std::string NBDatabase::GetAppBundleName() const
{
    return bundleName_;
}

std::string NBDatabase::GetContainerName() const
{
    return containerName_;
}

std::string NBDatabase::GetLockSessionId() const
{
    std::lock_guard<std::mutex> lock(lockSessionMutex_);
    return lockSessionId_;
}

NBCloudSyncDemon NBDatabase::GetNubisSyncDemon() const
{
    const auto kit = GetKit();
    return kit == nullptr ? NB_SYNC_DEMON_NONE : kit->GetCloudSyncDemon();
}

std::shared_ptr<NBReport> NBDatabase::GetReport() const
{
    return std::make_shared<NBReport>(GetUserId(), GetNubisSyncDemon());
}

void NBDatabase::CleanUserInfo()
{
    fetched_ = 0;
    std::lock_guard<std::mutex> lock(lockSessionMutex_);
    lockSessionId_.clear();
}

void NBDatabase::StopUploadTask()
{
    NB_LOGI("stop upload task");
    stopUpload_.exchange(true);
}

bool NBDatabase::ResetStopUploadFlag()
{
    return stopUpload_.exchange(false);
}

std::shared_ptr<NBAssetsDownloader> NBDatabase::GetAssetsDownloader()
{
    return nullptr;
}

std::shared_ptr<NBAssetReadSession> NBDatabase::NewAssetReadSession(std::string, std::string, std::string, std::string)
{
    return nullptr;
}

void NBDatabase::UpdateSchema(const NBSchema &schema)
{
    {
        std::unique_lock<std::shared_mutex> lock(schemaMutex_);
        schema_ = schema;
    }
    NB_LOGI("update schema version:%{public}d", schema.version);
}

std::shared_ptr<NubisNative> NBDatabase::GetKit() const
{
    const auto container = container_.lock();
    return container == nullptr ? nullptr : container->GetNubis();
}

Json::Value NBDatabase::MakeRequest(const char *function) const
{
    Json::Value request(Json::objectValue);
    request["function"] = function;
    request["bundleName"] = bundleName_;
    request["containerName"] = containerName_;
    return request;
}

Json::Value NBDatabase::MakeRecordRequest(const char *function) const
{
    Json::Value request = MakeRequest(function);
    request["lockSessionId"] = GetLockSessionId();
    request["databaseType"] = static_cast<int>(scope_);
    return request;
}

void NBDatabase::AddTraceId(const std::shared_ptr<NBContext> &context, Json::Value &request) const
{
    if (context == nullptr) {
        return;
    }
    std::string traceId = context->GetRequestTraceId();
    std::string prepareTraceId = context->GetPrepareTarceId();
    const NBCloudSyncDemon demon = GetNubisSyncDemon();
    request["traceId"] = traceId.empty() ? UuidHelper::GenerateTraceId(demon) : std::move(traceId);
    request["prepareTraceId"] = prepareTraceId.empty() ? UuidHelper::GenerateTraceId(demon) : std::move(prepareTraceId);
}

NBError NBDatabase::SendDataToCloudSrv(Json::Value &request, Json::Value &reply, int timeout)
{
    if (!request.isObject() && !request.isNull()) {
        return NBError(NB_LOCAL_BAD_DATA);
    }
    request["syncDemon"] = std::to_string(GetNubisSyncDemon());
    // Kept until the end: a failure that comes after the container was released is still reported for its user.
    const auto container = container_.lock();
    const auto kit = container == nullptr ? nullptr : container->GetNubis();
    if (kit == nullptr) {
        return NBError(NB_LOCAL_EMPTY_REPLY);
    }
    const EnvelopeGuard guard(request);
    NBError error = kit->SendInPlace(request, reply, timeout);
    ReportOmRecordResult(request, reply, reply, error);
    return error;
}

void NBDatabase::ReportOmRecordResult(
    const Json::Value &request, const Json::Value &reply, const Json::Value &replyRecord, const NBError &result) const
{
    if (!result.HasError()) {
        return;
    }
    const auto evUtils = EvUtils::GetInstance(GetUserId());
    if (evUtils == nullptr) {
        return;
    }
    const ReportParam param = EvUtils::MakeReportParam(JsonHelper::GetStringFromJson(reply, "traceId"), bundleName_,
        JsonHelper::GetStringFromJson(request, "function"), result.GetReportErrorCode(), result.GetErrorMsg());
    evUtils->OmReport(
        param, JsonHelper::JsonToString(replyRecord), JsonHelper::GetStringFromJson(request, "prepareTraceId"), {});
}
} // namespace Nubis
