// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SYS_CONFIG_H
#define NUBIS_SYS_CONFIG_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include <json/value.h>

#include "ffrt_inner.h"

namespace Nubis {
// The parameters that the service hands out for one user, fetched at their first use and then once a day.
//
// Instances are made at the first GetInstance of their user and live until the process ends. Any thread may call. Calls
// that fetch block until the service has answered, failed or died; a parameter that was never received has its default.
class SysConfig {
public:
    // Null only when there is no memory for it.
    static std::shared_ptr<SysConfig> GetInstance(int userId);

    explicit SysConfig(int userId);

    // Fetches when the parameters were never asked for, when they are older than a day or from the future, and again by
    // each call after a fetch that failed.
    void CheckAndUpdConfig();
    // One fetch; false when it failed. Parameters that the reply leaves out stay as they are.
    bool GetConfigFromCloud();

    // Whether requests may be answered asynchronously; brings the parameters up to date first.
    bool GetUseAsyncIpc();

    // As last received; these fetch nothing.
    std::string GetQuicDomainList() const;       // comma-separated
    uint32_t GetFlowSpeedLimit() const;          // 0 until set
    uint32_t GetFlowThreshold() const;           // 0 until set
    std::string GetFlowControlWhiteList() const; // comma-separated
    // Whether a refresh has failed since the process began.
    bool IsRefreshFailed() const;

private:
    void StoreParameter(const Json::Value &parameter);

    const int userId_;

    std::atomic<bool> isLoaded_{false};
    // Held over the request of the first load, so it must be one that a task may keep over a wait.
    ffrt::mutex firstLoadMutex_;
    // Seconds since the epoch; 0 until a fetch has succeeded.
    std::atomic<int64_t> lastConfigTime_{0};
    std::atomic<bool> isRefreshFailed_{false};

    mutable std::mutex valueMutex_;
    std::string quicDomainList_;
    uint32_t flowSpeedLimit_ = 0;
    uint32_t flowThreshold_ = 0;
    std::string flowControlWhiteList_;
    int32_t useAsyncIpc_ = 1;
};
} // namespace Nubis

#endif // NUBIS_SYS_CONFIG_H
