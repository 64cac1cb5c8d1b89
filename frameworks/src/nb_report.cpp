// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_report.h"

#include "ev_utils.h"
#include "uuid_helper.h"

namespace Nubis {
namespace {
std::string EventNameOf(SyncStatusFlag flag)
{
    switch (flag) {
        case SYNC_STATUS_PREPARE:
            return "cloudsync_sync_prepare";
        case SYNC_STATUS_START:
            // The reporting back end knows the event by this spelling.
            return "cloudsync_sync_strart";
        case SYNC_STATUS_END:
            return "cloudsync_sync_end";
        default:
            return "cloudsync_unknown";
    }
}
} // namespace

NBReport::NBReport(int32_t userId, NBCloudSyncDemon syncDemon) : userId_(userId), syncDemon_(syncDemon)
{}

bool NBReport::Report(SyncStatusFlag flag, const std::string &traceId, const std::string &bundleName,
    const std::map<std::string, std::string> &params) const
{
    auto evUtils = EvUtils::GetInstance(userId_);
    if (evUtils == nullptr) {
        return false;
    }
    std::string errorCode;
    std::string errorMsg;
    EvUtils::Fields extras;
    for (const auto &[key, value] : params) {
        if (key == "errorMsg") {
            errorMsg = value;
        } else if (key == "errorCode") {
            errorCode = value;
        } else {
            extras.emplace(key, value);
        }
    }
    const ReportParam param = EvUtils::MakeReportParam(traceId, bundleName, EventNameOf(flag), errorCode, errorMsg);
    evUtils->OmReport(param, "", traceId, extras);
    evUtils->OpReport(param, "", traceId, extras);
    return true;
}

std::string NBReport::GetPrepareTarceId() const
{
    return UuidHelper::GenerateTraceId(syncDemon_);
}
} // namespace Nubis
