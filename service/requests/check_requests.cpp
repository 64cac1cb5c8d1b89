// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include "util/json_util.h"

namespace DriveService {

Json::Value CheckData(ServiceContext &context, const Request &)
{
    StoreReport report = context.store.BeginRead()->Check();
    Json::Value reply = Success();
    Json::Value &data = reply["data"];
    data["programVersion"] = NUBIS_VERSION;
    data["schemaVersion"] = Json::Int64(report.schemaVersion);
    Json::Value &problems = data["problems"] = Json::Value(Json::arrayValue);
    for (const std::string &problem : report.problems) {
        problems.append(problem);
    }
    return reply;
}

} // namespace DriveService
