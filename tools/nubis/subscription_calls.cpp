// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "subscription_calls.h"

#include <chrono>
#include <memory>
#include <utility>

#include "command_error.h"
#include "database_calls.h"
#include "error_text.h"
#include "service_request.h"

namespace NubisTool {
namespace {

using Nubis::NBContainer;
using Nubis::NBContainerSubscription;
using Nubis::NBContainerSubscriptionResult;
using Nubis::NBError;

NBContainerSubscriptionResult SubscribeOne(const std::shared_ptr<NBContainer> &container, int64_t expirationTime)
{
    Async::SubscriptionResult saved = Wait(Async::SaveSubscription(container, {expirationTime}));
    return {saved.error, container->GetBundleName(), container->GetContainerName(), saved.id, saved.expirationTime};
}

// Throws when there is not one result for each item.
SubscriptionResults Checked(Async::BatchSubscriptionResult outcome, size_t items, const std::string &doing)
{
    ThrowIfError(outcome.error, doing);
    if (outcome.results.size() != items) {
        throw CommandError(doing + " failed: the service answered for " + std::to_string(outcome.results.size()) +
                               " of " + std::to_string(items) + " containers",
            "see with `nubis subscription list` what came of it");
    }
    return std::move(outcome.results);
}

} // namespace

void FetchPushKey(Session &session)
{
    Nubis::NBUserInfo info;
    ThrowIfError(session.Kit().GetCloudUserInfo(info, false), "reading the key of notifications");
}

int64_t ExpirationIn(uint64_t seconds)
{
    using namespace std::chrono;
    auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch());
    return seconds == 0 ? 0 : (now + milliseconds(seconds * 1000)).count();
}

Json::Value ListSubscriptions(Session &session, const std::string &bundleName, const std::string &containerName)
{
    Json::Value request(Json::objectValue);
    request["function"] = "getSubscriptions";
    request["bundleName"] = bundleName;
    request["containerName"] = containerName;
    return AskService(session, {request, "subscriptions", "reading the subscriptions", ""});
}

SubscriptionResults Subscribe(Session &session, std::vector<NBContainerSubscription> wanted)
{
    auto container =
        wanted.size() == 1 ? session.FindContainer(wanted[0].bundleName, wanted[0].containerName) : nullptr;
    if (container != nullptr) {
        return {SubscribeOne(container, wanted[0].expirationTime)};
    }
    const size_t items = wanted.size();
    return Checked(
        Wait(Async::BatchSaveSubscription(session.Kit().shared_from_this(), std::move(wanted))), items, "subscribing");
}

SubscriptionResults Unsubscribe(Session &session, std::vector<NBContainerSubscription> named)
{
    auto container = named.size() == 1 ? session.FindContainer(named[0].bundleName, named[0].containerName) : nullptr;
    SubscriptionResults results;
    if (container != nullptr) {
        results.resize(1);
        results[0].error = Wait(Async::DeleteSubscription(container, named[0].id)).error;
        results[0].bundleName = named[0].bundleName;
        results[0].containerName = named[0].containerName;
    } else {
        // Also for one of a container that the catalogue no longer has.
        results = Checked(Wait(Async::BatchDeleteSubscription(session.Kit().shared_from_this(), named)), named.size(),
            "removing subscriptions");
    }
    for (size_t i = 0; i < results.size(); ++i) {
        results[i].id = named[i].id;
    }
    return results;
}

NBError Notify(Session &session, const NBContainerSubscription &named, const std::string &prepareTraceId)
{
    auto container = session.FindContainer(named.bundleName, named.containerName);
    if (container == nullptr) {
        throw CommandError("the container " + named.containerName + " of " + named.bundleName + " cannot be opened",
            "see with `nubis catalogue show " + named.bundleName + "` whether the catalogue has it");
    }
    return Wait(Async::ChangesNotify(container, named.id, ContextOf(prepareTraceId))).error;
}

} // namespace NubisTool
