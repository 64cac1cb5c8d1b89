// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "request_time_out.h"

#include "log.h"
#include "wall_clock.h"

namespace Nubis {
void RequestTimeOut::AddRequest(const std::string &requestId, uint32_t timeoutSeconds)
{
    if (requestId.empty()) {
        return;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    requests_[requestId] = {WallClock::NowSeconds(), timeoutSeconds, false};
}

void RequestTimeOut::RemoveRequest(const std::string &requestId)
{
    std::lock_guard<std::mutex> lock(mutex_);
    requests_.erase(requestId);
}

void RequestTimeOut::Clear()
{
    std::lock_guard<std::mutex> lock(mutex_);
    requests_.clear();
}

bool RequestTimeOut::HasRequestTimeOut()
{
    std::lock_guard<std::mutex> lock(mutex_);
    const int64_t now = WallClock::NowSeconds();
    for (auto &[requestId, deadline] : requests_) {
        if (deadline.startSeconds + deadline.timeoutSeconds >= now) {
            continue;
        }
        if (!deadline.isReported) {
            NB_LOGE("request id:%{public}s is timeout, timeout:%{public}d", requestId.c_str(),
                static_cast<int>(deadline.timeoutSeconds));
            deadline.isReported = true;
        }
        return true;
    }
    return false;
}
} // namespace Nubis
