// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "push/notifier.h"
#include "records/limits.h"
#include "util/encoding.h"
#include "util/json_util.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

constexpr int SIGN_VERSION = 2;
constexpr size_t SUBSCRIPTION_ID_BYTES = 16;
// A subscription lasts a year at most, and so long when no time is asked for.
constexpr int64_t LONGEST_MS = int64_t{365} * 24 * 60 * 60 * 1000;

// The name that the client gives, else that of its kind of container.
std::string EventNameOf(const Request &request)
{
    std::string kind = request.TextOr("syncDemon", "");
    std::string name =
        request.TextOr("saName", kind == "1" ? "cloudFile_notifyDataChange" : "cloudData_notifyDataChange");
    bool isSafe = !name.empty() && name.size() <= MAX_EVENT_NAME && name.front() != '.' &&
                  name.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-") ==
                      std::string::npos;
    if (!isSafe) {
        throw RequestError(ErrorCode::INVALID_ARGUMENT,
            "request member \"saName\": expected a name of letters, digits, '.', '_' and '-', came \"" + Excerpt(name) +
                "\"",
            "saName");
    }
    return name;
}

int64_t ExpirationOf(const ServiceContext &context, const Request &request)
{
    int64_t now = context.nowMs();
    int64_t longest = now + LONGEST_MS;
    int64_t wanted = request.IntegerOr("expirationTime", 0);
    if (wanted == 0) {
        return longest;
    }
    if (wanted <= now) {
        throw RequestError(ErrorCode::INVALID_ARGUMENT,
            "request member \"expirationTime\": expected milliseconds since the epoch in the future, came " +
                std::to_string(wanted),
            "expirationTime");
    }
    return std::min(wanted, longest);
}

void CheckSigning(ServiceContext &context, const Request &request)
{
    if (request.Find("signVersion") != nullptr) {
        request.Integer("signVersion", SIGN_VERSION, SIGN_VERSION);
    }
    std::string keyId = request.TextOr("keyId", "");
    if (!keyId.empty() && keyId != context.pushKey.Id()) {
        throw RequestError(ErrorCode::INVALID_ARGUMENT,
            "request member \"keyId\": expected the \"pushKeyId\" of the user's information, came \"" + Excerpt(keyId) +
                "\"",
            "keyId");
    }
}

// What the request, or item of one, asks for. Looks at the catalogue, so it comes before the write session.
Subscription ReadWanted(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    CheckSigning(context, request);
    return {HexEncode(RandomBytes(SUBSCRIPTION_ID_BYTES)), target.key.bundleName, target.key.containerName,
        EventNameOf(request), ExpirationOf(context, request)};
}

// Throws RequestError (LIMIT_REACHED) when it would be one more than a container may have.
void RequireRoomFor(WriteSession &session, const Subscription &wanted, int64_t now)
{
    std::vector<Subscription> present = session.View().Subscriptions(wanted.bundleName, wanted.containerName, now);
    bool isThere = std::any_of(present.begin(), present.end(),
        [&wanted](const Subscription &one) { return one.eventName == wanted.eventName; });
    if (!isThere && present.size() >= MAX_CONTAINER_SUBSCRIPTIONS) {
        throw RequestError(ErrorCode::LIMIT_REACHED,
            "container \"" + wanted.containerName + "\" has " + std::to_string(present.size()) +
                " subscriptions, at most " + std::to_string(MAX_CONTAINER_SUBSCRIPTIONS) +
                " are possible; delete one that getSubscriptions lists",
            "saName");
    }
    if (!isThere) {
        // Expired ones would remain until a notification is sent.
        session.DropExpiredSubscriptions(now);
    }
}

// Members of the reply.
Json::Value Subscribe(WriteSession &session, Subscription subscription, int64_t now)
{
    RequireRoomFor(session, subscription, now);
    session.PutSubscription(subscription, now);
    Json::Value reply = Success();
    reply["id"] = subscription.id;
    reply["expirationTime"] = Json::Int64(subscription.expirationTime);
    return reply;
}

// The subscription that the request, or item of one, names.
Subscription ReadNamed(ServiceContext &, const Request &request)
{
    return {
        request.NonEmptyText("id"), request.NonEmptyText("bundleName"), request.NonEmptyText("containerName"), "", 0};
}

// Throws RequestError (UNKNOWN_SUBSCRIPTION) when it is not there.
Subscription Require(ReadSession &session, const Subscription &named)
{
    std::optional<Subscription> found = session.FindSubscription(named.id);
    if (!found || found->bundleName != named.bundleName || found->containerName != named.containerName) {
        throw RequestError(ErrorCode::UNKNOWN_SUBSCRIPTION,
            "container \"" + Excerpt(named.containerName) + "\" has no subscription \"" + Excerpt(named.id) + "\"",
            "id");
    }
    return *found;
}

Json::Value Unsubscribe(WriteSession &session, const Subscription &named)
{
    session.DropSubscription(Require(session.View(), named).id);
    return Success();
}

// The result of one item of a batch.
template <typename Action>
Json::Value ResultOf(Action &&action)
{
    try {
        return action();
    } catch (const RequestError &refusal) {
        Json::Value result(Json::objectValue);
        result["code"] = static_cast<int>(refusal.GetFailure().code);
        result["error"] = refusal.GetFailure().ToJson();
        return result;
    }
}

// Reads each item and then applies them in one transaction; one that is refused does not touch the others.
template <typename Read, typename Apply>
Json::Value ForEachSubscription(ServiceContext &context, const Request &request, Read read, Apply apply)
{
    const Json::Value &items = request.Array("subscriptions");
    if (items.size() > MAX_SUBSCRIPTIONS) {
        throw RequestError(ErrorCode::BATCH_TOO_LARGE,
            "the request has " + std::to_string(items.size()) + " subscriptions, at most " +
                std::to_string(MAX_SUBSCRIPTIONS) + " are taken at once",
            "subscriptions");
    }
    Json::Value results(Json::arrayValue);
    std::vector<std::optional<Subscription>> subscriptions(items.size());
    for (Json::ArrayIndex i = 0; i < items.size(); ++i) {
        results.append(ResultOf([&] {
            if (!items[i].isObject()) {
                throw RequestError(ErrorCode::INVALID_ARGUMENT,
                    "request member \"subscriptions\": expected objects, came " + DescribeJson(items[i]),
                    "subscriptions");
            }
            subscriptions[i] = read(context, Request(items[i], request.DeviceName(), nullptr));
            return Json::Value();
        }));
    }
    std::unique_ptr<WriteSession> session = context.store.BeginWrite();
    for (Json::ArrayIndex i = 0; i < items.size(); ++i) {
        if (subscriptions[i]) {
            results[i] = ResultOf([&] { return apply(*session, *subscriptions[i]); });
        }
        for (const char *name : {"bundleName", "containerName"}) {
            results[i][name] = TextMember(items[i], name);
        }
    }
    session->Commit();
    Json::Value reply = Success();
    reply["subscriptions"] = std::move(results);
    return reply;
}

} // namespace

Json::Value SaveSubscription(ServiceContext &context, const Request &request)
{
    Subscription wanted = ReadWanted(context, request);
    std::unique_ptr<WriteSession> session = context.store.BeginWrite();
    Json::Value reply = Subscribe(*session, wanted, context.nowMs());
    session->Commit();
    return reply;
}

Json::Value DeleteSubscription(ServiceContext &context, const Request &request)
{
    Subscription named = ReadNamed(context, request);
    std::unique_ptr<WriteSession> session = context.store.BeginWrite();
    Json::Value reply = Unsubscribe(*session, named);
    session->Commit();
    session.reset();
    context.notifier.FinishRound();
    return reply;
}

Json::Value ChangesNotify(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    Subscription named = ReadNamed(context, request);
    Json::Value types(Json::arrayValue);
    for (const auto &type : target.container->recordTypes) {
        types.append(type.first);
    }
    NoticeContent content{R"(["private","shared"])", WriteJson(types), request.PrepareTraceId()};
    std::unique_ptr<WriteSession> session = context.store.BeginWrite();
    Subscription subscription = Require(session->View(), named);
    if (subscription.expirationTime <= context.nowMs()) {
        throw RequestError(
            ErrorCode::UNKNOWN_SUBSCRIPTION, "the subscription \"" + subscription.id + "\" has expired", "id");
    }
    session->AddNotice(subscription.id, content);
    session->Commit();
    return Success();
}

Json::Value BatchSaveSubscription(ServiceContext &context, const Request &request)
{
    return ForEachSubscription(
        context, request, ReadWanted, [now = context.nowMs()](WriteSession &session, const Subscription &wanted) {
            return Subscribe(session, wanted, now);
        });
}

Json::Value BatchDeleteSubscription(ServiceContext &context, const Request &request)
{
    Json::Value reply = ForEachSubscription(context, request, ReadNamed, Unsubscribe);
    context.notifier.FinishRound();
    return reply;
}

Json::Value GetSubscriptions(ServiceContext &context, const Request &request)
{
    // Not by the catalogue: what it no longer has is to be seen, and can be deleted.
    std::string bundleName = request.TextOr("bundleName", "");
    std::string containerName = request.TextOr("containerName", "");
    std::vector<Subscription> subscriptions =
        context.store.BeginRead()->Subscriptions(bundleName, containerName, context.nowMs());
    Json::Value reply = Success();
    Json::Value &list = reply["subscriptions"] = Json::Value(Json::arrayValue);
    for (const Subscription &subscription : subscriptions) {
        Json::Value item(Json::objectValue);
        item["id"] = subscription.id;
        item["bundleName"] = subscription.bundleName;
        item["containerName"] = subscription.containerName;
        item["saName"] = subscription.eventName;
        item["expirationTime"] = Json::Int64(subscription.expirationTime);
        list.append(std::move(item));
    }
    return reply;
}

} // namespace DriveService
