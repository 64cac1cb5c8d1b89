// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "records/record_json.h"

#include <utility>

#include "store/store.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

constexpr size_t BOOKKEEPING_BYTES = 512;

// A member's name that is not copied into each record.
using Name = Json::StaticString;

Json::Value Read(const std::string &text, const StoredRecord &record)
{
    if (text == "[]") {
        // Most records have no relations.
        return Json::Value(Json::arrayValue);
    }
    Json::Value value;
    std::string error;
    if (!ParseJson(text, value, error)) {
        throw StoreError("record " + record.recordId + " is damaged: " + error);
    }
    return value;
}

Json::Value StampToJson(const ChangeStamp &stamp)
{
    Json::Value json(Json::objectValue);
    json[Name("time")] = Json::Int64(stamp.time);
    json[Name("deviceName")] = stamp.deviceName;
    json[Name("appId")] = stamp.appId;
    return json;
}

} // namespace

Json::Value DataOf(const StoredRecord &record)
{
    return Read(record.data, record);
}

Json::Value RelationsOf(const StoredRecord &record)
{
    return Read(record.relations, record);
}

Json::Value BookkeepingToJson(const StoredRecord &record)
{
    Json::Value json(Json::objectValue);
    json[Name("code")] = 0;
    json[Name("recordId")] = record.recordId;
    json[Name("recordType")] = record.recordType;
    json[Name("version")] = Json::Int64(record.version);
    json[Name("deleted")] = record.deleted;
    json[Name("createdTime")] = Json::Int64(record.createdTime);
    json[Name("editedTime")] = Json::Int64(record.editedTime);
    json[Name("createInfo")] = StampToJson(record.created);
    json[Name("modifiedInfo")] = StampToJson(record.modified);
    json[Name("ownerId")] = record.ownerId;
    json[Name("isShared")] = record.shared;
    return json;
}

Json::Value RecordToJson(const StoredRecord &record, const std::set<std::string> &fields)
{
    Json::Value json = BookkeepingToJson(record);
    if (record.deleted) {
        return json;
    }
    json[Name("relations")] = RelationsOf(record);
    Json::Value &data = json[Name("record")] = DataOf(record);
    if (!fields.empty()) {
        for (const std::string &name : data.getMemberNames()) {
            if (fields.count(name) == 0) {
                data.removeMember(name);
            }
        }
    }
    return json;
}

Json::Value RecordFailureToJson(const Failure &failure, const std::string &recordId, const std::string &localRecordId,
    const std::string &recordType)
{
    Json::Value json(Json::objectValue);
    json["code"] = static_cast<int>(failure.code);
    json["recordId"] = recordId;
    json["localRecordId"] = localRecordId;
    json["recordType"] = recordType;
    json["error"] = failure.ToJson();
    return json;
}

size_t ReplyBytesOf(const StoredRecord &record)
{
    return record.data.size() + record.relations.size() + record.recordId.size() + BOOKKEEPING_BYTES;
}

} // namespace DriveService
