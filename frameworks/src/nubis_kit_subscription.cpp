// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nubis_kit.h"

#include <utility>

#include <json/value.h>

#include "exchange.h"
#include "json_helper.h"
#include "log.h"
#include "start_task.h"

// Subscriptions to the changes of several containers at once.
namespace Nubis {
namespace {
// A batch may take as long as the service needs.
constexpr int BATCH_TIMEOUT = -1;

// What the log says about replies that cannot be read.
struct BatchTexts {
    const char *noNode;
    const char *noArray;
};

constexpr BatchTexts SAVE_TEXTS{"batch save subscription failed, no subscriptions node",
    "batch save subscription failed, subscriptions is not array"};
constexpr BatchTexts DELETE_TEXTS{"batch del subscription failed, no subscriptions node",
    "batch del subscription failed, subscriptions is not array"};

Json::Value MakeBatchRequest(const char *function)
{
    Json::Value request(Json::objectValue);
    request["function"] = function;
    request["subscriptions"] = Json::Value(Json::arrayValue);
    return request;
}

Json::Value MakeItem(const NBContainerSubscription &subscription)
{
    Json::Value item(Json::objectValue);
    item["bundleName"] = subscription.bundleName;
    item["containerName"] = subscription.containerName;
    return item;
}

void ReadBatchReply(const Json::Value &reply, const BatchTexts &texts,
    std::vector<NBContainerSubscriptionResult> &results, NBError &error)
{
    const Json::Value *subscriptions = JsonHelper::FindMember(reply, "subscriptions");
    if (subscriptions == nullptr || !subscriptions->isArray()) {
        NB_LOGE("%{public}s", subscriptions == nullptr ? texts.noNode : texts.noArray);
        error.SetLocalError(NB_LOCAL_BAD_DATA);
        return;
    }
    for (const Json::Value &item : *subscriptions) {
        NBContainerSubscriptionResult result;
        result.ParseFromJsonValue(item);
        results.push_back(std::move(result));
    }
}

template <typename Send>
void RunBatch(Send &&send, const BatchTexts &texts, std::shared_ptr<NBContext> context,
    const NBBatchSubscriptionCallback &callback)
{
    std::vector<NBContainerSubscriptionResult> results;
    const NBError error = Exchange(std::forward<Send>(send),
        [&](const Json::Value &reply, NBError &result) { ReadBatchReply(reply, texts, results, result); });
    if (error.HasError()) {
        results.clear();
    }
    if (callback) {
        callback(std::move(context), results, error);
    }
}
} // namespace

void NBContainerSubscriptionResult::ParseFromJsonValue(const Json::Value &item)
{
    const int code = JsonHelper::GetIntFromJson(item, "code");
    bundleName = JsonHelper::GetStringFromJson(item, "bundleName");
    containerName = JsonHelper::GetStringFromJson(item, "containerName");
    if (code == 0) {
        id = JsonHelper::GetStringFromJson(item, "id");
        expirationTime = JsonHelper::GetInt64FromJson(item, "expirationTime");
        return;
    }
    const Json::Value *serverError = JsonHelper::FindMember(item, "error");
    if (serverError != nullptr) {
        error.ParseErrorFromJson(*serverError, code);
    } else {
        error.SetLocalError(NB_LOCAL_UNEXPECTED_REPLY);
    }
}

void NubisNative::AddNotificationTarget(Json::Value &subscription) const
{
    if (GetCloudSyncDemon() == NB_SYNC_DEMON_NONE) {
        return;
    }
    subscription["saName"] = GetCloudSyncSaName();
    subscription["signVersion"] = SIGN_VERSION;
    subscription["keyId"] = GetPushKeyId();
}

void NubisNative::BatchSaveSubscription(std::shared_ptr<NBContext> context,
    std::vector<NBContainerSubscription> &subscriptions, NBBatchSubscriptionCallback callback)
{
    Json::Value request = MakeBatchRequest("batchSaveSubscription");
    for (const auto &subscription : subscriptions) {
        Json::Value item = MakeItem(subscription);
        item["expirationTime"] = static_cast<Json::Int64>(subscription.expirationTime);
        AddNotificationTarget(item);
        request["subscriptions"].append(std::move(item));
    }
    StartTask(&NubisNative::InnerBatchSaveSubscription, shared_from_this(), std::move(context), std::move(request),
        std::move(callback));
}

void NubisNative::InnerBatchSaveSubscription(
    std::shared_ptr<NBContext> context, Json::Value request, NBBatchSubscriptionCallback callback)
{
    RunBatch([&](Json::Value &reply) { return SendInPlace(request, reply, BATCH_TIMEOUT); }, SAVE_TEXTS,
        std::move(context), callback);
}

void NubisNative::BatchDeleteSubscription(std::shared_ptr<NBContext> context,
    std::vector<NBContainerSubscription> &subscriptions, NBBatchSubscriptionCallback callback)
{
    Json::Value request = MakeBatchRequest("batchDeleteSubscription");
    for (const auto &subscription : subscriptions) {
        Json::Value item = MakeItem(subscription);
        item["id"] = subscription.id;
        request["subscriptions"].append(std::move(item));
    }
    StartTask(&NubisNative::InnerBatchDelSubscription, shared_from_this(), std::move(context), std::move(request),
        std::move(callback));
}

void NubisNative::InnerBatchDelSubscription(
    std::shared_ptr<NBContext> context, Json::Value request, NBBatchSubscriptionCallback callback)
{
    RunBatch([&](Json::Value &reply) { return SendInPlace(request, reply, BATCH_TIMEOUT); }, DELETE_TEXTS,
        std::move(context), callback);
}
} // namespace Nubis
