// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_SUBSCRIPTION_CALLS_H
#define NUBIS_TOOL_SUBSCRIPTION_CALLS_H

#include <cstdint>
#include <string>
#include <vector>

#include <json/json.h>

#include "nb_subscription.h"
#include "session.h"

namespace NubisTool {

// Asks for the user's information, by which the kit learns the key that notifications are signed with; throws
// CommandError.
void FetchPushKey(Session &session);

// The time so many seconds from now in milliseconds since the epoch; 0, which leaves it to the service, for 0 seconds.
int64_t ExpirationIn(uint64_t seconds);

// The subscriptions of the user, of the bundle and of the container if they are not empty; each {"id", "bundleName",
// "containerName", "saName", "expirationTime"}. Throws CommandError.
Json::Value ListSubscriptions(Session &session, const std::string &bundleName, const std::string &containerName);

// What came of each, in their order: one goes by its container, several go in one request. Throws CommandError when
// nothing came of the request as a whole.
using SubscriptionResults = std::vector<Nubis::NBContainerSubscriptionResult>;
SubscriptionResults Subscribe(Session &session, std::vector<Nubis::NBContainerSubscription> wanted);
SubscriptionResults Unsubscribe(Session &session, std::vector<Nubis::NBContainerSubscription> named);

// Asks the service to notify as if the container had changed.
Nubis::NBError Notify(Session &session, const Nubis::NBContainerSubscription &named, const std::string &prepareTraceId);

} // namespace NubisTool

#endif
