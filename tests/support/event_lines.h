// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_EVENT_LINES_H
#define NUBIS_TEST_EVENT_LINES_H

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <json/reader.h>
#include <json/value.h>

#include "host_folders.h"

namespace NubisTest {

// A state folder of the test's own, in which the event client writes; removed at the end.
class EventState {
public:
    std::filesystem::path Path() const
    {
        return folders_.State();
    }

    std::filesystem::path FileOf(const std::string &instanceTag) const
    {
        return Path() / "events" / (instanceTag + ".jsonl");
    }

    // Every event of the instance so far. Throws when the file holds anything but whole lines of JSON objects.
    std::vector<Json::Value> Read(const std::string &instanceTag) const
    {
        std::vector<Json::Value> events;
        std::ifstream file(FileOf(instanceTag));
        Json::CharReaderBuilder builder;
        Json::CharReaderBuilder::strictMode(&builder.settings_);
        // Names that are no UTF-8 are written with replacement characters and may then be equal.
        builder["rejectDupKeys"] = false;
        const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
        std::string line;
        while (std::getline(file, line)) {
            Json::Value event;
            std::string errors;
            const bool isWhole = !file.eof() && reader->parse(line.data(), line.data() + line.size(), &event, &errors);
            if (!isWhole || !event.isObject()) {
                throw std::runtime_error("not a line of JSON: " + line + " " + errors);
            }
            events.push_back(std::move(event));
        }
        return events;
    }

private:
    HostFolders folders_;
};

// An object of texts, as a map that tests compare as a whole.
inline std::map<std::string, std::string> TextsOf(const Json::Value &json)
{
    std::map<std::string, std::string> texts;
    for (const auto &name : json.getMemberNames()) {
        texts[name] = json[name].asString();
    }
    return texts;
}

} // namespace NubisTest

#endif // NUBIS_TEST_EVENT_LINES_H
