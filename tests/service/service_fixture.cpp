// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_fixture.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "util/json_util.h"
#include "util/json_writer.h"

namespace DriveService {

Json::Value J(const std::string &text)
{
    std::string json = text;
    std::replace(json.begin(), json.end(), '\'', '"');
    Json::Value value;
    std::string error;
    if (!ParseJson(json, value, error)) {
        throw std::invalid_argument(error + " in " + text);
    }
    return value;
}

Json::Value Members(std::initializer_list<std::pair<const char *, Json::Value>> members)
{
    Json::Value object(Json::objectValue);
    for (const auto &[name, value] : members) {
        object[name] = value;
    }
    return object;
}

Json::Value List(const std::vector<Json::Value> &elements)
{
    Json::Value list(Json::arrayValue);
    for (const Json::Value &element : elements) {
        list.append(element);
    }
    return list;
}

std::string FromHex(const std::string &hex)
{
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

TempFolder::TempFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "drive-service-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    path_ = pattern;
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string ReadText(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::map<std::string, std::string> Bytes(const std::string &folder)
{
    std::map<std::string, std::string> bytes;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            bytes[std::filesystem::relative(entry.path(), folder)] = ReadText(entry.path());
        }
    }
    return bytes;
}

Json::Value PeopleEntry()
{
    return J(R"({
      'bundleName': 'com.example.people', 'appId': 'app-7', 'schemaGroupVersion': 3, 'switchStatus': 1,
      'configParams': {'theme': 'dark'},
      'defaultContainer': {'name': 'people', 'databaseName': 'people.db', 'maxBatchNumber': 2000,
        'settings': {'optimisticLock': 1}, 'schema': {'version': 5, 'recordTypes': [
          {'recordType': 'person', 'tableName': 'person', 'dupCheckFields': ['name', 'age'], 'fields': [
            {'name': 'name', 'type': 'String', 'primary': true, 'queryable': true, 'sortable': true},
            {'name': 'age', 'type': 'Long', 'nullable': true, 'queryable': true, 'sortable': true},
            {'name': 'height', 'type': 'Double', 'nullable': true, 'queryable': true, 'sortable': true},
            {'name': 'active', 'type': 'Boolean', 'nullable': true, 'queryable': true, 'sortable': true},
            {'name': 'tags', 'type': 'List', 'listType': 'String', 'nullable': true, 'queryable': true},
            {'name': 'scores', 'type': 'List', 'listType': 'Integer', 'nullable': true, 'queryable': true},
            {'name': 'photo', 'type': 'Blob', 'nullable': true, 'queryable': true},
            {'name': 'props', 'type': 'Map', 'nullable': true},
            {'name': 'avatar', 'type': 'Asset', 'nullable': true},
            {'name': 'friend', 'type': 'Reference', 'nullable': true, 'queryable': true,
             'reference': {'recordType': 'person'}},
            {'name': 'friends', 'type': 'List', 'listType': 'Reference', 'nullable': true}]},
          {'recordType': 'group', 'fields': [{'name': 'title', 'type': 'String', 'nullable': true}],
           'relations': [{'relationName': 'members', 'recordType': 'person', 'refField': {'title': 'name'}}]},
          {'recordType': 'media', 'fields': [
            {'name': 'attachments', 'type': 'List', 'listType': 'Asset', 'nullable': true}]}]}}})");
}

ServiceTest::ServiceTest()
{
    Install(PeopleEntry());
    Restart();
}

void ServiceTest::WriteCatalogueFile(const std::string &name, const std::string &content)
{
    std::string catalogue = DataPaths::CatalogueOf(folder_.Path());
    std::filesystem::create_directories(catalogue);
    std::ofstream(catalogue + "/" + name) << content;
}

void ServiceTest::Install(const Json::Value &entry)
{
    WriteCatalogueFile(entry["bundleName"].asString() + ".json", WriteJson(entry));
}

void ServiceTest::Restart()
{
    service_.reset();
    service_ = std::make_unique<ServiceInstance>(folder_.Path(), 100, [this] { return nowMs_.load(); });
}

Json::Value ServiceTest::Ask(const std::string &function, Json::Value members)
{
    members["function"] = function;
    for (const char *name : {"bundleName", "containerName"}) {
        if (!members.isMember(name)) {
            members[name] = std::string(name) == "bundleName" ? "com.example.people" : "people";
        }
    }
    Json::Value reply;
    std::string error;
    EXPECT_TRUE(ParseJson(service_->Router().Answer(WriteJson(members), "tablet"), reply, error)) << error;
    return reply;
}

void ServiceTest::ExpectRefused(std::initializer_list<Refused> requests)
{
    for (const Refused &refused : requests) {
        EXPECT_THAT(Ask(refused.function, J(refused.members)), FailsWith(refused.code, refused.text, refused.position))
            << refused.function << refused.members;
    }
}

Json::Value ServiceTest::Save(const Json::Value &records, int policy)
{
    Json::Value reply = Ask("saveRecords", Members({{"records", records}, {"savePolicy", policy}}));
    EXPECT_THAT(reply, Succeeds());
    return reply["records"];
}

Json::Value ServiceTest::SaveOne(const Json::Value &record, int policy)
{
    Json::Value result = Save(List({record}), policy)[0];
    EXPECT_THAT(result, Succeeds());
    return result;
}

Json::Value ServiceTest::NewPerson(const std::string &id, const std::string &fields)
{
    Json::Value record = J(fields);
    record["recordId"] = id;
    record["recordType"] = "person";
    record["isNew"] = true;
    record["deleted"] = false;
    record["baseVersion"] = 0;
    return record;
}

Json::Value ServiceTest::Changed(const std::string &id, int64_t baseVersion, const std::string &fields)
{
    Json::Value record = NewPerson(id, fields);
    record["isNew"] = false;
    record["baseVersion"] = Json::Int64(baseVersion);
    return record;
}

Json::Value ServiceTest::Delete(const std::string &id, const std::string &type)
{
    Json::Value record = Members({{"recordId", id}});
    return Ask(
        "deleteRecords", Members({{"recordType", type}, {"savePolicy", 2}, {"records", List({record})}}))["records"][0];
}

Json::Value ServiceTest::Fetch(const std::string &id, const std::string &type)
{
    return Ask("fetchRecordWithId", Members({{"recordId", id}, {"recordType", type}}));
}

std::vector<std::string> ServiceTest::Find(const std::string &query, int pageSize)
{
    std::vector<std::string> ids;
    Json::Value members = Members({{"recordType", "person"}, {"queryParam", query}, {"pageSize", pageSize}});
    do {
        Json::Value reply = Ask("fetchRecordsWithQuery", members);
        EXPECT_THAT(reply, Succeeds());
        for (const Json::Value &record : reply["records"]) {
            ids.push_back(record["recordId"].asString());
        }
        members["cursor"] = reply["nextCursor"];
    } while (members["cursor"].isString() && members["cursor"] != "");
    return ids;
}

} // namespace DriveService
