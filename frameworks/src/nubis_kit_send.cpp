// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nubis_kit.h"

#include <exception>

#include <json/value.h>

#include "drive_service_proxy.h"
#include "json_helper.h"
#include "log.h"
#include "uuid_helper.h"

// The envelope of requests and the judging of replies.
namespace Nubis {
namespace {
constexpr const char *PROTOCOL_VERSION = "5.3.1.300";
} // namespace

void NubisNative::SetSaVersion(int saVersion)
{
    saVersion_ = saVersion;
}

NBError NubisNative::SendDataToCloudSrv(const Json::Value &request, Json::Value &reply, int timeout)
{
    Json::Value copy(request);
    return SendInPlace(copy, reply, timeout);
}

NBError NubisNative::SendInPlace(Json::Value &request, Json::Value &reply, int timeout)
{
    if (proxy_ == nullptr) {
        return NBError(NB_LOCAL_NOT_CONNECTED);
    }
    if (!request.isObject() && !request.isNull()) {
        return NBError(NB_LOCAL_BAD_DATA);
    }
    std::string traceId = JsonHelper::GetStringFromJson(request, "traceId");
    if (traceId.empty()) {
        traceId = UuidHelper::GenerateTraceId(GetCloudSyncDemon());
        request["traceId"] = traceId;
    }
    request["nbVersion"] = PROTOCOL_VERSION;
    request["saVersion"] = saVersion_.load();
    const std::string function = JsonHelper::GetStringFromJson(request, "function");
    std::string replyText;
    const int32_t status = proxy_->SendData(request, replyText, traceId, function, timeout);
    if (status != DriveServiceProxy::SEND_OK) {
        return NBError(status == DriveServiceProxy::SEND_NOT_CONNECTED ? NB_LOCAL_NOT_CONNECTED : NB_LOCAL_IPC_FAILED);
    }
    return JudgeReply(replyText, traceId, reply);
}

NBError NubisNative::JudgeReply(const std::string &replyText, const std::string &traceId, Json::Value &reply)
{
    if (replyText.empty()) {
        NB_LOGE("send data to cloud service recv data is empty");
        return NBError(NB_LOCAL_EMPTY_REPLY);
    }
    reply = JsonHelper::StringToJson(replyText);
    // An array or a scalar takes no member; it is left to the operation, which misses its own members in it.
    if (reply.isObject() || reply.isNull()) {
        reply["traceId"] = traceId;
    }
    NBError error;
    const int code = JsonHelper::GetIntFromJson(reply, "code");
    if (code == 0) {
        return error;
    }
    const Json::Value *serverError = JsonHelper::FindMember(reply, "error");
    if (serverError == nullptr) {
        NB_LOGE("recv unexpected server response, recv:%{public}s", replyText.c_str());
        error.SetLocalError(NB_LOCAL_UNEXPECTED_REPLY);
    } else {
        error.ParseErrorFromJson(*serverError, code);
    }
    return error;
}
} // namespace Nubis
