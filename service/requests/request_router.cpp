// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/request_router.h"

#include <functional>
#include <map>
#include <utility>

#include "records/limits.h"
#include "requests/handlers.h"
#include "util/encoding.h"
#include "util/failure.h"
#include "util/json_util.h"
#include "util/log.h"

namespace DriveService {

namespace {

using Handler = std::function<Reply(ServiceContext &, Request &)>;

// The mixed case is the protocol's.
const std::map<std::string, Handler> &Handlers()
{
    static const auto *handlers = new std::map<std::string, Handler>{
        {"GetCloudUserInfo", GetCloudUserInfo},
        {"getAppState", GetAppState},
        {"getSysParameters", GetSysParameters},
        {"getReportInfo", GetReportInfo},
        {"getSettings", GetSettings},
        {"setSetting", SetSetting},
        {"exportData", ExportData},
        {"importData", ImportData},
        {"checkData", CheckData},
        {"GetCloudAppInfo", GetCloudAppInfo},
        {"GetCloudAppSwitches", GetCloudAppSwitches},
        {"getCloudAppBriefInfo", GetCloudAppBriefInfo},
        {"getAppConfigParams", GetAppConfigParams},
        {"getRecordIdRules", GetRecordIdRules},
        {"getServiceKey", GetServiceKey},
        {"saveRecords", SaveRecords},
        {"deleteRecords", DeleteRecords},
        {"modifyRecords", ModifyRecords},
        {"copyRecords", CopyRecords},
        {"setPreShared", SetPreShared},
        {"getCommonKey", GetCommonKey},
        {"getAccessToken", GetAccessToken},
        {"getLock", GetLock},
        {"deleteLock", DeleteLock},
        {"getLockState", GetLockState},
        {"fetchRecordsWithQuery", FetchRecordsWithQuery},
        {"fetchRecordWithId", FetchRecordWithId},
        {"fetchRecordWithIds", FetchRecordWithIds},
        {"batchDownloadRecords", BatchDownloadRecords},
        {"fetchAssetStatusWithId", FetchAssetStatusWithId},
        {"batchCreateAsset", BatchCreateAsset},
        {"updateAssetRevision", UpdateAssetRevision},
        {"fetchDatabaseChanges", FetchDatabaseChanges},
        {"getStartCursor", GetStartCursor},
        {"saveSubscription", SaveSubscription},
        {"deleteSubscription", DeleteSubscription},
        {"changesNotify", ChangesNotify},
        {"batchSaveSubscription", BatchSaveSubscription},
        {"batchDeleteSubscription", BatchDeleteSubscription},
        {"getSubscriptions", GetSubscriptions},
    };
    return *handlers;
}

std::string WriteReply(Reply reply, const std::string &uuid)
{
    if (!uuid.empty()) {
        reply["uuid"] = uuid;
    }
    return reply.Write();
}

std::string FailureReply(const Failure &failure, const std::string &uuid)
{
    Json::Value reply(Json::objectValue);
    reply["code"] = static_cast<int>(failure.code);
    reply["error"] = failure.ToJson();
    return WriteReply(std::move(reply), uuid);
}

// The text of what `answer` returns, or of why it threw; an empty uuid is left out.
template <typename Answer>
std::string ReplyOf(const Answer &answer, const std::string &uuid) noexcept
{
    try {
        std::string reply = WriteReply(answer(), uuid);
        if (reply.size() <= MAX_PARCEL_TEXT) {
            return reply;
        }
        return FailureReply(Failure(ErrorCode::REPLY_TOO_LARGE,
                                "the reply has " + std::to_string(reply.size()) + " bytes; ask for less at a time"),
            uuid);
    } catch (const RequestError &refusal) {
        return FailureReply(refusal.GetFailure(), uuid);
    } catch (const StoreError &failure) {
        LogError(std::string("request failed: ") + failure.what());
        return FailureReply(Failure(ErrorCode::STORE_FAILED, failure.what()), uuid);
    } catch (const std::exception &failure) {
        LogError(std::string("request failed: ") + failure.what());
        return FailureReply(Failure(ErrorCode::INTERNAL_ERROR, failure.what()), uuid);
    }
}

} // namespace

RequestRouter::RequestRouter(ServiceContext context) : context_(std::move(context))
{}

Reply RequestRouter::Dispatch(Json::Value &&json, const std::string &deviceName, const ClientCallback *callback)
{
    if (!json.isObject()) {
        throw RequestError(ErrorCode::MALFORMED_REQUEST, "a request is an object, came " + DescribeJson(json));
    }
    // It is the peer's word, and stands in every record of its.
    Request request(std::move(json), IsUtf8(deviceName) ? Excerpt(deviceName) : "", callback);
    std::string function = request.NonEmptyText("function");
    auto handler = Handlers().find(function);
    if (handler == Handlers().end()) {
        throw RequestError(ErrorCode::UNKNOWN_FUNCTION,
            "this service does not answer the function \"" + Excerpt(function) + "\"", "function");
    }
    return handler->second(context_, request);
}

std::string RequestRouter::Answer(
    const std::string &text, const std::string &deviceName, const ClientCallback *callback) noexcept
{
    auto answer = [&] {
        Json::Value json;
        std::string error;
        if (!ParseForeignJson(text, json, error)) {
            throw RequestError(ErrorCode::MALFORMED_REQUEST, "the request is no JSON: " + error);
        }
        return Dispatch(std::move(json), deviceName, callback);
    };
    return ReplyOf(answer, "");
}

std::string RequestRouter::Refuse(const Failure &failure) noexcept
{
    return ReplyOf([&failure]() -> Reply { throw RequestError(failure); }, "");
}

std::string RequestRouter::AnswerWithUuid(
    Json::Value &&json, const std::string &uuid, const std::string &deviceName, const ClientCallback *callback) noexcept
{
    return ReplyOf([&] { return Dispatch(std::move(json), deviceName, callback); }, uuid);
}

} // namespace DriveService
