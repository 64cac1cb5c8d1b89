// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef CRASH_JOURNAL_H
#define CRASH_JOURNAL_H

#include <map>
#include <optional>
#include <set>
#include <string>

namespace Crash {
// Titles by record id.
using Titles = std::map<std::string, std::string>;

// What the load clients have told: what must be there whoever was killed, and what may be there, but only as a whole.
class Journal {
public:
    // A line as load_client.cpp describes it; besides, "refused THREAD" when it is known that nothing was done. Throws what a client says is wrong.
    void Read(const std::string &line);

    // What is wrong with these contents; empty when nothing is.
    std::string Check(const Titles &contents) const;

    const std::set<std::string> &Subscriptions() const
    {
        return subscriptions_;
    }
    size_t Acknowledged() const
    {
        return acknowledged_;
    }
    // Requests that never were acknowledged.
    size_t Lost() const;

private:
    using Changes = std::map<std::string, std::optional<std::string>>;
    // No two threads change the same records, and each waits for an answer before it goes on.
    struct Thread {
        Changes sure;
        Changes underWay;
    };

    std::map<std::string, Thread> threads_;
    std::set<std::string> subscriptions_;
    size_t acknowledged_ = 0;
};
} // namespace Crash

#endif // CRASH_JOURNAL_H
