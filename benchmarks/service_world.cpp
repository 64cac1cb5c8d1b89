// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_world.h"

#include <fstream>
#include <stdexcept>

#include "notes.h"
#include "query/cursor.h"

namespace NubisBench {
namespace {
constexpr int USER = 100;
constexpr int PRIVATE_DATABASE = 1;
constexpr int OVERWRITE = 2;
constexpr int FOLDERS = 50;

constexpr const char *CATALOGUE = R"({
  "bundleName": "com.example.notes", "appId": "notes-1", "schemaGroupVersion": 1, "enableCloud": 1,
  "defaultContainer": {"name": "main", "databaseName": "main", "maxBatchNumber": 1000,
    "schema": {"version": 1, "recordTypes": [
      {"recordType": "folder", "tableName": "folders", "fields": [{"name": "title", "type": "String"}]},
      {"recordType": "note", "tableName": "notes", "fields": [
        {"name": "title", "type": "String", "primary": true, "queryable": true, "sortable": true},
        {"name": "body", "type": "String", "nullable": true},
        {"name": "stars", "type": "Integer", "nullable": true, "queryable": true, "sortable": true},
        {"name": "score", "type": "Double", "nullable": true},
        {"name": "done", "type": "Boolean", "nullable": true},
        {"name": "edited", "type": "Long", "nullable": true},
        {"name": "tags", "type": "List", "listType": "String", "nullable": true},
        {"name": "folder", "type": "Reference", "nullable": true, "reference": {"recordType": "folder"}}]}]}}})";

Json::Value Frame(const char *function)
{
    Json::Value request(Json::objectValue);
    request["function"] = function;
    request["bundleName"] = BUNDLE;
    request["containerName"] = CONTAINER;
    request["databaseType"] = PRIVATE_DATABASE;
    request["lockSessionId"] = "";
    request["syncDemon"] = "3";
    request["traceId"] = "09000_01_1700000000_12345678";
    request["nbVersion"] = "5.3.1.300";
    request["saVersion"] = 0;
    return request;
}

Json::Value SaveFrame()
{
    Json::Value request = Frame("saveRecords");
    request["savePolicy"] = OVERWRITE;
    request["records"] = Json::Value(Json::arrayValue);
    return request;
}
} // namespace

void WriteCatalogue(const std::filesystem::path &dataFolder)
{
    const std::filesystem::path folder = DriveService::DataPaths::CatalogueOf(dataFolder);
    std::filesystem::create_directories(folder);
    std::filesystem::permissions(dataFolder, std::filesystem::perms::owner_all);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    std::ofstream(folder / (std::string(BUNDLE) + ".json")) << CATALOGUE;
}

std::filesystem::path DatabaseOf(const std::filesystem::path &dataFolder)
{
    return DriveService::DataPaths(dataFolder, USER).database;
}

std::string SaveNotesRequest(size_t first, size_t count)
{
    Json::Value request = SaveFrame();
    for (const Note &note : MakeNotes(count, first)) {
        request["records"].append(ToRequestJson(note));
    }
    return WriteJson(request);
}

std::string SaveFoldersRequest()
{
    Json::Value request = SaveFrame();
    for (int i = 0; i < FOLDERS; ++i) {
        Json::Value &folder = request["records"].append(Json::Value(Json::objectValue));
        folder["recordId"] = "folder-" + std::to_string(i);
        folder["recordType"] = "folder";
        folder["isNew"] = true;
        folder["title"] = "Folder " + std::to_string(i);
    }
    return WriteJson(request);
}

std::string ChangesRequest(size_t count, const std::string &cursor)
{
    Json::Value request = Frame("fetchDatabaseChanges");
    request["recordType"] = "note";
    request["fields"] = "";
    request["pageSize"] = Json::UInt64(count);
    request["cursor"] = cursor;
    return WriteJson(request);
}

Service::Service(const std::filesystem::path &dataFolder) : instance_(dataFolder, USER, DriveService::SystemNowMs)
{
    CheckReply(Ask(SaveFoldersRequest()));
}

std::string Service::Ask(const std::string &request)
{
    return instance_.Router().Answer(request, "bench");
}

std::string Service::CursorAt(int64_t sequence)
{
    const auto found = instance_.GetStore().BeginRead()->FindDatabase({BUNDLE, CONTAINER, PRIVATE_DATABASE});
    if (!found) {
        throw std::runtime_error("nothing was saved yet");
    }
    return DriveService::WriteChangeCursor(*found, sequence);
}

void CheckReply(const std::string &reply)
{
    const Json::Value json = ParseJson(reply);
    bool isGood = json["code"] == 0;
    for (const Json::Value &record : json["records"]) {
        isGood = isGood && record["code"] == 0;
    }
    if (!isGood) {
        throw std::runtime_error("the service refused: " + reply.substr(0, 500));
    }
}
} // namespace NubisBench
