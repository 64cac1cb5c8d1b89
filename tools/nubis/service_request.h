// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_SERVICE_REQUEST_H
#define NUBIS_TOOL_SERVICE_REQUEST_H

#include <string>

#include <json/json.h>

#include "session.h"

namespace NubisTool {

// For requests that this service answers besides those of the library: what has to be said and who wants to know it.
struct ServiceRequest {
    Json::Value members; // "function" and its own
    std::string answer;  // the member of the reply that is wanted
    std::string doing;   // for messages: "reading the settings"
    std::string advice;  // for a refusal; empty: that of the failure
};

// The member of the reply. Throws CommandError when the service refuses or its reply has no such member.
Json::Value AskService(Session &session, const ServiceRequest &request);

} // namespace NubisTool

#endif
