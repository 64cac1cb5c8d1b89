// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/request_budget.h"

#include "util/json_util.h"

namespace DriveService {

namespace {

// What of these is used up, in words; empty when the load fits.
std::string Lacking(const RequestLoad &used, const RequestLoad &load, const RequestLoad &limit)
{
    const struct {
        const char *what;
        size_t used;
        size_t more;
        size_t limit;
    } parts[] = {
        {" requests", used.requests, load.requests, limit.requests},
        {" bytes", used.bytes, load.bytes, limit.bytes},
        {" values", used.values, load.values, limit.values},
    };
    for (const auto &part : parts) {
        // One request alone always fits, however large it may be.
        if (used.requests > 0 && part.used + part.more > part.limit) {
            return std::to_string(part.used) + part.what + " of at most " + std::to_string(part.limit);
        }
    }
    return "";
}

void Apply(RequestLoad &total, const RequestLoad &load, bool adds)
{
    total.requests = adds ? total.requests + load.requests : total.requests - load.requests;
    total.bytes = adds ? total.bytes + load.bytes : total.bytes - load.bytes;
    total.values = adds ? total.values + load.values : total.values - load.values;
}

} // namespace

RequestBudget::Share::Share(RequestBudget &budget, int client, RequestLoad load)
    : budget_(budget), client_(client), load_(load)
{}

RequestBudget::Share::~Share()
{
    budget_.Change(client_, load_, false);
}

void RequestBudget::Share::AddBytes(size_t bytes)
{
    load_.bytes += bytes;
    budget_.Change(client_, {0, bytes, 0}, true);
}

RequestBudget::RequestBudget(RequestBudgetLimits limits) : limits_(limits)
{}

RequestBudget &RequestBudget::Get()
{
    static auto *budget = new RequestBudget();
    return *budget;
}

std::unique_ptr<RequestBudget::Share> RequestBudget::Take(
    int client, const std::string &text, std::optional<Failure> &failure)
{
    const RequestLoad load{1, text.size(), CountJsonValues(text)};
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = clients_.find(client);
        std::string lacking = found == clients_.end() ? "" : Lacking(found->second, load, limits_.client);
        std::string whose = lacking.empty() ? "this service's clients have " : "this client has ";
        lacking = lacking.empty() ? Lacking(all_, load, limits_.all) : lacking;
        if (!lacking.empty()) {
            failure.emplace(
                ErrorCode::LIMIT_REACHED, whose + lacking + " under way; wait for the answers before asking on", "");
            return nullptr;
        }
        Apply(clients_[client], load, true);
        Apply(all_, load, true);
    }
    return std::make_unique<Share>(*this, client, load);
}

void RequestBudget::Change(int client, const RequestLoad &load, bool adds)
{
    std::lock_guard<std::mutex> lock(mutex_);
    RequestLoad &own = clients_[client];
    Apply(own, load, adds);
    Apply(all_, load, adds);
    if (own.requests == 0) {
        clients_.erase(client);
    }
}

} // namespace DriveService
