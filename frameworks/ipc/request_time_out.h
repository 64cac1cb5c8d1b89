// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_REQUEST_TIME_OUT_H
#define NUBIS_REQUEST_TIME_OUT_H

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace Nubis {
// The deadlines of the requests in flight, by trace id. They are watched and logged only: a request ends by its own
// wait.
// Any thread may call.
class RequestTimeOut {
public:
    // An empty id is not watched; an id that is watched already starts anew.
    void AddRequest(const std::string &requestId, uint32_t timeoutSeconds);
    void RemoveRequest(const std::string &requestId);
    void Clear();
    // Whether some request is over its deadline; logs the one found, once for each request.
    bool HasRequestTimeOut();

private:
    struct Deadline {
        // Since the epoch, by the wall clock.
        int64_t startSeconds = 0;
        uint32_t timeoutSeconds = 0;
        bool isReported = false;
    };

    std::mutex mutex_;
    std::map<std::string, Deadline> requests_;
};
} // namespace Nubis

#endif // NUBIS_REQUEST_TIME_OUT_H
