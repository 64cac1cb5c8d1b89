// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "records/incoming_record.h"

#include <limits>
#include <set>

#include "records/limits.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

const std::set<std::string> &BookkeepingMembers()
{
    static const auto *names = new std::set<std::string>{"recordId", "recordType", "deleted", "isNew", "baseCursor",
        "baseVersion", "createdTime", "editedTime", "relations", "ownerId", "isShared"};
    return *names;
}

// Reads the bookkeeping members, keeping the problems of all of them.
class BookkeepingReader {
public:
    BookkeepingReader(const Json::Value &json, std::vector<FailureDetail> &problems) : json_(json), problems_(problems)
    {}

    std::string Text(const char *name)
    {
        const Json::Value &value = json_[name];
        if (!value.isNull() && !value.isString()) {
            Refuse(name, "a text");
            return "";
        }
        return value.isString() ? value.asString() : "";
    }

    bool Boolean(const char *name)
    {
        const Json::Value &value = json_[name];
        if (!value.isNull() && !value.isBool()) {
            Refuse(name, "true or false");
            return false;
        }
        return value.isBool() && value.asBool();
    }

    std::optional<int64_t> Natural(const char *name)
    {
        const Json::Value &value = json_[name];
        if (value.isNull()) {
            return std::nullopt;
        }
        bool integer = value.type() == Json::intValue || value.type() == Json::uintValue;
        if (!integer || !value.isInt64() || value.asInt64() < 0) {
            Refuse(name, "an integer that is not negative");
            return std::nullopt;
        }
        return value.asInt64();
    }

private:
    void Refuse(const char *name, const std::string &expected)
    {
        problems_.push_back({std::string("record member \"") + name + "\": expected " + expected + ", came " +
                                 DescribeJson(json_[name]),
            name});
    }

    const Json::Value &json_;
    std::vector<FailureDetail> &problems_;
};

std::optional<Failure> ReadIdentity(const Json::Value &json, const ContainerEntry &container, IncomingRecord &record)
{
    if (!json.isObject()) {
        return Failure(ErrorCode::INVALID_RECORD, "a record is an object, came " + DescribeJson(json), "records");
    }
    std::vector<FailureDetail> problems;
    BookkeepingReader reader(json, problems);
    record.recordId = reader.Text("recordId");
    record.recordType = reader.Text("recordType");
    record.isNew = reader.Boolean("isNew");
    record.baseVersion = reader.Natural("baseVersion");
    record.createdTime = reader.Natural("createdTime").value_or(0);
    reader.Natural("editedTime");
    reader.Text("baseCursor");
    record.ownerId = reader.Text("ownerId");
    record.isShared = reader.Boolean("isShared");
    if (reader.Boolean("deleted")) {
        problems.push_back({"a deleted record cannot be saved; deletions are requests of their own", "deleted"});
    }
    for (auto [name, text] : {std::pair{"recordId", &record.recordId}, std::pair{"ownerId", &record.ownerId}}) {
        if (text->size() > MAX_ID_BYTES) {
            problems.push_back({std::string("record member \"") + name + "\": expected at most " +
                                    std::to_string(MAX_ID_BYTES) + " bytes",
                name});
            text->clear();
        }
    }
    if (!problems.empty()) {
        return Failure(ErrorCode::INVALID_RECORD, std::move(problems));
    }
    record.rule = container.FindType(record.recordType);
    if (record.rule == nullptr) {
        return Failure(ErrorCode::UNKNOWN_RECORD_TYPE,
            "container \"" + container.name + "\" has no record type \"" + Excerpt(record.recordType) + "\"",
            "recordType");
    }
    return std::nullopt;
}

// Clients wrap each asset of this one field; it is kept like any other list of assets.
void UnwrapAttachments(const std::string &recordType, const std::string &field, Json::Value &value)
{
    if (recordType != "media" || field != "attachments" || !value.isArray()) {
        return;
    }
    for (Json::Value &element : value) {
        if (element.isObject() && element.size() == 1 && element.isMember("asset")) {
            Json::Value asset = std::move(element["asset"]);
            element = std::move(asset);
        }
    }
}

// What a null stands for: clients also write it for an empty list or map, which is what it must be where the field
// cannot be unset.
Json::Value NullOf(const FieldRule &rule)
{
    if (rule.nullable || (rule.type != FieldType::LIST && rule.type != FieldType::MAP)) {
        return Json::Value();
    }
    return Json::Value(rule.type == FieldType::LIST ? Json::arrayValue : Json::objectValue);
}

// The fields are checked where they are.
std::optional<Failure> ReadFields(Json::Value &json, IncomingRecord &record)
{
    std::vector<FailureDetail> problems;
    for (auto member = json.begin(); member != json.end(); ++member) {
        if (problems.size() >= MAX_FAILURE_DETAILS) {
            break;
        }
        const std::string name = member.name();
        if (BookkeepingMembers().count(name) > 0) {
            continue;
        }
        const FieldRule *rule = record.rule->FindField(name);
        if (rule == nullptr) {
            problems.push_back(
                {"record type \"" + record.recordType + "\" has no field \"" + Excerpt(name) + "\"", Excerpt(name)});
            continue;
        }
        if (member->isNull()) {
            *member = NullOf(*rule);
        }
        if (!member->isNull()) {
            UnwrapAttachments(record.recordType, name, *member);
            CheckFieldValue(*rule, *member, problems, record.fieldReferences);
        }
    }
    if (!problems.empty()) {
        return Failure(ErrorCode::INVALID_FIELD, std::move(problems));
    }
    return std::nullopt;
}

std::optional<Failure> ReadRelations(const Json::Value &json, IncomingRecord &record)
{
    const Json::Value &relations = json["relations"];
    if (relations.isNull()) {
        return std::nullopt;
    }
    if (!relations.isArray()) {
        return Failure(ErrorCode::INVALID_RECORD,
            "record member \"relations\": expected an array, came " + DescribeJson(relations), "relations");
    }
    Json::Value kept(Json::arrayValue);
    for (Json::ArrayIndex i = 0; i < relations.size(); ++i) {
        std::string position = "relations[" + std::to_string(i) + "]";
        std::string name = TextMember(relations[i], "relationName");
        std::string type = TextMember(relations[i], "recordType");
        std::string id = TextMember(relations[i], "recordId");
        if (name.empty() || type.empty() || id.empty()) {
            return Failure(ErrorCode::INVALID_RECORD,
                position +
                    ": expected an object with the texts \"relationName\", \"recordType\" and \"recordId\", came " +
                    DescribeJson(relations[i]),
                position);
        }
        const RelationRule *rule = record.rule->FindRelation(name);
        if (rule == nullptr || rule->recordType != type) {
            return Failure(ErrorCode::UNKNOWN_RELATION,
                "record type \"" + record.recordType + "\" has no relation \"" + Excerpt(name) +
                    "\" to records of type \"" + Excerpt(type) + "\"",
                position);
        }
        Json::Value relation(Json::objectValue);
        relation["relationName"] = name;
        relation["recordType"] = type;
        relation["recordId"] = id;
        kept.append(std::move(relation));
        record.relationReferences.push_back({std::move(position), std::move(id), std::move(type)});
    }
    record.relations = std::move(kept);
    return std::nullopt;
}

} // namespace

std::optional<Failure> ReadIncomingRecord(Json::Value &&json, const ContainerEntry &container, IncomingRecord &record)
{
    std::optional<Failure> failure = ReadIdentity(json, container, record);
    if (!failure) {
        failure = ReadFields(json, record);
    }
    if (!failure) {
        failure = ReadRelations(json, record);
    }
    if (!failure) {
        for (const std::string &name : BookkeepingMembers()) {
            json.removeMember(name);
        }
        record.fields = std::move(json);
    }
    return failure;
}

} // namespace DriveService
