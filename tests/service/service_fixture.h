// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TESTS_SERVICE_FIXTURE_H
#define NUBIS_TESTS_SERVICE_FIXTURE_H

#include <atomic>
#include <filesystem>
#include <map>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include "service_instance.h"
#include "util/error_codes.h"

namespace DriveService {

// JSON written with single quotes, so that tests stay readable: J("{'name': 'Ann'}").
Json::Value J(const std::string &text);

Json::Value Members(std::initializer_list<std::pair<const char *, Json::Value>> members);
Json::Value List(const std::vector<Json::Value> &elements);
std::string FromHex(const std::string &hex);

// A folder that is gone at the end of the test.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder &) = delete;
    TempFolder &operator=(const TempFolder &) = delete;

    const std::string &Path() const
    {
        return path_;
    }

private:
    std::string path_;
};

std::string ReadText(const std::filesystem::path &path);
// All files below a folder.
std::map<std::string, std::string> Bytes(const std::string &folder);

// The catalogue entry that most tests use: bundle "com.example.people" with the container "people" of the record types
// "person" (name, age, height, active, tags, scores, photo, props, avatar, friend, friends; duplicates by name and
// age), "group" (title; relation "members" to persons) and "media" (attachments).
Json::Value PeopleEntry();

// A service with a real database in a folder of its own, its catalogue holding PeopleEntry, and a clock that the test
// sets.
class ServiceTest : public testing::Test {
protected:
    ServiceTest();

    // Writes the entry where the service looks for it.
    void Install(const Json::Value &entry);
    void WriteCatalogueFile(const std::string &name, const std::string &content);
    // As after the end of the process.
    void Restart();

    // The reply to a request with these members; those of the people container are added when they are not there.
    Json::Value Ask(const std::string &function, Json::Value members = Json::Value(Json::objectValue));

    struct Refused {
        const char *function;
        const char *members;
        ErrorCode code;
        const char *text;
        const char *position;
    };
    // Each request is refused as a whole.
    void ExpectRefused(std::initializer_list<Refused> requests);

    // The results of a save in the order of the records.
    Json::Value Save(const Json::Value &records, int policy = 0);
    // Saves one record that must be accepted, and returns its result.
    Json::Value SaveOne(const Json::Value &record, int policy = 0);
    // A new person with these fields, and an id when the test names one.
    static Json::Value NewPerson(const std::string &id, const std::string &fields = "{'name': 'Ann'}");
    static Json::Value Changed(const std::string &id, int64_t baseVersion, const std::string &fields);

    // The result of the deletion, whatever the record's version.
    Json::Value Delete(const std::string &id, const std::string &type = "person");

    Json::Value Fetch(const std::string &id, const std::string &type = "person");
    // The ids that a query of persons finds, over all pages.
    std::vector<std::string> Find(const std::string &query, int pageSize = 0);

    TempFolder folder_;
    std::atomic<int64_t> nowMs_{1000};
    std::unique_ptr<ServiceInstance> service_;
};

// A reply or result that is a failure of the code, whose description holds the text and whose first detail points to
// the position.
MATCHER_P3(FailsWith, code, text, position, "")
{
    const Json::Value &error = arg["error"];
    const Json::Value &detail = error["errorDetail"][0];
    *result_listener << "which is " << arg.toStyledString();
    return arg["code"] == static_cast<int>(code) && error["code"] == static_cast<int>(code) &&
           error["description"].asString().find(text) != std::string::npos && detail["errorPos"] == position &&
           detail["description"].asString().find(text) != std::string::npos && detail["reason"] == ReasonOf(code) &&
           detail["errorCode"].asString() == "3100" + std::to_string(static_cast<int>(code));
}

MATCHER(Succeeds, "")
{
    *result_listener << "which is " << arg.toStyledString();
    return arg["code"] == 0 && !arg.isMember("error");
}

} // namespace DriveService

#endif // NUBIS_TESTS_SERVICE_FIXTURE_H
