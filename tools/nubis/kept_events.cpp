// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "kept_events.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include "command_error.h"
#include "host/event_log.h"
#include "row_reader.h"

namespace NubisTool {

namespace {

// How many lines of the file are no events.
size_t VisitFile(const std::string &path, const std::function<void(Json::Value &&event)> &visit)
{
    std::error_code none;
    if (!std::filesystem::exists(path, none)) {
        return 0;
    }
    std::ifstream file(path, std::ios::binary);
    size_t unreadable = 0;
    for (std::string line; std::getline(file, line);) {
        Json::Value event;
        std::string error;
        if (ParseJsonText(line, event, error) && event.isObject() && event["fields"].isObject()) {
            visit(std::move(event));
        } else {
            ++unreadable;
        }
    }
    // Opening a folder succeeds and only reading it fails.
    if (!file.is_open() || file.bad()) {
        throw CommandError(path + " cannot be read", "check that it is a file of yours");
    }
    return unreadable;
}

} // namespace

size_t VisitKeptEvents(int user, const std::function<void(Json::Value &&event)> &visit)
{
    // The name under which the library is known to the event client.
    const std::string tag = "NubisSDK_" + std::to_string(user);
    const size_t unreadable = VisitFile(Host::OldEventLogPath(tag), visit);
    return unreadable + VisitFile(Host::EventLogPath(tag), visit);
}

} // namespace NubisTool
