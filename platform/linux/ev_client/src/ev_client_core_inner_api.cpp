// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "ev_client_core_inner_api.h"

#include <chrono>
#include <map>
#include <mutex>
#include <utility>

#include <json/value.h>
#include <json/writer.h>

#include "event_file.h"
#include "host/event_log.h"

namespace EvCloud {
namespace {
constexpr size_t MAX_TAG_LENGTH = 128;

// What an instance was configured with. Copied, so that callers may change theirs; never changed once registered.
struct Instance {
    std::string appId;
    std::string databasePath;
    int32_t serviceId = 0;
    std::map<int32_t, EventTypeConfig> eventTypes;
};

class Instances {
public:
    // Never destroyed: threads may still report while the process ends.
    static Instances &Get()
    {
        static auto *instances = new Instances;
        return *instances;
    }

    void Set(const std::string &tag, std::shared_ptr<const Instance> instance)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        byTag_[tag] = std::move(instance);
    }

    std::shared_ptr<const Instance> Find(const std::string &tag)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = byTag_.find(tag);
        return found == byTag_.end() ? nullptr : found->second;
    }

private:
    std::mutex mutex_;
    std::map<std::string, std::shared_ptr<const Instance>> byTag_;
};

// The tag names a file.
bool IsGoodTag(const std::string &tag)
{
    static const std::string allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-.";
    return !tag.empty() && tag.size() <= MAX_TAG_LENGTH && tag.front() != '.' &&
           tag.find_first_not_of(allowed) == std::string::npos;
}

bool CopyEventTypes(const ConfigOptions &options, std::map<int32_t, EventTypeConfig> &eventTypes)
{
    for (const auto &config : options.eventTypeConfigs) {
        if (config == nullptr || config->reportUrl.empty() || config->reportParams.empty()) {
            return false;
        }
        if (config->eventType != EVENT_TYPE_OM && config->eventType != EVENT_TYPE_OPERATION) {
            return false;
        }
        if (!eventTypes.emplace(config->eventType, *config).second) {
            return false;
        }
    }
    return eventTypes.size() == 2;
}

int32_t Configure(const ConfigOptions &options)
{
    if (!IsGoodTag(options.instanceTag)) {
        return EV_BAD_INSTANCE_TAG;
    }
    if (options.appId.empty()) {
        return EV_BAD_APP_ID;
    }
    auto instance = std::make_shared<Instance>();
    if (!CopyEventTypes(options, instance->eventTypes)) {
        return EV_BAD_EVENT_TYPE_CONFIG;
    }
    if (options.databasePath.empty() || options.databasePath.front() != '/') {
        return EV_BAD_DATABASE_PATH;
    }
    if (options.serviceId <= 0) {
        return EV_BAD_SERVICE_ID;
    }
    instance->appId = options.appId;
    instance->databasePath = options.databasePath;
    instance->serviceId = options.serviceId;
    Instances::Get().Set(options.instanceTag, std::move(instance));
    return EV_OK;
}

Json::Value ToJson(const std::unordered_map<std::string, std::string> &texts)
{
    Json::Value json(Json::objectValue);
    for (const auto &[key, text] : texts) {
        json[key] = text;
    }
    return json;
}

std::string MakeLine(const Instance &instance, const EventTypeConfig &config, const std::string &eventId,
    const std::unordered_map<std::string, std::string> &fields)
{
    auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    Json::Value json(Json::objectValue);
    json["time"] = static_cast<Json::Int64>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count());
    json["appId"] = instance.appId;
    json["serviceId"] = instance.serviceId;
    json["databasePath"] = instance.databasePath;
    json["reportUrl"] = config.reportUrl;
    json["reportParams"] = ToJson(config.reportParams);
    json["eventId"] = eventId;
    json["eventType"] = config.eventType;
    json["fields"] = ToJson(fields);
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, json) + "\n";
}

int32_t Report(const std::string &instanceTag, const std::string &eventId, int32_t eventType,
    const std::unordered_map<std::string, std::string> &fields)
{
    auto instance = Instances::Get().Find(instanceTag);
    if (instance == nullptr) {
        return EV_NOT_CONFIGURED;
    }
    auto config = instance->eventTypes.find(eventType);
    if (config == instance->eventTypes.end() || eventId.empty()) {
        return EV_BAD_EVENT;
    }
    const std::string line = MakeLine(*instance, config->second, eventId, fields);
    if (line.size() > Host::MAX_EVENT_LINE_BYTES) {
        return EV_BAD_EVENT;
    }
    return Host::AppendEventLine(instanceTag, line) ? EV_OK : EV_NOT_STORED;
}
} // namespace

int32_t EvClientCoreInnerApi::SetConfigOptions(const ConfigOptions &options) noexcept
{
    try {
        return Configure(options);
    } catch (...) {
        return EV_NOT_CONFIGURED;
    }
}

int32_t EvClientCoreInnerApi::OnEvent(const std::string &instanceTag, const std::string &eventId, int32_t eventType,
    const std::unordered_map<std::string, std::string> &fields) noexcept
{
    try {
        return Report(instanceTag, eventId, eventType, fields);
    } catch (...) {
        return EV_NOT_STORED;
    }
}

} // namespace EvCloud
