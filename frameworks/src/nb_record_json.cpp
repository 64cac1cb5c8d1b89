// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// The JSON forms of records. The form that is sent holds the fields beside the record's own members and the version as
// "baseVersion"; the form that is received holds them under "record" and the version as "version". Names of members that
// stand in the code need no copies in the JSON.

#include "nb_record.h"

#include <iterator>
#include <string_view>
#include <utility>

#include <json/value.h>

#include "json_helper.h"
#include "log.h"
#include "nb_schema.h"
#include "ordered_members.h"

namespace Nubis {
namespace {
// The one field whose assets the service expects wrapped.
bool IsWrappedAssetList(const std::string &recordType, const std::string &fieldName, const NBRecordField &field)
{
    return recordType == "media" && fieldName == "attachments" && field.GetType() == NB_FIELD_LIST;
}

Json::Value RelationsToJsonValue(const std::vector<NBRelation> &relations)
{
    Json::Value json(Json::arrayValue);
    for (const NBRelation &relation : relations) {
        Json::Value relationJson;
        relationJson[Json::StaticString("relationName")] = relation.relationName;
        relationJson[Json::StaticString("recordType")] = relation.recordType;
        relationJson[Json::StaticString("recordId")] = relation.recordId;
        json.append(std::move(relationJson));
    }
    return json;
}

void ParseResponse(const Json::Value *info, NBRecordsResponse &response)
{
    if (info == nullptr || !info->isObject()) {
        return;
    }
    OrderedMembers members(*info);
    response.appId = JsonHelper::StringOf(members.Find("appId"));
    response.deviceName = JsonHelper::StringOf(members.Find("deviceName"));
    response.time = JsonHelper::Int64Of(members.Find("time"));
}

void ParseRelations(const Json::Value *json, std::vector<NBRelation> &relations)
{
    if (json == nullptr || !json->isArray()) {
        return;
    }
    relations.clear();
    relations.reserve(json->size());
    for (const Json::Value &relationJson : *json) {
        NBRelation relation;
        relation.relationName = JsonHelper::GetStringFromJson(relationJson, "relationName");
        relation.recordType = JsonHelper::GetStringFromJson(relationJson, "recordType");
        relation.recordId = JsonHelper::GetStringFromJson(relationJson, "recordId");
        relations.push_back(std::move(relation));
    }
}

// Replaces the field of this name, or adds one at `place`, if the JSON fits. Returns the place behind it.
NBFieldMap::iterator ParseField(const std::string &name, const NBSchemaField &schemaField, const Json::Value &json,
    NBFieldMap &fields, NBFieldMap::iterator place)
{
    const size_t before = fields.size();
    place = fields.try_emplace(place, name);
    if (fields.size() == before) {
        NBRecordField field;
        if (field.ParseFromJsonValue(schemaField, json)) {
            place->second = std::move(field);
        }
    } else if (!place->second.ParseFromJsonValue(schemaField, json)) {
        return fields.erase(place);
    }
    return std::next(place);
}

// Members, schema and fields have the same order, so that what belongs to the next member is mostly the next one.
void ParseFields(const Json::Value &fieldsJson, const NBSchemaNode &node, NBFieldMap &fields)
{
    auto schemaField = node.fields.begin();
    auto place = fields.begin();
    for (auto member = fieldsJson.begin(); member != fieldsJson.end(); ++member) {
        const std::string_view name = OrderedMembers::NameOf(member);
        if (schemaField == node.fields.end() || schemaField->first != name) {
            schemaField = node.fields.find(std::string(name));
        }
        if (schemaField == node.fields.end()) {
            NB_LOGD("can find field key %{public}s from schema node", member.name().c_str());
            continue;
        }
        place = ParseField(schemaField->first, schemaField->second, *member, fields, place);
        ++schemaField;
    }
}
} // namespace

Json::Value NBRecord::ToJsonValue() const
{
    Json::Value json;
    json[Json::StaticString("recordId")] = recordId_;
    json[Json::StaticString("recordType")] = recordType_;
    json[Json::StaticString("deleted")] = isDelete_;
    json[Json::StaticString("isNew")] = isNew_;
    if (!baseCursor_.empty()) {
        json[Json::StaticString("baseCursor")] = baseCursor_;
    }
    json[Json::StaticString("baseVersion")] = static_cast<Json::UInt64>(version_);
    // From here on a field may replace a member above, and a member below may replace a field.
    for (const auto &[name, field] : recordData_) {
        json[name] = IsWrappedAssetList(recordType_, name, field) ? AssetListToJsonValue(field) : field.ToJsonValue();
    }
    if (createTime_ != 0) {
        json[Json::StaticString("createdTime")] = static_cast<Json::UInt64>(createTime_);
    }
    if (editedTime_ != 0) {
        json[Json::StaticString("editedTime")] = static_cast<Json::UInt64>(editedTime_);
    }
    if (!relations_.empty()) {
        json[Json::StaticString("relations")] = RelationsToJsonValue(relations_);
    }
    if (!ownerId_.empty()) {
        json[Json::StaticString("ownerId")] = ownerId_;
    }
    if (isShared_) {
        json[Json::StaticString("isShared")] = true;
    }
    return json;
}

bool NBRecord::ParseFromJsonValue(const NBSchema &schema, const Json::Value &json)
{
    if (!json.isObject()) {
        return false;
    }
    recordId_ = JsonHelper::GetStringFromJson(json, "recordId");
    recordType_ = JsonHelper::GetStringFromJson(json, "recordType");
    auto node = schema.recordTypes.find(recordType_);
    if (node == schema.recordTypes.end()) {
        NB_LOGE("parse record failed, can not find schema record type:%{public}s", recordType_.c_str());
        return false;
    }
    // By their names, ascending.
    OrderedMembers members(json);
    ParseResponse(members.Find("createInfo"), createInfo_);
    createTime_ = JsonHelper::UInt64Of(members.Find("createdTime"));
    isDelete_ = JsonHelper::BoolOf(members.Find("deleted"));
    editedTime_ = JsonHelper::UInt64Of(members.Find("editedTime"));
    isNew_ = JsonHelper::BoolOf(members.Find("isNew"));
    isShared_ = JsonHelper::BoolOf(members.Find("isShared"));
    ParseResponse(members.Find("modifiedInfo"), modifiedInfo_);
    ownerId_ = JsonHelper::StringOf(members.Find("ownerId"));
    privilege_ = JsonHelper::UIntOf(members.Find("privilege"));
    const Json::Value *fieldsJson = members.Find("record");
    if (fieldsJson != nullptr && fieldsJson->isObject()) {
        ParseFields(*fieldsJson, node->second, recordData_);
    }
    ParseRelations(members.Find("relations"), relations_);
    shareUri_ = JsonHelper::StringOf(members.Find("shareUri"));
    version_ = JsonHelper::UInt64Of(members.Find("version"));
    return true;
}

void NBRecord::ParseCreateInfoFromJson(const Json::Value &json)
{
    ParseResponse(JsonHelper::FindMember(json, "createInfo"), createInfo_);
}

void NBRecord::ParseModifyInfoFromJson(const Json::Value &json)
{
    ParseResponse(JsonHelper::FindMember(json, "modifiedInfo"), modifiedInfo_);
}

void NBRecord::ParseRelationsFromJson(const Json::Value &json)
{
    ParseRelations(JsonHelper::FindMember(json, "relations"), relations_);
}
} // namespace Nubis
