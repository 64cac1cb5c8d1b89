// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_container.h"

#include <utility>

#include <json/value.h>

#include "exchange.h"
#include "json_helper.h"
#include "log.h"
#include "nubis_kit.h"
#include "start_task.h"

// Subscriptions to the changes of one container.
namespace Nubis {
namespace {
// In seconds.
constexpr int SUBSCRIPTION_TIMEOUT = 60;
} // namespace

Json::Value NBContainer::MakeSubscriptionRequest(const char *function) const
{
    Json::Value request(Json::objectValue);
    request["function"] = function;
    request["bundleName"] = bundleName_;
    request["containerName"] = containerName_;
    request["syncDemon"] = std::to_string(syncType_);
    return request;
}

Json::Value NBContainer::MakeSubscriptionRequest(const char *function, const std::string &id) const
{
    Json::Value request = MakeSubscriptionRequest(function);
    request["id"] = id;
    return request;
}

template <typename ReadReply>
NBError NBContainer::Exchange(const Json::Value &request, ReadReply &&readReply)
{
    return Nubis::Exchange(
        [&](Json::Value &reply) { return nubis_->SendDataToCloudSrv(request, reply, SUBSCRIPTION_TIMEOUT); },
        std::forward<ReadReply>(readReply));
}

void NBContainer::SaveSubscription(
    std::shared_ptr<NBContext> context, NBSubscription &subscription, NBSubscriptionCallback callback)
{
    Json::Value request = MakeSubscriptionRequest("saveSubscription");
    request["expirationTime"] = static_cast<Json::Int64>(subscription.expirationTime);
    if (nubis_ != nullptr) {
        nubis_->AddNotificationTarget(request);
    }
    AddTraceId(context, request);
    StartTask(&NBContainer::InnerSaveSubscription, shared_from_this(), std::move(context), std::move(request),
        std::move(callback));
}

void NBContainer::InnerSaveSubscription(
    std::shared_ptr<NBContext> context, Json::Value request, NBSubscriptionCallback callback)
{
    NBSubscriptionResult result;
    if (nubis_ == nullptr) {
        NB_LOGE("save subscription failed, nubis is null");
        result.error.SetLocalError(NB_LOCAL_KIT_GONE);
    } else {
        result.error = Exchange(request, [&result](const Json::Value &reply, NBError &) {
            result.id = JsonHelper::GetStringFromJson(reply, "id");
            result.expirationTime = JsonHelper::GetInt64FromJson(reply, "expirationTime");
        });
    }
    if (callback) {
        callback(std::move(context), shared_from_this(), result);
    }
}

void NBContainer::DeleteSubscription(std::shared_ptr<NBContext> context, std::string id, NBErrorCallback callback)
{
    Json::Value request = MakeSubscriptionRequest("deleteSubscription", id);
    AddTraceId(context, request);
    StartTask(&NBContainer::InnerDelSubscription, shared_from_this(), std::move(context), std::move(request),
        std::move(callback));
}

void NBContainer::InnerDelSubscription(
    std::shared_ptr<NBContext> context, Json::Value request, NBErrorCallback callback)
{
    NBError error;
    if (nubis_ == nullptr) {
        NB_LOGE("del subscription failed, nubis is null");
        error.SetLocalError(NB_LOCAL_KIT_GONE);
    } else {
        error = Exchange(request, [](const Json::Value &, NBError &) {});
    }
    if (callback) {
        callback(std::move(context), error);
    }
}

void NBContainer::ChangesNotify(std::shared_ptr<NBContext> context, std::string id, NBErrorCallback callback)
{
    Json::Value request = MakeSubscriptionRequest("changesNotify", id);
    AddTraceId(context, request);
    StartTask(&NBContainer::InnerChangeNotify, shared_from_this(), std::move(context), std::move(request),
        std::move(callback));
}

void NBContainer::InnerChangeNotify(std::shared_ptr<NBContext> context, Json::Value request, NBErrorCallback callback)
{
    NBError error;
    if (nubis_ == nullptr) {
        NB_LOGE("change notify failed, nubis is null");
        error.SetLocalError(NB_LOCAL_KIT_GONE);
    } else {
        error = Exchange(request, [](const Json::Value &, NBError &) {});
    }
    if (callback) {
        callback(std::move(context), error);
    }
}
} // namespace Nubis
