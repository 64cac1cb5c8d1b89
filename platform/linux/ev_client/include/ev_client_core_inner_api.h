// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef EV_CLIENT_CORE_INNER_API_H
#define EV_CLIENT_CORE_INNER_API_H

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

// The event-reporting client. On Linux nothing is sent anywhere: an accepted event becomes a line of
// <state>/events/<instance tag>.jsonl, where <state> is NUBIS_STATE_DIR or its default.
namespace EvCloud {

enum EventType : int32_t {
    EVENT_TYPE_OM = 1,
    EVENT_TYPE_OPERATION = 2,
};

enum EvResult : int32_t {
    EV_OK = 0,
    EV_BAD_INSTANCE_TAG = 1,
    EV_BAD_APP_ID = 2,
    EV_BAD_EVENT_TYPE_CONFIG = 3,
    EV_BAD_DATABASE_PATH = 4,
    EV_BAD_SERVICE_ID = 5,
    EV_NOT_CONFIGURED = 6,
    EV_BAD_EVENT = 7,
    EV_NOT_STORED = 8,
};

// Where events of one type are reported, and what goes with each of them.
struct EventTypeConfig {
    int32_t eventType = 0;
    std::string reportUrl;
    std::unordered_map<std::string, std::string> reportParams;
};

struct ConfigOptions {
    // Names the configuration for OnEvent: 1 to 128 letters, digits, '_', '-' and '.', the first no '.'.
    std::string instanceTag;
    std::string appId;
    // One for each event type.
    std::vector<std::shared_ptr<EventTypeConfig>> eventTypeConfigs;
    // Absolute. The client of a device keeps its own database there; here it is only recorded.
    std::string databasePath;
    // Above 0.
    int32_t serviceId = 0;
};

// Any thread may call; nothing throws.
class EvClientCoreInnerApi {
public:
    // Takes a copy of the options for later events of their instance, replacing earlier ones. EV_OK, or the code of the
    // first bad member; then what was configured before stays.
    static int32_t SetConfigOptions(const ConfigOptions &options) noexcept;
    // Reports one event of an instance. EV_OK when it is in the file, in one piece however many threads and processes
    // report at once; otherwise the reason, and nothing is reported.
    static int32_t OnEvent(const std::string &instanceTag, const std::string &eventId, int32_t eventType,
        const std::unordered_map<std::string, std::string> &fields) noexcept;
};

} // namespace EvCloud

#endif // EV_CLIENT_CORE_INNER_API_H
