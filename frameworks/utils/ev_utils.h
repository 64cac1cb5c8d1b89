// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_EV_UTILS_H
#define NUBIS_EV_UTILS_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "ffrt.h"

namespace Nubis {
// What every event tells, in the order in which MakeReportParam takes it.
struct ReportParam {
    std::string traceId;
    std::string bundleName;
    std::string eventName;
    std::string errorCode;
    std::string errorMsg;
};

// Sends events of one user to the event-reporting client: failures of requests and records (O&M events) and the
// milestones of sync runs (operation events).
//
// One instance per user id, made at first use and alive until the process ends. Any thread may call. Reporting fails
// nobody: what cannot be sent is logged and dropped. A call that finds the client not configured for the signed-in cloud
// user configures it, for which the service may be asked and the call blocks for as long as that takes, 60 s at most.
class EvUtils {
public:
    using Fields = std::unordered_map<std::string, std::string>;

    // Null only when there is no memory for a new instance.
    static std::shared_ptr<EvUtils> GetInstance(int userId);

    EvUtils(const EvUtils &) = delete;
    EvUtils &operator=(const EvUtils &) = delete;

    // The cloud account in whose name events are reported. Another one than before is configured at once, or with the
    // next event if that fails.
    void SetCloudUserId(const std::string &cloudUserId);
    // Nothing is reported until a cloud user is set again.
    void ClearCloudUserId();

    // True when the client is configured. False without a cloud user, for a kit without a sync demon, when the service
    // does not tell where to report to, and when the client refuses.
    bool Init();
    // Asks the service where to report to and what to send along. Init calls it under the lock that it holds; nobody
    // else may while events are reported.
    bool GetReportInfo();

    static ReportParam MakeReportParam(const std::string &traceId, const std::string &bundleName,
        const std::string &eventName, const std::string &errorCode, const std::string &errorMsg);
    // The product name under which events of a bundle are reported.
    static std::string GetOmPnByBundleName(const std::string &bundleName);

    // Each sends one event. Extras add fields of their own; they do not replace those that every event has.
    void OmReport(
        const ReportParam &param, const std::string &text, const std::string &prepareTraceId, const Fields &extras);
    // Operation events name the outcome "returnCode" and "errorReason" for every product; only O&M events have a
    // product with names of its own.
    void OpReport(
        const ReportParam &param, const std::string &text, const std::string &prepareTraceId, const Fields &extras);

private:
    explicit EvUtils(int userId);

    bool GetSaIdAndDbPath(int32_t &saId, std::string &dbPath) const;
    bool Configure(int32_t saId, const std::string &dbPath);
    std::string GetCloudUserId();
    Fields MakeFields(
        const ReportParam &param, const std::string &pn, const std::string &text, const std::string &prepareTraceId);

    std::atomic<bool> isInit_{false};
    // Held while the service is asked, which may wait within a task: a standard mutex must not be. Nothing below the
    // request may come back here, so failures of kit requests are not reported as events.
    ffrt::mutex mutex_;
    std::string cloudUserId_;
    Fields reportParams_;
    std::string reportUrl_;
    const std::string instanceTag_;
    const int32_t userId_;
};
} // namespace Nubis

#endif // NUBIS_EV_UTILS_H
