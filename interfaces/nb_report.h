// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_REPORT_H
#define NB_REPORT_H

#include <cstdint>
#include <map>
#include <string>

#include "nb_types.h"
#include "nubis_export.h"

namespace Nubis {
/// The milestones of a sync run.
enum SyncStatusFlag : int32_t {
    SYNC_STATUS_PREPARE = 0,
    SYNC_STATUS_START = 1,
    SYNC_STATUS_END = 2,
};

/// Reports the milestones of sync runs for one user. A value without state of its own, owned by whoever asked the kit or a
/// database for it; any thread may call. It goes on working after its maker is gone, with the demon of that time.
class NUBIS_EXPORT NBReport {
public:
    /// For the operating-system user and the demon; NubisNative::GetReport knows both.
    NBReport(int32_t userId, NBCloudSyncDemon syncDemon);

    /// Reports one milestone, once as an O&M event and once as an operation event. `params` may hold the outcome under
    /// "errorCode" and "errorMsg"; its other entries become fields of the events, except those that name a field which
    /// every event has. False only when there is no reporter for the user; events that cannot be delivered are logged and
    /// dropped, without a difference in the result. May ask the service where to report to, and then block for up to 60 s.
    bool Report(SyncStatusFlag flag, const std::string &traceId, const std::string &bundleName,
        const std::map<std::string, std::string> &params) const;
    /// A new trace id for a sync run that is about to be prepared.
    std::string GetPrepareTarceId() const;

private:
    int32_t userId_;
    NBCloudSyncDemon syncDemon_;
};
} // namespace Nubis

#endif // NB_REPORT_H
