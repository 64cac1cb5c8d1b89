// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "records/value_check.h"

#include "util/encoding.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

bool IsInteger(const Json::Value &value)
{
    return (value.type() == Json::intValue || value.type() == Json::uintValue) && value.isInt64();
}

bool IsNatural(const Json::Value &value)
{
    return (value.type() == Json::intValue || value.type() == Json::uintValue) && value.isUInt64();
}

class ValueCheck {
public:
    ValueCheck(const FieldRule &rule, std::vector<FailureDetail> &problems, std::vector<RecordReference> &references)
        : rule_(rule), problems_(problems), references_(references)
    {}

    void Check(FieldType type, Json::Value &value, const std::string &position);

private:
    void Refuse(const std::string &position, const std::string &expected, const Json::Value &came);
    void CheckList(Json::Value &value, const std::string &position);
    void CheckMap(Json::Value &value, const std::string &position);
    void CheckAsset(const Json::Value &value, const std::string &position);
    void CheckReference(const Json::Value &value, const std::string &position);

    // Members that a client may leave out; present ones must be of the type.
    void CheckMember(const Json::Value &object, const char *name, bool (*fits)(const Json::Value &),
        const std::string &expected, const std::string &position);

    const FieldRule &rule_;
    std::vector<FailureDetail> &problems_;
    std::vector<RecordReference> &references_;
};

void ValueCheck::Refuse(const std::string &position, const std::string &expected, const Json::Value &came)
{
    problems_.push_back(
        {"field \"" + position + "\": expected " + expected + ", came " + DescribeJson(came), position});
}

void ValueCheck::Check(FieldType type, Json::Value &value, const std::string &position)
{
    bool fits = true;
    switch (type) {
        case FieldType::NOTHING:
            fits = value.isNull();
            break;
        case FieldType::INTEGER:
            fits = IsInteger(value);
            break;
        case FieldType::DOUBLE:
            fits = value.isNumeric();
            if (fits) {
                value = Json::Value(value.asDouble());
            }
            break;
        case FieldType::STRING:
            fits = value.isString();
            break;
        case FieldType::BOOLEAN:
            fits = value.isBool();
            break;
        case FieldType::BLOB:
            fits = value.isString() && IsBase64(value.asString());
            break;
        case FieldType::LIST:
            return CheckList(value, position);
        case FieldType::MAP:
            return CheckMap(value, position);
        case FieldType::ASSET:
            return CheckAsset(value, position);
        case FieldType::REFERENCE:
            return CheckReference(value, position);
    }
    if (!fits) {
        Refuse(position, type == FieldType::BLOB ? "Blob (a Base64 text)" : WordOf(type), value);
    }
}

void ValueCheck::CheckList(Json::Value &value, const std::string &position)
{
    if (!value.isArray()) {
        Refuse(position, std::string("List of ") + WordOf(rule_.listType), value);
        return;
    }
    for (Json::ArrayIndex i = 0; i < value.size() && problems_.size() < MAX_FAILURE_DETAILS; ++i) {
        Check(rule_.listType, value[i], position + "[" + std::to_string(i) + "]");
    }
}

void ValueCheck::CheckMap(Json::Value &value, const std::string &position)
{
    if (value.isNull()) {
        // Clients write an empty map in a list so.
        value = Json::Value(Json::objectValue);
    }
    if (!value.isObject()) {
        Refuse(position, "Map", value);
        return;
    }
    for (const std::string &name : value.getMemberNames()) {
        const Json::Value &member = value[name];
        if (member.isNull() || member.isArray() || member.isObject()) {
            Refuse(position + "." + Excerpt(name), "a number, a text, true or false within a Map", member);
        }
        if (problems_.size() >= MAX_FAILURE_DETAILS) {
            break;
        }
    }
}

void ValueCheck::CheckMember(const Json::Value &object, const char *name, bool (*fits)(const Json::Value &),
    const std::string &expected, const std::string &position)
{
    if (object.isMember(name) && !fits(object[name])) {
        Refuse(position + "." + name, expected, object[name]);
    }
}

void ValueCheck::CheckAsset(const Json::Value &value, const std::string &position)
{
    if (!value.isObject()) {
        Refuse(position, "Asset", value);
        return;
    }
    auto isText = [](const Json::Value &member) { return member.isString(); };
    for (const char *name : {"uri", "assetName", "sha256", "assetId", "subPath", "exCheckInfo"}) {
        CheckMember(value, name, isText, "a text", position);
    }
    for (const char *name : {"version", "size"}) {
        CheckMember(value, name, IsNatural, "an integer that is not negative", position);
    }
    constexpr int MOST_OPERATION = 3;
    CheckMember(
        value, "assetOperType",
        [](const Json::Value &member) { return IsNatural(member) && member.asUInt64() <= MOST_OPERATION; },
        "an integer from 0 to 3", position);
}

void ValueCheck::CheckReference(const Json::Value &value, const std::string &position)
{
    std::string recordId = TextMember(value, "recordId");
    std::string recordType = TextMember(value, "recordType");
    if (recordId.empty() || recordType.empty()) {
        Refuse(position, "Reference (an object with the texts \"recordId\" and \"recordType\")", value);
        return;
    }
    if (!rule_.refRecordType.empty() && rule_.refRecordType != recordType) {
        Refuse(position, "a Reference to a record of type \"" + rule_.refRecordType + "\"", value["recordType"]);
        return;
    }
    references_.push_back({position, std::move(recordId), std::move(recordType)});
}

} // namespace

void CheckFieldValue(const FieldRule &rule, Json::Value &value, std::vector<FailureDetail> &problems,
    std::vector<RecordReference> &references)
{
    ValueCheck(rule, problems, references).Check(rule.type, value, rule.name);
}

} // namespace DriveService
