// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_request.h"

#include "command_error.h"
#include "error_text.h"

namespace NubisTool {

Json::Value AskService(Session &session, const ServiceRequest &request)
{
    Json::Value reply;
    Nubis::NBError error = session.Kit().SendDataToCloudSrv(request.members, reply, -1);
    if (error.IsServerError() && !request.advice.empty()) {
        throw CommandError(request.doing + " failed: " + ErrorText(error), request.advice);
    }
    ThrowIfError(error, request.doing);
    if (!reply.isObject() || !reply.isMember(request.answer)) {
        throw CommandError(request.doing + " failed: the service's answer has no \"" + request.answer + "\"",
            "check that tool and service are of the same version");
    }
    return reply[request.answer];
}

} // namespace NubisTool
