// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_subscription.h"

#include "demo_data.h"
#include "error_text.h"
#include "subscription_calls.h"

namespace NubisTool {

DemoSubscription::DemoSubscription(Session &session) : session_(session)
{
    subscription_.bundleName = DEMO_BUNDLE;
    subscription_.containerName = session_.ContainerInfo().containerName;
}

Json::Value DemoSubscription::Save(std::chrono::milliseconds time)
{
    using std::chrono::system_clock;
    auto now = std::chrono::duration_cast<std::chrono::milliseconds>(system_clock::now().time_since_epoch());
    subscription_.expirationTime = time.count() > 0 ? (now + time).count() : 0;
    auto result = Subscribe(session_, {subscription_}).front();
    ThrowIfError(result.error, "subscribing");
    subscription_.id = result.id;
    Json::Value answer(Json::objectValue);
    answer["subscription"] = result.id;
    answer["expirationTime"] = Json::Int64(result.expirationTime);
    return answer;
}

Json::Value DemoSubscription::SaveAnew()
{
    // An expired one may be gone already, which the service says by an error of its own.
    Nubis::NBError error = Unsubscribe(session_, {subscription_}).front().error;
    if (IsTransportError(error)) {
        ThrowIfError(error, "unsubscribing");
    }
    return Save(std::chrono::milliseconds(0));
}

Nubis::NBError DemoSubscription::NotifyMe()
{
    return Notify(session_, subscription_, "");
}

} // namespace NubisTool
