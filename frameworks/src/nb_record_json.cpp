// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// The JSON forms of records. The form that is sent holds the fields beside the record's own members and the version as
// "baseVersion"; the form that is received holds them under "record" and the version as "version".

#include "nb_record.h"

#include <utility>

#include <json/value.h>

#include "json_helper.h"
#include "log.h"
#include "nb_schema.h"

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
        relationJson["relationName"] = relation.relationName;
        relationJson["recordType"] = relation.recordType;
        relationJson["recordId"] = relation.recordId;
        json.append(std::move(relationJson));
    }
    return json;
}

void ParseResponse(const Json::Value &json, const std::string &key, NBRecordsResponse &response)
{
    const Json::Value *info = JsonHelper::FindMember(json, key);
    if (info == nullptr || !info->isObject()) {
        return;
    }
    response.appId = JsonHelper::GetStringFromJson(*info, "appId");
    response.deviceName = JsonHelper::GetStringFromJson(*info, "deviceName");
    response.time = JsonHelper::GetInt64FromJson(*info, "time");
}

void ParseFields(const Json::Value &fieldsJson, const NBSchemaNode &node, NBFieldMap &fields)
{
    for (auto member = fieldsJson.begin(); member != fieldsJson.end(); ++member) {
        std::string name = member.name();
        auto schemaField = node.fields.find(name);
        if (schemaField == node.fields.end()) {
            NB_LOGD("can find field key %{public}s from schema node", name.c_str());
            continue;
        }
        NBRecordField field;
        if (field.ParseFromJsonValue(schemaField->second, *member)) {
            fields.insert_or_assign(std::move(name), std::move(field));
        }
    }
}
} // namespace

Json::Value NBRecord::ToJsonValue() const
{
    Json::Value json;
    json["recordId"] = recordId_;
    json["recordType"] = recordType_;
    json["deleted"] = isDelete_;
    json["isNew"] = isNew_;
    if (!baseCursor_.empty()) {
        json["baseCursor"] = baseCursor_;
    }
    json["baseVersion"] = static_cast<Json::UInt64>(version_);
    // From here on a field may replace a member above, and a member below may replace a field.
    for (const auto &[name, field] : recordData_) {
        json[name] = IsWrappedAssetList(recordType_, name, field) ? AssetListToJsonValue(field) : field.ToJsonValue();
    }
    if (createTime_ != 0) {
        json["createdTime"] = static_cast<Json::UInt64>(createTime_);
    }
    if (editedTime_ != 0) {
        json["editedTime"] = static_cast<Json::UInt64>(editedTime_);
    }
    if (!relations_.empty()) {
        json["relations"] = RelationsToJsonValue(relations_);
    }
    if (!ownerId_.empty()) {
        json["ownerId"] = ownerId_;
    }
    if (isShared_) {
        json["isShared"] = true;
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
    isDelete_ = JsonHelper::GetBoolFromJson(json, "deleted");
    isNew_ = JsonHelper::GetBoolFromJson(json, "isNew");
    version_ = JsonHelper::GetUInt64FromJson(json, "version");
    createTime_ = JsonHelper::GetUInt64FromJson(json, "createdTime");
    editedTime_ = JsonHelper::GetUInt64FromJson(json, "editedTime");
    ownerId_ = JsonHelper::GetStringFromJson(json, "ownerId");
    shareUri_ = JsonHelper::GetStringFromJson(json, "shareUri");
    privilege_ = JsonHelper::GetUIntFromJson(json, "privilege");
    isShared_ = JsonHelper::GetBoolFromJson(json, "isShared");
    const Json::Value *fieldsJson = JsonHelper::FindMember(json, "record");
    if (fieldsJson != nullptr && fieldsJson->isObject()) {
        ParseFields(*fieldsJson, node->second, recordData_);
    }
    ParseCreateInfoFromJson(json);
    ParseModifyInfoFromJson(json);
    ParseRelationsFromJson(json);
    return true;
}

void NBRecord::ParseCreateInfoFromJson(const Json::Value &json)
{
    ParseResponse(json, "createInfo", createInfo_);
}

void NBRecord::ParseModifyInfoFromJson(const Json::Value &json)
{
    ParseResponse(json, "modifiedInfo", modifiedInfo_);
}

void NBRecord::ParseRelationsFromJson(const Json::Value &json)
{
    const Json::Value *relations = JsonHelper::FindMember(json, "relations");
    if (relations == nullptr || !relations->isArray()) {
        return;
    }
    relations_.clear();
    relations_.reserve(relations->size());
    for (const Json::Value &relationJson : *relations) {
        NBRelation relation;
        relation.relationName = JsonHelper::GetStringFromJson(relationJson, "relationName");
        relation.recordType = JsonHelper::GetStringFromJson(relationJson, "recordType");
        relation.recordId = JsonHelper::GetStringFromJson(relationJson, "recordId");
        relations_.push_back(std::move(relation));
    }
}
} // namespace Nubis
