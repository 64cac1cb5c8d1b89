// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kit_fixture.h"
#include "log_capture.h"

namespace {
using namespace Nubis;
using NubisTest::BUNDLE;
using NubisTest::Catalogue;
using NubisTest::ParseJson;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class AppInfoTest : public NubisTest::KitTest {};

TEST_F(AppInfoTest, ACatalogueEntryIsReadAsAWhole)
{
    const Json::Value reply = ParseJson(R"({"appInfo": [{"bundleName": "b", "appId": "id", "sha256": "s",
        "schemaGroupVersion": 3, "enableCloud": 1, "switchStatus": 2, "verifyRemainSpace": 0,
        "defaultContainer": {"name": "main", "databaseName": "db", "maxBatchNumber": 5, "settings":
            {"optimisticLock": 1}, "schema": {"version": 8, "recordTypes": [7,
            {"recordType": "z", "tableName": "tz", "sharedTableName": "sz", "dupCheckFields": ["a", 1, "b"],
             "relations": [5, {"relationName": "r", "recordType": "y", "refField": {"f": "g", "n": 1}}, {}],
             "fields": [{"name": "a", "type": "Long", "primary": true, "queryable": true, "reference":
             {"recordType": "y"}}, {"type": "String"}, "x"]},
            {"recordType": "y"}, {"tableName": "nameless"}]}}}]})");
    NubisTest::LogCapture log;
    std::map<std::string, NBAppInfo> apps;
    ASSERT_FALSE(kit_->GetAppInfoFromJson(reply, apps).HasError());
    EXPECT_THAT(log.TakeErrors(), ElementsAre("get relations failed, the relation is not object, relation: 5"));
    const NBAppInfo &app = apps.at("b");
    EXPECT_EQ(app.schemaGroupVersion, 3);
    EXPECT_EQ(app.switchStatus, 2);
    EXPECT_EQ(app.verifyRemainSpace, 0);
    const NBContainerInfo &container = app.defaultContainer;
    EXPECT_EQ(container.bundleName, "b");
    EXPECT_EQ(container.maxBatchNumber, 5U);
    EXPECT_EQ(container.optimisticLock, 1);
    EXPECT_EQ(container.schema.version, 8);
    EXPECT_EQ(ParseJson(container.schema.schemaData), reply["appInfo"][0]["defaultContainer"]["schema"]);
    ASSERT_EQ(container.schema.orderTables.size(), 2U);
    EXPECT_EQ(container.schema.orderTables[0].recordType, "z");
    EXPECT_EQ(container.schema.orderTables[1].recordType, "y");
    const NBSchemaNode &node = container.schema.recordTypes.at("z");
    EXPECT_EQ(node.sharedTableName, "sz");
    EXPECT_THAT(node.dupCheckFields, ElementsAre("a", "b"));
    ASSERT_EQ(node.relations.size(), 2U);
    EXPECT_THAT(node.relations[0].refFields, ElementsAre(testing::Pair("f", "g"), testing::Pair("n", "")));
    ASSERT_EQ(node.fields.size(), 1U);
    const NBSchemaField &field = node.fields.at("a");
    EXPECT_EQ(field.type, NB_FIELD_INTEGER);
    EXPECT_TRUE(field.primary && field.queryable && !field.nullable && !field.sortable && !field.searchable);
    EXPECT_EQ(field.refRecordType, "y");
}

TEST_F(AppInfoTest, FieldTypesAreKnownByExactNames)
{
    const std::map<std::string, int> types = {{"Null", 0}, {"Integer", 1}, {"Long", 1}, {"Double", 2}, {"String", 3},
        {"Boolean", 4}, {"Blob", 5}, {"List", 6}, {"Map", 7}, {"Asset", 8}, {"Reference", 9}};
    NBRecordFieldType type = NB_FIELD_BLOB;
    for (const auto &[name, value] : types) {
        EXPECT_TRUE(kit_->StringToRecordFieldType(name, type));
        EXPECT_EQ(static_cast<int>(type), value);
    }
    EXPECT_FALSE(kit_->StringToRecordFieldType("long", type));
    EXPECT_EQ(type, NB_FIELD_NULL);

    NubisTest::LogCapture log;
    std::map<std::string, NBSchemaField> fields;
    kit_->GetSchemaNodesFromRecord(ParseJson(R"({"fields": [{"name": "a", "type": "long"},
        {"name": "b", "type": "List"}, {"name": "c", "type": "String"},
        {"name": "d", "type": "List", "listType": "Asset"}]})"),
        fields);
    EXPECT_EQ(fields.at("a").type, NB_FIELD_NULL);
    EXPECT_EQ(fields.at("b").listType, NB_FIELD_NULL);
    EXPECT_EQ(fields.at("d").listType, NB_FIELD_ASSET);
    EXPECT_EQ(fields.size(), 4U);
    EXPECT_THAT(log.TakeErrors(), ElementsAre(HasSubstr("the schema field type is unknown, filed: {\"name\":\"a\""),
                                      HasSubstr("the schema field list type is unknown, filed: {\"name\":\"b\"")));
}

TEST_F(AppInfoTest, ABrokenContainerIsLeftOutAndABrokenDefaultOneKept)
{
    Json::Value reply = Catalogue();
    Json::Value &app = reply["appInfo"][0];
    app["defaultContainer"]["schema"].removeMember("recordTypes");
    app["sharedContainer"][0]["schema"].removeMember("recordTypes");
    app["sharedContainer"].append(5);
    app["sharedContainer"].append(ParseJson(R"({"name": "no schema"})"));
    app["switchStatus"] = 9;
    reply["appInfo"].append(ParseJson(R"({"defaultContainer": 5})"));
    NubisTest::LogCapture log;
    std::map<std::string, NBAppInfo> apps;
    ASSERT_FALSE(kit_->GetAppInfoFromJson(reply, apps).HasError());
    ASSERT_EQ(apps.size(), 1U);
    EXPECT_EQ(apps.at(BUNDLE).defaultContainer.containerName, "main");
    EXPECT_EQ(apps.at(BUNDLE).defaultContainer.maxBatchNumber, 10U);
    EXPECT_THAT(apps.at(BUNDLE).sharedContainers, IsEmpty());
    EXPECT_EQ(apps.at(BUNDLE).switchStatus, NB_APP_SWITCH_UNKNOWN);
    const std::string noTypes = "get container info failed, no have recordTypes or recordTypes is not array";
    EXPECT_THAT(log.TakeErrors(),
        ElementsAre("get app info switchs status is unknown, the status is 9", noTypes,
            StartsWith("get app info defaultContainer failed, container info:{"), noTypes,
            "get container info failed, data is not object",
            "get container info failed, no have schema or schema is not object",
            "get container info failed, data is not object", "get app info defaultContainer failed, container info:5"));
}

TEST_F(AppInfoTest, BrokenRepliesAreErrorsAndNeverMore)
{
    std::map<std::string, NBAppInfo> apps;
    std::map<std::string, NBAppSwitchStatus> switches;
    EXPECT_EQ(kit_->GetAppInfoFromJson(Json::Value(), apps).GetLocalErrorCode(), 3);
    EXPECT_EQ(kit_->GetAppInfoFromJson(ParseJson(R"({"appInfo": {}})"), apps).GetLocalErrorCode(), 3);
    EXPECT_EQ(kit_->GetAppInfoFromJson(ParseJson(R"({"error": {"code": 8}})"), apps).GetServerErrorCode(), 8);
    EXPECT_FALSE(kit_->GetAppInfoFromJson(ParseJson("{}"), apps).HasError());
    EXPECT_EQ(kit_->GetAppSwitchsFromJson(ParseJson("[]"), switches).GetLocalErrorCode(), 3);
    EXPECT_EQ(kit_->GetAppSwitchsFromJson(ParseJson(R"({"appSwitchStatus": 1})"), switches).GetLocalErrorCode(), 3);
    for (Json::Value element :
        {Catalogue()["appInfo"][0], Catalogue()["appInfo"][0]["defaultContainer"], NubisTest::NoteSchema(1),
            NubisTest::NoteSchema(1)["recordTypes"][0], NubisTest::NoteSchema(1)["recordTypes"][0]["fields"][0]}) {
        for (const auto &spoilt : NubisTest::SpoilEachMember(element)) {
            Json::Value reply;
            reply["appInfo"].append(spoilt);
            reply["appInfo"].append(spoilt)["defaultContainer"] = spoilt;
            reply["appSwitchStatus"].append(spoilt);
            kit_->GetAppInfoFromJson(reply, apps);
            kit_->GetAppSwitchsFromJson(reply, switches);
            NBContainerInfo container;
            kit_->GetContainerInfoFromJson(spoilt, container);
            NBSchemaNode node;
            kit_->GetSchemaNodesFromRecord(spoilt, node.fields);
            kit_->GetRelationsFromRecord(spoilt, node.relations);
            kit_->GetDupCheckFieldsFromRecord(spoilt, node.dupCheckFields);
        }
    }
}

TEST_F(AppInfoTest, LiveDatabasesGetASchemaOnlyWhenGroupAndSchemaChanged)
{
    NubisTest::LogCapture log;
    kit_->GetContainer(BUNDLE, "main");
    kit_->GetContainer(BUNDLE, "team");
    const auto updates = [&](int group, int main, int team) {
        service_->Answer("GetCloudAppInfo", NubisTest::JsonText(Catalogue(group, main, team)));
        log.TakeErrors();
        std::map<std::string, NBAppInfo> apps;
        EXPECT_FALSE(kit_->GetCloudAppInfo({BUNDLE}, apps).HasError());
        std::vector<std::string> texts;
        for (const auto &text : log.Take(LOG_INFO)) {
            if (text.rfind("update schema version:", 0) == 0) {
                texts.push_back(text);
            }
        }
        return texts;
    };
    EXPECT_THAT(updates(1, 2, 2), IsEmpty());
    EXPECT_THAT(updates(2, 2, 2), IsEmpty());
    // Each container has a private and a shared database.
    EXPECT_THAT(updates(3, 4, 2), ElementsAre("update schema version:4", "update schema version:4"));
    EXPECT_THAT(updates(4, 4, 5), ElementsAre("update schema version:5", "update schema version:5"));
    kit_->ReleaseContainer(BUNDLE, "main");
    EXPECT_THAT(updates(5, 9, 5), IsEmpty());
}

TEST_F(AppInfoTest, SchemasAreLookedUpInTheCacheOnly)
{
    NubisTest::LogCapture log;
    NBSchema schema;
    schema.version = 77;
    EXPECT_FALSE(kit_->GetSchemaInfo(BUNDLE, "main", schema, 0));
    std::map<std::string, NBAppInfo> apps;
    kit_->GetCloudAppInfo({BUNDLE}, apps);
    EXPECT_FALSE(kit_->GetSchemaInfo(BUNDLE, "main", schema, 1));
    EXPECT_FALSE(kit_->GetSchemaInfo(BUNDLE, "other", schema, 0));
    EXPECT_THAT(log.TakeErrors(),
        ElementsAre("Get schema failed, can not find bundle: com.example.notes, syncType:0",
            "Get schema failed, can not find bundle: com.example.notes, syncType:1",
            "Get schema failed, can not find container: other, bundleName:com.example.notes, syncType:0"));
    EXPECT_TRUE(kit_->GetSchemaInfo(BUNDLE, "team", schema, 0));
    EXPECT_EQ(schema.recordTypes.count("note"), 1U);
    EXPECT_FALSE(schema.schemaData.empty());
    EXPECT_EQ(schema.version, 77);
    EXPECT_THAT(schema.orderTables, IsEmpty());
    EXPECT_EQ(Asked("GetCloudAppInfo"), 1U);
}

TEST_F(AppInfoTest, SwitchesBriefInfosAndParamsAreRead)
{
    service_->Answer("GetCloudAppSwitches",
        R"({"appSwitchStatus": [{"bundleName": "a", "switchStatus": 1}, {"bundleName": "b", "switchStatus": 4},
            {"switchStatus": 1}, 5]})");
    std::map<std::string, NBAppSwitchStatus> switches;
    EXPECT_FALSE(kit_->GetCloudFileAppSwitches({"a", "b"}, switches).HasError());
    EXPECT_THAT(switches, ElementsAre(testing::Pair("a", NB_APP_SWITCH_1), testing::Pair("b", NB_APP_SWITCH_UNKNOWN)));
    EXPECT_EQ(LastRequest("GetCloudAppSwitches")["syncDemon"], "1");

    service_->Answer("getCloudAppBriefInfo", R"({"appBriefInfos": [{"bundleName": "a"}, 7], "hasMore": true,
        "nextIndex": 3})");
    std::vector<NBAppBriefInfo> infos(1);
    bool hasMore = false;
    int nextIndex = 0;
    NBUploadSize size{1, 1};
    EXPECT_FALSE(kit_->GetCloudAppBriefInfo(2, infos, hasMore, nextIndex, size).HasError());
    ASSERT_EQ(infos.size(), 3U);
    EXPECT_EQ(infos[1].bundleName, "a");
    EXPECT_EQ(infos[1].verifyRemainSpace, 1);
    EXPECT_TRUE(hasMore);
    EXPECT_EQ(nextIndex, 3);
    EXPECT_EQ(size.maxBatchNumber, 30U);
    EXPECT_EQ(size.maxBodySize, 1572864U);
    EXPECT_EQ(LastRequest("getCloudAppBriefInfo")["index"], 2);
    service_->Answer("getCloudAppBriefInfo", R"({"appBriefInfos": {}})");
    EXPECT_EQ(kit_->GetCloudAppBriefInfo(2, infos, hasMore, nextIndex, size).GetLocalErrorCode(), 3);

    NubisTest::LogCapture log;
    service_->Answer("getAppConfigParams", R"({"code": 0, "x": "1", "y": 2, "traceId": "other"})");
    std::map<std::string, std::string> params = {{"x", "0"}, {"z", "kept"}};
    EXPECT_FALSE(kit_->GetAppConfigParams("b", params).HasError());
    EXPECT_EQ(params["x"], "1");
    EXPECT_EQ(params["z"], "kept");
    EXPECT_EQ(params.count("y"), 0U);
    EXPECT_THAT(log.TakeErrors(), ElementsAre("bundle:b, config params y is not string"));
    service_->Answer("getAppConfigParams", "[]");
    EXPECT_EQ(kit_->GetAppConfigParams("b", params).GetLocalErrorCode(), 3);
}
} // namespace
