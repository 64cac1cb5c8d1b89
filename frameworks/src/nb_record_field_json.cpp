// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// The JSON forms of field values. Names of members that stand in the code need no copies in the JSON.

#include "nb_record_field.h"

#include <utility>

#include <json/value.h>

#include "base64.h"
#include "json_helper.h"
#include "log.h"
#include "nb_schema.h"

namespace Nubis {
namespace {
constexpr int32_t MAX_ASSET_OPER_TYPE = 3;

// The member is converted by its own kind here; the schema plays no part in maps.
bool ParseScalar(const Json::Value &json, NBRecordField &field)
{
    return field.ParseIntFromJson(json) || field.ParseDoubleFromJson(json) || field.ParseStringFromJson(json) ||
           field.ParseBoolFromJson(json);
}
} // namespace

Json::Value NBRecordField::ToJsonValue() const
{
    switch (type_) {
        case NB_FIELD_INTEGER:
            return static_cast<Json::Int64>(std::get<NB_FIELD_INTEGER>(value_));
        case NB_FIELD_DOUBLE:
            return std::get<NB_FIELD_DOUBLE>(value_);
        case NB_FIELD_STRING:
            return std::get<NB_FIELD_STRING>(value_);
        case NB_FIELD_BOOLEAN:
            return std::get<NB_FIELD_BOOLEAN>(value_);
        case NB_FIELD_BLOB: {
            std::string text;
            Base64Encode(std::get<NB_FIELD_BLOB>(value_), text);
            return text;
        }
        case NB_FIELD_LIST:
            return FieldListToJsonValue();
        case NB_FIELD_MAP:
            return FieldMapToJsonValue();
        case NB_FIELD_ASSET:
            return FieldAssetToJsonValue();
        case NB_FIELD_REFERENCE:
            return FieldReferenceToJsonValue();
        default:
            return Json::Value();
    }
}

Json::Value NBRecordField::FieldListToJsonValue() const
{
    Json::Value json;
    for (const NBRecordField &element : std::get<NB_FIELD_LIST>(value_)) {
        json.append(element.ToJsonValue());
    }
    return json;
}

Json::Value NBRecordField::FieldMapToJsonValue() const
{
    Json::Value json;
    for (const auto &[key, element] : std::get<NB_FIELD_MAP>(value_)) {
        json[key] = element.ToJsonValue();
    }
    return json;
}

Json::Value NBRecordField::FieldAssetToJsonValue() const
{
    return AssetToJsonValue(std::get<NB_FIELD_ASSET>(value_).Get());
}

Json::Value NBRecordField::FieldReferenceToJsonValue() const
{
    const NBReference &reference = std::get<NB_FIELD_REFERENCE>(value_).Get();
    Json::Value json;
    json[Json::StaticString("recordId")] = reference.recordId;
    json[Json::StaticString("recordType")] = reference.recordType;
    return json;
}

bool NBRecordField::ParseFromJsonValue(const NBSchemaField &schemaField, const Json::Value &json)
{
    type_ = schemaField.type;
    switch (type_) {
        case NB_FIELD_NULL:
            return true;
        case NB_FIELD_INTEGER:
            return ParseIntFromJson(json);
        case NB_FIELD_DOUBLE:
            return ParseDoubleFromJson(json);
        case NB_FIELD_STRING:
            return ParseStringFromJson(json);
        case NB_FIELD_BOOLEAN:
            return ParseBoolFromJson(json);
        case NB_FIELD_BLOB:
            return ParseBlobFromJson(json);
        case NB_FIELD_LIST:
            return ParseListFromJson(schemaField.listType, json);
        case NB_FIELD_MAP:
            return ParseMapFromJson(json);
        case NB_FIELD_ASSET:
            return ParseAssetFromJson(json);
        case NB_FIELD_REFERENCE:
            return ParseReferenceFromJson(json);
        default:
            return false;
    }
}

template <NBRecordFieldType Type, typename T>
bool NBRecordField::SetValue(T &&value)
{
    type_ = Type;
    value_.emplace<Type>(std::forward<T>(value));
    return true;
}

bool NBRecordField::ParseIntFromJson(const Json::Value &json)
{
    return json.isInt64() && SetValue<NB_FIELD_INTEGER>(json.asInt64());
}

bool NBRecordField::ParseDoubleFromJson(const Json::Value &json)
{
    return json.isNumeric() && SetValue<NB_FIELD_DOUBLE>(json.asDouble());
}

bool NBRecordField::ParseStringFromJson(const Json::Value &json)
{
    return json.isString() && SetValue<NB_FIELD_STRING>(json.asString());
}

bool NBRecordField::ParseBoolFromJson(const Json::Value &json)
{
    return json.isBool() && SetValue<NB_FIELD_BOOLEAN>(json.asBool());
}

bool NBRecordField::ParseBlobFromJson(const Json::Value &json)
{
    if (!json.isString()) {
        return false;
    }
    std::vector<uint8_t> bytes;
    if (!Base64Decode(json.asString(), bytes) && value_.index() == NB_FIELD_BLOB) {
        type_ = NB_FIELD_BLOB;
        return true;
    }
    return SetValue<NB_FIELD_BLOB>(std::move(bytes));
}

bool NBRecordField::ParseListFromJson(NBRecordFieldType listType, const Json::Value &json)
{
    if (!json.isArray()) {
        return false;
    }
    NBSchemaField elementSchema;
    elementSchema.type = listType;
    elementSchema.listType = listType;
    NBFieldList elements;
    elements.reserve(json.size());
    bool isGood = true;
    std::string text;
    for (const Json::Value &elementJson : json) {
        if (elements.emplace_back().ParseFromJsonValue(elementSchema, elementJson)) {
            continue;
        }
        elements.pop_back();
        if (isGood) {
            // The whole list is the text of every message; it is written once however many elements are bad.
            text = JsonHelper::JsonToString(json);
        }
        NB_LOGE("Parse field list from json failed, listType:%{public}d, data:%{public}s", static_cast<int>(listType),
            text.c_str());
        isGood = false;
    }
    SetValue<NB_FIELD_LIST>(std::move(elements));
    return isGood;
}

bool NBRecordField::ParseMapFromJson(const Json::Value &json)
{
    if (!json.isObject()) {
        return false;
    }
    NBFieldMap elements;
    bool isGood = true;
    for (auto member = json.begin(); member != json.end(); ++member) {
        NBRecordField element;
        if (ParseScalar(*member, element)) {
            elements.insert_or_assign(member.name(), std::move(element));
            continue;
        }
        NB_LOGE("Parse field map from json failed, data:%{public}s", JsonHelper::JsonToString(*member).c_str());
        isGood = false;
    }
    SetValue<NB_FIELD_MAP>(std::move(elements));
    return isGood;
}

bool NBRecordField::ParseAssetFromJson(const Json::Value &json)
{
    return json.isObject() && SetValue<NB_FIELD_ASSET>(ParseAssetFromJsonValue(json));
}

bool NBRecordField::ParseReferenceFromJson(const Json::Value &json)
{
    if (!json.isObject()) {
        return false;
    }
    NBReference reference;
    reference.recordId = JsonHelper::GetStringFromJson(json, "recordId");
    reference.recordType = JsonHelper::GetStringFromJson(json, "recordType");
    return SetValue<NB_FIELD_REFERENCE>(std::move(reference));
}

Json::Value AssetToJsonValue(const NBAsset &asset)
{
    Json::Value json;
    json[Json::StaticString("uri")] = asset.uri;
    json[Json::StaticString("assetName")] = asset.assetName;
    json[Json::StaticString("assetOperType")] = asset.assetOperType;
    json[Json::StaticString("sha256")] = asset.sha256;
    json[Json::StaticString("version")] = static_cast<Json::UInt64>(asset.version);
    json[Json::StaticString("assetId")] = asset.assetId;
    json[Json::StaticString("subPath")] = asset.subPath;
    json[Json::StaticString("exCheckInfo")] = asset.exCheckInfo;
    json[Json::StaticString("size")] = static_cast<Json::UInt64>(asset.size);
    return json;
}

NBAsset ParseAssetFromJsonValue(const Json::Value &json)
{
    NBAsset asset;
    asset.uri = JsonHelper::GetStringFromJson(json, "uri");
    asset.assetName = JsonHelper::GetStringFromJson(json, "assetName");
    int32_t operType = JsonHelper::GetIntFromJson(json, "assetOperType");
    if (operType >= 0 && operType <= MAX_ASSET_OPER_TYPE) {
        asset.assetOperType = operType;
    }
    asset.sha256 = JsonHelper::GetStringFromJson(json, "sha256");
    asset.version = JsonHelper::GetUInt64FromJson(json, "version");
    asset.assetId = JsonHelper::GetStringFromJson(json, "assetId");
    asset.subPath = JsonHelper::GetStringFromJson(json, "subPath");
    asset.exCheckInfo = JsonHelper::GetStringFromJson(json, "exCheckInfo");
    asset.size = JsonHelper::GetUInt64FromJson(json, "size");
    asset.fd = JsonHelper::GetIntFromJson(json, "fd", -1);
    return asset;
}

Json::Value AssetListToJsonValue(const NBRecordField &field)
{
    Json::Value json;
    const auto *elements = std::get_if<NB_FIELD_LIST>(&field.value_);
    if (field.type_ != NB_FIELD_LIST || elements == nullptr) {
        return json;
    }
    for (const NBRecordField &element : *elements) {
        Json::Value wrapper;
        wrapper[Json::StaticString("asset")] = element.ToJsonValue();
        json.append(std::move(wrapper));
    }
    return json;
}
} // namespace Nubis
