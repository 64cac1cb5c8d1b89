// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "subscription_calls.h"

#include <chrono>
#include <future>
#include <memory>
#include <utility>

#include "command_error.h"
#include "database_calls.h"
#include "error_text.h"
#include "nb_context.h"
#include "service_request.h"

namespace NubisTool {
namespace {

using Nubis::NBContainer;
using Nubis::NBContainerSubscription;
using Nubis::NBContainerSubscriptionResult;
using Nubis::NBContext;
using Nubis::NBError;

struct BatchOutcome {
    SubscriptionResults results;
    NBError error;
};

// Starts a call with a callback's promise and waits for it. The call is to have the only reference to the promise, so
// that one whose callback is dropped is an error and no wait for ever.
template <typename Outcome, typename Start>
Outcome Call(Start &&start)
{
    auto promise = std::make_shared<std::promise<Outcome>>();
    std::future<Outcome> future = promise->get_future();
    start(std::move(promise));
    return Wait(std::move(future));
}

template <typename Outcome>
auto KeepError(std::shared_ptr<std::promise<Outcome>> promise)
{
    return [promise = std::move(promise)](const std::shared_ptr<NBContext> &, const NBError &error) {
        Outcome outcome;
        outcome.error = error;
        promise->set_value(std::move(outcome));
    };
}

auto KeepResults(std::shared_ptr<std::promise<BatchOutcome>> promise)
{
    return [promise = std::move(promise)](
               const std::shared_ptr<NBContext> &, const SubscriptionResults &results, const NBError &error) {
        promise->set_value({results, error});
    };
}

NBContainerSubscriptionResult SubscribeOne(NBContainer &container, int64_t expirationTime)
{
    auto result = Call<NBContainerSubscriptionResult>([&](auto promise) {
        Nubis::NBSubscription wanted{expirationTime};
        container.SaveSubscription(std::make_shared<NBContext>(), wanted,
            [promise = std::move(promise)](const std::shared_ptr<NBContext> &, const std::shared_ptr<NBContainer> &,
                Nubis::NBSubscriptionResult &saved) {
                promise->set_value({saved.error, "", "", saved.id, saved.expirationTime});
            });
    });
    result.bundleName = container.GetBundleName();
    result.containerName = container.GetContainerName();
    return result;
}

NBContainerSubscriptionResult UnsubscribeOne(NBContainer &container, const NBContainerSubscription &named)
{
    auto result = Call<NBContainerSubscriptionResult>([&](auto promise) {
        container.DeleteSubscription(std::make_shared<NBContext>(), named.id, KeepError(std::move(promise)));
    });
    result.bundleName = named.bundleName;
    result.containerName = named.containerName;
    return result;
}

// Throws when there is not one result for each item.
SubscriptionResults Checked(BatchOutcome outcome, size_t items, const std::string &doing)
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
        return {SubscribeOne(*container, wanted[0].expirationTime)};
    }
    size_t items = wanted.size();
    return Checked(Call<BatchOutcome>([&](auto promise) {
        session.Kit().BatchSaveSubscription(std::make_shared<NBContext>(), wanted, KeepResults(std::move(promise)));
    }),
        items, "subscribing");
}

SubscriptionResults Unsubscribe(Session &session, std::vector<NBContainerSubscription> named)
{
    auto container = named.size() == 1 ? session.FindContainer(named[0].bundleName, named[0].containerName) : nullptr;
    SubscriptionResults results;
    if (container != nullptr) {
        results.push_back(UnsubscribeOne(*container, named[0]));
    } else {
        // Also for one of a container that the catalogue no longer has.
        results = Checked(Call<BatchOutcome>([&](auto promise) {
            session.Kit().BatchDeleteSubscription(
                std::make_shared<NBContext>(), named, KeepResults(std::move(promise)));
        }),
            named.size(), "removing subscriptions");
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
    auto context = std::make_shared<NBContext>();
    context->SetPrepareTarceId(prepareTraceId);
    return Call<NBContainerSubscriptionResult>([&](auto promise) {
        container->ChangesNotify(context, named.id, KeepError(std::move(promise)));
    }).error;
}

} // namespace NubisTool
