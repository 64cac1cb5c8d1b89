// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nubis_kit.h"

#include <utility>

#include <json/value.h>

#include "json_helper.h"
#include "log.h"

// The readers of the app catalogue's JSON.
namespace Nubis {
namespace {
constexpr int SWITCH_STATUS_END = 4;
constexpr uint32_t DEFAULT_BATCH_NUMBER = 10;
constexpr uint32_t DEFAULT_UPLOAD_BATCH_NUMBER = 30;
constexpr uint32_t DEFAULT_UPLOAD_BODY_SIZE = 1572864;
constexpr int32_t DEFAULT_VERIFY_REMAIN_SPACE = 1;

// The member when it is an array, else null.
const Json::Value *FindArray(const Json::Value &json, const std::string &key)
{
    const Json::Value *member = JsonHelper::FindMember(json, key);
    return member != nullptr && member->isArray() ? member : nullptr;
}

NBError ServerErrorOf(const Json::Value &serverError, const Json::Value &reply)
{
    NBError error;
    error.ParseErrorFromJson(serverError, JsonHelper::GetIntFromJson(reply, "code"));
    return error;
}
} // namespace

bool NubisNative::StringToRecordFieldType(const std::string &name, NBRecordFieldType &type)
{
    static const auto *types = new std::map<std::string, NBRecordFieldType>{
        {"Null", NB_FIELD_NULL},
        {"Integer", NB_FIELD_INTEGER},
        {"Long", NB_FIELD_INTEGER},
        {"Double", NB_FIELD_DOUBLE},
        {"String", NB_FIELD_STRING},
        {"Boolean", NB_FIELD_BOOLEAN},
        {"Blob", NB_FIELD_BLOB},
        {"List", NB_FIELD_LIST},
        {"Map", NB_FIELD_MAP},
        {"Asset", NB_FIELD_ASSET},
        {"Reference", NB_FIELD_REFERENCE},
    };
    const auto found = types->find(name);
    type = found == types->end() ? NB_FIELD_NULL : found->second;
    return found != types->end();
}

bool NubisNative::IntToSwitchStatus(int value, NBAppSwitchStatus &status)
{
    const bool isKnown = value < SWITCH_STATUS_END;
    status = isKnown ? static_cast<NBAppSwitchStatus>(value) : NB_APP_SWITCH_UNKNOWN;
    return isKnown;
}

NBError NubisNative::GetAppInfoFromJson(const Json::Value &reply, std::map<std::string, NBAppInfo> &appInfos)
{
    if (!reply.isObject()) {
        return NBError(NB_LOCAL_BAD_DATA);
    }
    const Json::Value *serverError = JsonHelper::FindMember(reply, "error");
    if (serverError != nullptr) {
        NB_LOGE("get app info failed, the service has error, the msg is %{public}s",
            JsonHelper::JsonToString(reply).c_str());
        return ServerErrorOf(*serverError, reply);
    }
    const Json::Value *apps = JsonHelper::FindMember(reply, "appInfo");
    if (apps == nullptr) {
        return NBError();
    }
    if (!apps->isArray()) {
        NB_LOGE("get app info failed, appInfo is not array");
        return NBError(NB_LOCAL_BAD_DATA);
    }
    for (const auto &appJson : *apps) {
        NBAppInfo appInfo;
        appInfo.bundleName = JsonHelper::GetStringFromJson(appJson, "bundleName");
        appInfo.appId = JsonHelper::GetStringFromJson(appJson, "appId");
        appInfo.sha256 = JsonHelper::GetStringFromJson(appJson, "sha256");
        appInfo.schemaGroupVersion = JsonHelper::GetIntFromJson(appJson, "schemaGroupVersion");
        appInfo.enableCloud = JsonHelper::GetIntFromJson(appJson, "enableCloud");
        const int switchStatus = JsonHelper::GetIntFromJson(appJson, "switchStatus");
        if (!IntToSwitchStatus(switchStatus, appInfo.switchStatus)) {
            NB_LOGE("get app info switchs status is unknown, the status is %{public}d", switchStatus);
        }
        appInfo.verifyRemainSpace =
            JsonHelper::GetIntFromJson(appJson, "verifyRemainSpace", DEFAULT_VERIFY_REMAIN_SPACE);
        GetAppContainerFromJSon(appJson, appInfo);
        if (!appInfo.bundleName.empty()) {
            std::string bundleName = appInfo.bundleName;
            appInfos.insert_or_assign(std::move(bundleName), std::move(appInfo));
        }
    }
    return NBError();
}

void NubisNative::GetAppContainerFromJSon(const Json::Value &appJson, NBAppInfo &appInfo)
{
    const Json::Value *defaultContainer = JsonHelper::FindMember(appJson, "defaultContainer");
    if (defaultContainer != nullptr) {
        appInfo.defaultContainer.bundleName = appInfo.bundleName;
        if (!GetContainerInfoFromJson(*defaultContainer, appInfo.defaultContainer)) {
            NB_LOGE("get app info defaultContainer failed, container info:%{public}s",
                JsonHelper::JsonToString(*defaultContainer).c_str());
        }
    }
    const Json::Value *sharedContainers = FindArray(appJson, "sharedContainer");
    if (sharedContainers == nullptr) {
        return;
    }
    for (const auto &containerJson : *sharedContainers) {
        NBContainerInfo container;
        container.bundleName = appInfo.bundleName;
        if (GetContainerInfoFromJson(containerJson, container)) {
            appInfo.sharedContainers.push_back(std::move(container));
        }
    }
}

bool NubisNative::GetContainerInfoFromJson(const Json::Value &containerJson, NBContainerInfo &info)
{
    if (!containerJson.isObject()) {
        NB_LOGE("get container info failed, data is not object");
        return false;
    }
    info.containerName = JsonHelper::GetStringFromJson(containerJson, "name");
    info.databaseName = JsonHelper::GetStringFromJson(containerJson, "databaseName");
    info.maxBatchNumber = JsonHelper::GetUIntFromJson(containerJson, "maxBatchNumber", DEFAULT_BATCH_NUMBER);
    const Json::Value *settings = JsonHelper::FindMember(containerJson, "settings");
    info.optimisticLock = settings == nullptr ? 0 : JsonHelper::GetIntFromJson(*settings, "optimisticLock");
    NB_LOGI("containerinfo app settings optimisticLock :%{public}d", info.optimisticLock);
    const Json::Value *schema = JsonHelper::FindMember(containerJson, "schema");
    if (schema == nullptr || !schema->isObject()) {
        NB_LOGE("get container info failed, no have schema or schema is not object");
        return false;
    }
    info.schema.version = JsonHelper::GetIntFromJson(*schema, "version");
    info.schema.schemaData = JsonHelper::JsonToString(*schema);
    const Json::Value *recordTypes = FindArray(*schema, "recordTypes");
    if (recordTypes == nullptr) {
        NB_LOGE("get container info failed, no have recordTypes or recordTypes is not array");
        return false;
    }
    for (const auto &recordTypeJson : *recordTypes) {
        if (!recordTypeJson.isObject()) {
            continue;
        }
        NBSchemaNode node;
        node.recordType = JsonHelper::GetStringFromJson(recordTypeJson, "recordType");
        node.tableName = JsonHelper::GetStringFromJson(recordTypeJson, "tableName");
        node.sharedTableName = JsonHelper::GetStringFromJson(recordTypeJson, "sharedTableName");
        GetSchemaNodesFromRecord(recordTypeJson, node.fields);
        GetDupCheckFieldsFromRecord(recordTypeJson, node.dupCheckFields);
        GetRelationsFromRecord(recordTypeJson, node.relations);
        if (!node.recordType.empty()) {
            info.schema.orderTables.push_back({node.recordType, node.tableName});
            std::string recordType = node.recordType;
            info.schema.recordTypes.insert_or_assign(std::move(recordType), std::move(node));
        }
    }
    return true;
}

void NubisNative::GetSchemaNodesFromRecord(
    const Json::Value &recordTypeJson, std::map<std::string, NBSchemaField> &fields)
{
    const Json::Value *fieldArray = FindArray(recordTypeJson, "fields");
    if (fieldArray == nullptr) {
        return;
    }
    for (const auto &fieldJson : *fieldArray) {
        if (!fieldJson.isObject()) {
            continue;
        }
        NBSchemaField field;
        field.name = JsonHelper::GetStringFromJson(fieldJson, "name");
        if (!StringToRecordFieldType(JsonHelper::GetStringFromJson(fieldJson, "type"), field.type)) {
            NB_LOGE("get container info failed, the schema field type is unknown, filed: %{public}s",
                JsonHelper::JsonToString(fieldJson).c_str());
        }
        field.primary = JsonHelper::GetBoolFromJson(fieldJson, "primary");
        field.nullable = JsonHelper::GetBoolFromJson(fieldJson, "nullable");
        field.sortable = JsonHelper::GetBoolFromJson(fieldJson, "sortable");
        field.searchable = JsonHelper::GetBoolFromJson(fieldJson, "searchable");
        field.queryable = JsonHelper::GetBoolFromJson(fieldJson, "queryable");
        const std::string listType = JsonHelper::GetStringFromJson(fieldJson, "listType");
        if (!StringToRecordFieldType(listType, field.listType) && field.type == NB_FIELD_LIST) {
            NB_LOGE("get container info failed, the schema field list type is unknown, filed: %{public}s",
                JsonHelper::JsonToString(fieldJson).c_str());
        }
        const Json::Value *reference = JsonHelper::FindMember(fieldJson, "reference");
        if (reference != nullptr) {
            field.refRecordType = JsonHelper::GetStringFromJson(*reference, "recordType");
        }
        if (!field.name.empty()) {
            std::string name = field.name;
            fields.insert_or_assign(std::move(name), std::move(field));
        }
    }
}

void NubisNative::GetDupCheckFieldsFromRecord(
    const Json::Value &recordTypeJson, std::vector<std::string> &dupCheckFields)
{
    const Json::Value *names = FindArray(recordTypeJson, "dupCheckFields");
    if (names == nullptr) {
        return;
    }
    for (const auto &name : *names) {
        if (name.isString()) {
            dupCheckFields.push_back(name.asString());
        }
    }
}

void NubisNative::GetRelationsFromRecord(const Json::Value &recordTypeJson, std::vector<NBSchemaRelation> &relations)
{
    const Json::Value *relationArray = FindArray(recordTypeJson, "relations");
    if (relationArray == nullptr) {
        return;
    }
    for (const auto &relationJson : *relationArray) {
        if (!relationJson.isObject()) {
            NB_LOGE("get relations failed, the relation is not object, relation: %{public}s",
                JsonHelper::JsonToString(relationJson).c_str());
            continue;
        }
        NBSchemaRelation relation;
        relation.relationName = JsonHelper::GetStringFromJson(relationJson, "relationName");
        relation.recordType = JsonHelper::GetStringFromJson(relationJson, "recordType");
        const Json::Value *refFields = JsonHelper::FindMember(relationJson, "refField");
        if (refFields != nullptr && refFields->isObject()) {
            for (const auto &name : refFields->getMemberNames()) {
                relation.refFields[name] = JsonHelper::GetStringFromJson(*refFields, name);
            }
        }
        relations.push_back(std::move(relation));
    }
}

NBError NubisNative::GetAppSwitchsFromJson(const Json::Value &reply, std::map<std::string, NBAppSwitchStatus> &switches)
{
    if (!reply.isObject()) {
        return NBError(NB_LOCAL_BAD_DATA);
    }
    const Json::Value *serverError = JsonHelper::FindMember(reply, "error");
    if (serverError != nullptr) {
        NB_LOGE("get app switchs failed, the service has error, the msg is %{public}s",
            JsonHelper::JsonToString(reply).c_str());
        return ServerErrorOf(*serverError, reply);
    }
    const Json::Value *statuses = JsonHelper::FindMember(reply, "appSwitchStatus");
    if (statuses == nullptr) {
        return NBError();
    }
    if (!statuses->isArray()) {
        NB_LOGE("get app switchs failed, switchstatus is not array");
        return NBError(NB_LOCAL_BAD_DATA);
    }
    for (const auto &item : *statuses) {
        const std::string bundleName = JsonHelper::GetStringFromJson(item, "bundleName");
        const int value = JsonHelper::GetIntFromJson(item, "switchStatus");
        NBAppSwitchStatus status = NB_APP_SWITCH_0;
        if (!IntToSwitchStatus(value, status)) {
            NB_LOGE("get app switchs status is unknown, the status is %{public}d", value);
        }
        if (!bundleName.empty()) {
            switches.insert_or_assign(bundleName, status);
        }
    }
    return NBError();
}

NBError NubisNative::GetBriefInfoFromJson(const Json::Value &reply, std::vector<NBAppBriefInfo> &infos, bool &hasMore,
    int &nextIndex, NBUploadSize &uploadSize)
{
    if (!reply.isObject()) {
        return NBError(NB_LOCAL_BAD_DATA);
    }
    const Json::Value *briefInfos = JsonHelper::FindMember(reply, "appBriefInfos");
    if (briefInfos != nullptr && !briefInfos->isArray()) {
        NB_LOGE("get app brief info failed, appInfo is not array");
        return NBError(NB_LOCAL_BAD_DATA);
    }
    for (Json::ArrayIndex i = 0; briefInfos != nullptr && i < briefInfos->size(); ++i) {
        const Json::Value &item = (*briefInfos)[i];
        NBAppBriefInfo info;
        info.bundleName = JsonHelper::GetStringFromJson(item, "bundleName");
        info.appId = JsonHelper::GetStringFromJson(item, "appId");
        info.schemaGroupVersion = JsonHelper::GetIntFromJson(item, "schemaGroupVersion");
        info.enableCloud = JsonHelper::GetIntFromJson(item, "enableCloud");
        const int switchStatus = JsonHelper::GetIntFromJson(item, "switchStatus");
        if (!IntToSwitchStatus(switchStatus, info.switchStatus)) {
            NB_LOGE("get app brief info switchs status is unknown, the status is %{public}d", switchStatus);
        }
        info.verifyRemainSpace = JsonHelper::GetIntFromJson(item, "verifyRemainSpace", DEFAULT_VERIFY_REMAIN_SPACE);
        infos.push_back(std::move(info));
    }
    hasMore = JsonHelper::GetBoolFromJson(reply, "hasMore");
    nextIndex = JsonHelper::GetIntFromJson(reply, "nextIndex");
    uploadSize.maxBatchNumber = JsonHelper::GetUIntFromJson(reply, "maxBatchNumber", DEFAULT_UPLOAD_BATCH_NUMBER);
    uploadSize.maxBodySize = JsonHelper::GetUIntFromJson(reply, "maxBodySize", DEFAULT_UPLOAD_BODY_SIZE);
    return NBError();
}
} // namespace Nubis
