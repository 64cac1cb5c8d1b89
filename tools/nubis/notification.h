// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_NOTIFICATION_H
#define NUBIS_TOOL_NOTIFICATION_H

#include <string>

#include <json/json.h>

#include "nb_subscription.h"
#include "nubis_kit.h"

namespace NubisTool {

// A notification that somebody gave, and what is to be held of it.
struct Notification {
    // What it announces; not to be relied on when it is refused.
    Nubis::NBRecordChangeEvent event;
    // Why it is no notification of the service; empty when it is one.
    std::string refusal;
    // As it came.
    std::string text;

    bool IsVerified() const
    {
        return refusal.empty();
    }
};

// The kit must know the push key (FetchPushKey).
Notification ReadNotification(Nubis::NubisNative &kit, const std::string &text);

// {"verified", "reason" (when it is refused), "accountId", "bundleName", "containerName", "databaseScopes",
//  "recordTypes", "properties", "prepareTraceId"}
Json::Value NotificationToJson(const Notification &notification);

// "private,shared"
std::string ScopesText(const Notification &notification);
std::string TypesText(const Notification &notification);

} // namespace NubisTool

#endif
