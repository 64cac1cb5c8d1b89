// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_REQUESTS_REQUEST_BUDGET_H
#define NUBIS_SERVICE_REQUESTS_REQUEST_BUDGET_H

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "records/limits.h"
#include "util/failure.h"

namespace DriveService {

// What requests take while they wait or are answered: themselves, the bytes of their texts and replies, and their values
// as MAX_JSON_VALUES counts them.
struct RequestLoad {
    size_t requests = 0;
    size_t bytes = 0;
    size_t values = 0;
};

struct RequestBudgetLimits {
    RequestLoad client{MAX_CLIENT_REQUESTS, MAX_CLIENT_BYTES, MAX_CLIENT_VALUES};
    RequestLoad all{MAX_ALL_REQUESTS, MAX_ALL_BYTES, MAX_ALL_VALUES};
};

// Shares out what the service has for requests, so that one client's leave room for those of others. Outlives its
// shares. Any thread may call.
class RequestBudget {
public:
    // A request's part; given back at its end.
    class Share {
    public:
        Share(RequestBudget &budget, int client, RequestLoad load);
        ~Share();
        Share(const Share &) = delete;
        Share &operator=(const Share &) = delete;

        // The reply, which is there already and so never refused; it counts against requests to come.
        void AddBytes(size_t bytes);

    private:
        RequestBudget &budget_;
        const int client_;
        RequestLoad load_;
    };

    explicit RequestBudget(RequestBudgetLimits limits = {});
    RequestBudget(const RequestBudget &) = delete;
    RequestBudget &operator=(const RequestBudget &) = delete;

    // The one of the process, never destroyed: requests may be under way when the process ends.
    static RequestBudget &Get();

    // The part of a request with this text from this process; null with a failure when there is none left.
    std::unique_ptr<Share> Take(int client, const std::string &text, std::optional<Failure> &failure);

private:
    void Change(int client, const RequestLoad &load, bool adds);

    const RequestBudgetLimits limits_;
    std::mutex mutex_;
    // Guarded by mutex_.
    std::map<int, RequestLoad> clients_;
    RequestLoad all_;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_REQUESTS_REQUEST_BUDGET_H
