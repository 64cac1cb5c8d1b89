// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_callback_stub.h"

#include <chrono>
#include <exception>
#include <iterator>
#include <mutex>
#include <utility>

#include <json/reader.h>

#include "json_helper.h"
#include "log.h"
#include "message_parcel_util.h"
#include "string_ex.h"
#include "urgent_scope.h"

namespace Nubis {
namespace {
constexpr int REQUEST_OK = 0;
constexpr int WRONG_TOKEN = 1;
constexpr int REQUEST_FAILED = -1;

bool ParseRequest(const std::string &text, Json::Value &request)
{
    // Made once: it costs more than parsing a small text. Only read afterwards.
    static const auto *builder = new Json::CharReaderBuilder;
    const std::unique_ptr<Json::CharReader> reader(builder->newCharReader());
    if (reader == nullptr) {
        NB_LOGE("json builder new char reader failed");
        return false;
    }
    std::string errors;
    bool parsed = false;
    try {
        parsed = reader->parse(text.data(), text.data() + text.size(), &request, &errors);
    } catch (const std::exception &e) {
        // Nested deeper than the reader goes.
        errors = e.what();
    }
    if (!parsed) {
        NB_LOGE("parse remote request failed, recv :%{public}s, error:%{public}s", text.c_str(), errors.c_str());
    }
    return parsed;
}
} // namespace

DriveCallbackStub::DriveCallbackStub(int32_t userId) : userId_(userId)
{
    reverseHandlers_["onUploadRecordAssets"] = [this](const Json::Value &request, std::string &reply) {
        return OnUploadRecordAssets(request, reply);
    };
}

int DriveCallbackStub::OnRemoteRequest(
    uint32_t, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &)
{
    const std::u16string token = data.ReadInterfaceToken();
    if (token != GetDescriptor()) {
        NB_LOGE("on remote request failed token:%{public}s", OHOS::Str16ToStr8(token).c_str());
        return WRONG_TOKEN;
    }
    std::string replyText;
    const int32_t result = HandleRemoteRequest(MessageParcelUtil::ReadStringFromMessage(data), replyText);
    if (result == REQUEST_OK) {
        MessageParcelUtil::WriteStringToMessage(reply, replyText);
    }
    return result;
}

int32_t DriveCallbackStub::HandleRemoteRequest(const std::string &requestText, std::string &reply)
{
    Json::Value request;
    if (!ParseRequest(requestText, request)) {
        return REQUEST_FAILED;
    }
    if (!JsonHelper::GetStringFromJson(request, "uuid").empty()) {
        return HandleRequestReply(request, requestText, reply);
    }
    return HandleRemoteRequestCallback(request, requestText, reply);
}

int32_t DriveCallbackStub::HandleRequestReply(
    const Json::Value &request, const std::string &requestText, std::string &reply)
{
    const std::string uuid = JsonHelper::GetStringFromJson(request, "uuid");
    if (JsonHelper::GetIntFromJson(request, "code") != 0) {
        NB_LOGE("request uuid:%{public}s reply failed, reply data:%{public}s", uuid.c_str(), requestText.c_str());
    }
    SetRequestReplyResult(uuid, requestText);
    Json::Value answer(Json::objectValue);
    answer["code"] = 0;
    reply = JsonHelper::JsonToString(answer);
    return REQUEST_OK;
}

int32_t DriveCallbackStub::HandleRemoteRequestCallback(
    const Json::Value &request, const std::string &requestText, std::string &reply)
{
    const std::string function = JsonHelper::GetStringFromJson(request, "function");
    if (function.empty()) {
        NB_LOGE("handle remote request failed, no function name, recv data :%{public}s", requestText.c_str());
        return REQUEST_FAILED;
    }
    const auto handler = reverseHandlers_.find(function);
    if (handler == reverseHandlers_.end()) {
        NB_LOGE("handle remote request failed, no function [%{public}s] callback", function.c_str());
        return REQUEST_FAILED;
    }
    // What the handler calls may drop the last reference to this stub.
    const OHOS::sptr<DriveCallbackStub> self(this);
    const UrgentScope urgent;
    try {
        return handler->second(request, reply);
    } catch (const std::exception &e) {
        NB_LOGE("handle remote request failed, function [%{public}s] threw:%{public}s", function.c_str(), e.what());
    } catch (...) {
        NB_LOGE("handle remote request failed, function [%{public}s] threw", function.c_str());
    }
    return REQUEST_FAILED;
}

void DriveCallbackStub::AddRequest(const std::string &uuid)
{
    WaitingRequest request{std::make_shared<ffrt::promise<std::string>>()};
    std::lock_guard<ffrt::mutex> lock(requestMutex_);
    waitingRequests_[uuid] = std::move(request);
}

void DriveCallbackStub::RemoveRequest(const std::string &uuid)
{
    std::lock_guard<ffrt::mutex> lock(requestMutex_);
    waitingRequests_.erase(uuid);
}

int32_t DriveCallbackStub::WaitRequestReply(const std::string &uuid, std::string &reply, int timeout)
{
    std::shared_ptr<ffrt::promise<std::string>> waiting;
    {
        std::lock_guard<ffrt::mutex> lock(requestMutex_);
        const auto found = waitingRequests_.find(uuid);
        if (found == waitingRequests_.end()) {
            NB_LOGE("can not find request uuid:%{public}s", uuid.c_str());
            return WAIT_UNKNOWN;
        }
        found->second.isWaitedFor = true;
        waiting = found->second.reply;
    }
    auto future = waiting->get_future();
    auto status = ffrt::future_status::ready;
    if (timeout > 0) {
        status = future.wait_for(std::chrono::seconds(timeout));
    } else {
        future.wait();
    }
    int32_t result = WAIT_TIMED_OUT;
    if (status == ffrt::future_status::ready) {
        reply = future.get();
        result = WAIT_REPLIED;
    } else if (status == ffrt::future_status::timeout) {
        NB_LOGE("wait request uuid:%{public}s timeout, wait time:%{public}d", uuid.c_str(), timeout);
    } else {
        NB_LOGE("wait request uuid:%{public}s failed, unknown future status", uuid.c_str());
    }
    RemoveRequest(uuid);
    return result;
}

void DriveCallbackStub::SetRequestReplyResult(const std::string &uuid, const std::string &text)
{
    std::shared_ptr<ffrt::promise<std::string>> waiting;
    {
        std::lock_guard<ffrt::mutex> lock(requestMutex_);
        const auto found = waitingRequests_.find(uuid);
        if (found == waitingRequests_.end() || found->second.isEnded) {
            NB_LOGE("set request result failed, can not find request uuid:%{public}s", uuid.c_str());
            return;
        }
        found->second.isReplied = true;
        waiting = found->second.reply;
    }
    // Without the mutex, or whoever is woken would wait for it at once.
    waiting->set_value(text);
}

void DriveCallbackStub::NotifyAllWaitRequest(const std::string &text)
{
    std::lock_guard<ffrt::mutex> lock(requestMutex_);
    for (auto next = waitingRequests_.begin(); next != waitingRequests_.end();) {
        auto &[uuid, request] = *next;
        if (!request.isEnded) {
            NB_LOGE("notify all wait request uuid:%{public}s", uuid.c_str());
        }
        if (!request.isEnded && !request.isReplied) {
            request.reply->set_value(text);
        }
        request.isEnded = true;
        next = request.isWaitedFor ? waitingRequests_.erase(next) : std::next(next);
    }
}
} // namespace Nubis
