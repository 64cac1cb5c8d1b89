// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_WATCHER_H
#define NUBIS_TOOL_WATCHER_H

#include <atomic>
#include <cstdint>
#include <exception>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "common_options.h"
#include "console.h"
#include "notification.h"
#include "session.h"

namespace NubisTool {

struct WatchOptions {
    CommonOptions common; // an empty bundle: all
    bool raw = false;
    bool fetch = false;
    bool subscribe = false;
    uint64_t count = 0; // notifications to end after; 0: none
};

// Listens for notifications and prints them. Under an InterruptGuard, which ends it.
class Watcher {
public:
    Watcher(const WatchOptions &options, const Console &console);
    ~Watcher();
    Watcher(const Watcher &) = delete;
    Watcher &operator=(const Watcher &) = delete;

    // Until it is interrupted, the count is reached, or something fails, which it throws.
    void Run();

    bool HasCounted() const
    {
        return counted_;
    }

private:
    using DatabasePart = std::pair<Nubis::NBDatabaseScope, std::string>; // a record type in one of the databases

    void Prepare();
    void SubscribeIfNeeded();
    void RenewSubscription();
    void EndSubscription();
    // Until a signal, or Finish.
    void Wait();

    // On the listener's thread, one at a time.
    void OnEvent(const std::string &text) noexcept;
    void OnGap() noexcept;
    template <typename Action>
    void Guarded(Action &&action) noexcept;
    void Handle(const Notification &notification);
    bool IsWanted(const Notification &notification) const;
    void Print(const Notification &notification);
    void FetchAnnounced(const Notification &notification);
    void FetchPart(const DatabasePart &part);
    void Finish();

    const WatchOptions options_;
    const Console &console_;
    Session session_;
    const int finished_;         // becomes readable with Finish
    std::string subscriptionId_; // one that this object made
    // The listener's once it listens.
    std::map<DatabasePart, std::string> cursors_;
    uint64_t printed_ = 0;
    std::atomic<bool> counted_{false};
    std::exception_ptr failure_;
    bool isOver_ = false;
};

} // namespace NubisTool

#endif
