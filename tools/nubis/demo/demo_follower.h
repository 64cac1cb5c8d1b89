// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_FOLLOWER_H
#define NUBIS_TOOL_DEMO_FOLLOWER_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <json/json.h>

#include "demo_records.h"
#include "host/event_channel.h"
#include "nb_container.h"
#include "nubis_kit.h"

namespace NubisTool {

// Keeps a device's records up to date. It never looks for changes by itself: each notification wakes it, is verified, and
// makes it read on from its cursors, in the databases and record types that the notification announces and no others.
// What does not verify is refused, and nothing is read. Orders come from one thread; notifications are served on another.
class DemoFollower {
public:
    enum class Beginning {
        FIRST_CHANGE, // nothing is held yet
        NOW           // everything is held
    };

    // What Await waits for, counted since its last return.
    struct Expected {
        std::string action; // the "prepareTraceId" of the notifications
        size_t notifications = 0;
        size_t refusals = 0;
    };

    DemoFollower(
        std::shared_ptr<Nubis::NBContainer> container, std::vector<std::string> recordTypes, DemoRecords &records);

    // Begins to listen, then reads what there is up to now, which needs no notification. Called once; throws
    // CommandError. The answer is the event's name, and what was read.
    Json::Value Start(Beginning beginning);

    // From that time on, in milliseconds since 1970, notifications are refused although they verify: a signature never runs
    // out, so it is the subscriber who has to know when its subscription does. Without it none is refused for its time.
    void AcceptUntil(int64_t expirationTime);

    // What has arrived since the last call, once everything that is expected has, or the time is over ("late"):
    //   {"actions": {action: notifications}, "announced" and "asked": ["private/Country"], "requests", "records" (read),
    //    "refused": [why], "added", "changed", "removed": [ids], "last" (the last notification that was served), "late"}
    // Throws CommandError when reading failed.
    Json::Value Await(const Expected &expected, std::chrono::seconds time);

private:
    using Place = std::pair<Nubis::NBDatabaseScope, std::string>; // a database and a record type

    void Serve(const std::string &text);
    void ReadOn(const Place &place);
    void FindBeginning(const Place &place);
    std::shared_ptr<Nubis::NBDatabase> Database(Nubis::NBDatabaseScope scope) const;
    void Note(const char *member, const std::string &text);
    bool HasArrived(const Expected &expected) const;
    Json::Value TakeArrived();

    std::shared_ptr<Nubis::NBContainer> container_;
    std::shared_ptr<Nubis::NubisNative> kit_;
    std::vector<std::string> recordTypes_;
    DemoRecords &records_;
    std::string accountId_;
    std::atomic<int64_t> acceptedUntil_{std::numeric_limits<int64_t>::max()};

    std::mutex servingMutex_; // held while cursors are read and moved
    std::map<Place, std::string> cursors_;

    std::mutex arrivedMutex_;
    std::condition_variable changed_;
    Json::Value arrived_;
    std::string problem_;

    // Last, because its end waits for a notification that is being served.
    std::unique_ptr<Host::EventListener> listener_;
};

} // namespace NubisTool

#endif
