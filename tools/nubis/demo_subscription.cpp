// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_subscription.h"

#include <future>
#include <utility>

#include "database_calls.h"
#include "error_text.h"
#include "nb_context.h"

namespace NubisTool {
namespace {

using Nubis::NBContext;

struct SubscriptionOutcome {
    Nubis::NBSubscriptionResult result;
    Nubis::NBError error;
};

struct ErrorOutcome {
    Nubis::NBError error;
};

Nubis::NBErrorCallback KeepError(const std::shared_ptr<std::promise<ErrorOutcome>> &promise)
{
    return [promise](const std::shared_ptr<NBContext> &, const Nubis::NBError &error) { promise->set_value({error}); };
}

} // namespace

DemoSubscription::DemoSubscription(std::shared_ptr<Nubis::NBContainer> container) : container_(std::move(container))
{}

Json::Value DemoSubscription::Save(std::chrono::milliseconds time)
{
    using std::chrono::system_clock;
    Nubis::NBSubscription wanted;
    if (time.count() > 0) {
        auto end = std::chrono::duration_cast<std::chrono::milliseconds>(system_clock::now().time_since_epoch()) + time;
        wanted.expirationTime = end.count();
    }
    auto promise = std::make_shared<std::promise<SubscriptionOutcome>>();
    std::future<SubscriptionOutcome> future = promise->get_future();
    container_->SaveSubscription(std::make_shared<NBContext>(), wanted,
        [promise = std::move(promise)](const std::shared_ptr<NBContext> &, const std::shared_ptr<Nubis::NBContainer> &,
            Nubis::NBSubscriptionResult &result) {
            promise->set_value({result, result.error});
        });
    SubscriptionOutcome outcome = Wait(std::move(future));
    ThrowIfError(outcome.error, "subscribing");
    id_ = outcome.result.id;
    Json::Value answer(Json::objectValue);
    answer["subscription"] = id_;
    answer["expirationTime"] = Json::Int64(outcome.result.expirationTime);
    return answer;
}

Json::Value DemoSubscription::SaveAnew()
{
    auto promise = std::make_shared<std::promise<ErrorOutcome>>();
    std::future<ErrorOutcome> future = promise->get_future();
    container_->DeleteSubscription(std::make_shared<NBContext>(), id_, KeepError(promise));
    promise.reset();
    // An expired one may be gone already, which the service says by an error of its own.
    Nubis::NBError error = Wait(std::move(future)).error;
    if (IsTransportError(error)) {
        ThrowIfError(error, "unsubscribing");
    }
    return Save(std::chrono::milliseconds(0));
}

Nubis::NBError DemoSubscription::NotifyMe()
{
    auto promise = std::make_shared<std::promise<ErrorOutcome>>();
    std::future<ErrorOutcome> future = promise->get_future();
    container_->ChangesNotify(std::make_shared<NBContext>(), id_, KeepError(promise));
    promise.reset();
    return Wait(std::move(future)).error;
}

} // namespace NubisTool
