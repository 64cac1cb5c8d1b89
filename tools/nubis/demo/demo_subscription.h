// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_SUBSCRIPTION_H
#define NUBIS_TOOL_DEMO_SUBSCRIPTION_H

#include <chrono>

#include <json/json.h>

#include "session.h"

namespace NubisTool {

// A device's subscription to the changes of its container. One thread.
class DemoSubscription {
public:
    explicit DemoSubscription(Session &session);

    // Asks to be told for so long; 0 for as long as the service allows. {"subscription", "expirationTime"}
    Json::Value Save(std::chrono::milliseconds time);
    // Gives back the one that was saved last, if it still is there, and asks for another.
    Json::Value SaveAnew();
    // Asks for a notification of nothing, which the service sends as long as the subscription lasts.
    Nubis::NBError NotifyMe();

private:
    Session &session_;
    Nubis::NBContainerSubscription subscription_;
};

} // namespace NubisTool

#endif
