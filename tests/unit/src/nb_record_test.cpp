// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_record.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "json_helper.h"
#include "json_samples.h"
#include "log_capture.h"
#include "record_builder.h"
#include "schema_builder.h"

using namespace Nubis;
using NubisTest::ParseJson;
using NubisTest::RecordBuilder;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
std::string TextOf(const NBRecord &record)
{
    return JsonHelper::JsonToString(record.ToJsonValue());
}

std::map<std::string, std::string> DataOf(const NBRecord &record)
{
    NBFieldMap fields;
    record.GetRecordData(fields);
    std::map<std::string, std::string> texts;
    for (const auto &[name, field] : fields) {
        texts[name] = JsonHelper::JsonToString(field.ToJsonValue());
    }
    return texts;
}

NBSchema PersonSchema()
{
    return NubisTest::SchemaBuilder()
        .Type("person")
        .Field("name", NB_FIELD_STRING)
        .Field("age", NB_FIELD_INTEGER)
        .Field("photo", NB_FIELD_BLOB)
        .Field("tags", NB_FIELD_LIST, NB_FIELD_STRING)
        .Build();
}

const char *const FULL_RECORD = R"({"recordId": "r1", "recordType": "person", "deleted": true, "isNew": true,
    "version": 5, "baseVersion": 9, "createdTime": 11, "editedTime": 12, "ownerId": "owner", "shareUri": "uri",
    "privilege": 4294967295, "isShared": true, "record": {"name": "Ann", "age": 30},
    "createInfo": {"time": -1, "deviceName": "phone", "appId": "app"},
    "modifiedInfo": {"time": 2, "deviceName": "tablet", "appId": "other"},
    "relations": [{"relationName": "friend", "recordType": "person", "recordId": "r2"}]})";
} // namespace

TEST(NBRecord, WritesFieldsBesideItsOwnMembers)
{
    EXPECT_EQ(TextOf(NBRecord()), R"({"baseVersion":0,"deleted":false,"isNew":false,"recordId":"","recordType":""})");
    NBRecord record =
        RecordBuilder("person", "r1").With("name", "Ann").With("empty", NBRecordField()).AtVersion(UINT64_MAX).Build();
    record.SetDelete(true);
    record.SetBaseCursor("cursor");
    record.SetCreateTime(1);
    record.SetEditedTime(2);
    record.SetOwnerId("owner");
    record.SetShared(true);
    record.SetCreateInfo({1, "device", "app"});
    record.SetRecordRelations({{"friend", "person", "r2"}});
    EXPECT_EQ(TextOf(record),
        R"({"baseCursor":"cursor","baseVersion":18446744073709551615,"createdTime":1,"deleted":true,"editedTime":2,)"
        R"("empty":null,"isNew":false,"isShared":true,"name":"Ann","ownerId":"owner","recordId":"r1",)"
        R"("recordType":"person","relations":[{"recordId":"r2","recordType":"person","relationName":"friend"}]})");
}

TEST(NBRecord, LaterMembersReplaceEarlierOnesOfTheSameName)
{
    NBRecord record =
        RecordBuilder("t", "r1").With("recordId", "field").With("createdTime", 7).With("ownerId", 8).Build();
    record.SetCreateTime(1);
    const Json::Value json = record.ToJsonValue();
    EXPECT_EQ(json["recordId"], "field");
    EXPECT_EQ(json["createdTime"], Json::Value(Json::UInt64(1)));
    EXPECT_EQ(json["ownerId"], 8);
}

TEST(NBRecord, WrapsOnlyTheAttachmentsOfMedia)
{
    NBAsset asset;
    asset.uri = "file";
    NBFieldList assets = {asset, asset};
    const Json::Value media =
        RecordBuilder("media").With("attachments", assets).With("others", assets).Build().ToJsonValue();
    EXPECT_EQ(media["attachments"][1]["asset"]["uri"], "file");
    EXPECT_EQ(media["attachments"][0].getMemberNames(), std::vector<std::string>{"asset"});
    EXPECT_EQ(media["others"][1]["uri"], "file");
    const Json::Value note = RecordBuilder("note").With("attachments", assets).Build().ToJsonValue();
    EXPECT_EQ(note["attachments"][1]["uri"], "file");
    EXPECT_EQ(RecordBuilder("media").With("attachments", "text").Build().ToJsonValue()["attachments"], "text");
}

TEST(NBRecord, ReadsEveryMember)
{
    NBRecord record;
    ASSERT_TRUE(record.ParseFromJsonValue(PersonSchema(), ParseJson(FULL_RECORD)));
    EXPECT_EQ(record.GetRecordId() + record.GetRecordType(), "r1person");
    EXPECT_TRUE(record.GetIsDelete() && record.GetNewCreate() && record.GetShared());
    EXPECT_EQ(record.GetVersion(), 5U);
    EXPECT_EQ(record.GetCreateTime(), 11U);
    EXPECT_EQ(record.GetEditedTime(), 12U);
    EXPECT_EQ(record.GetOwnerId() + record.GetShareUri(), "owneruri");
    EXPECT_EQ(record.GetPrivilege(), UINT32_MAX);
    const std::map<std::string, std::string> data = {{"age", "30"}, {"name", "\"Ann\""}};
    EXPECT_EQ(DataOf(record), data);
    EXPECT_EQ(record.GetRecordCreateInfo().time, -1);
    EXPECT_EQ(record.GetRecordCreateInfo().deviceName, "phone");
    EXPECT_EQ(record.GetRecordModifiedInfo().appId, "other");
    std::vector<NBRelation> relations;
    record.GetRecordRelations(relations);
    ASSERT_EQ(relations.size(), 1U);
    EXPECT_EQ(relations[0].relationName + relations[0].recordType + relations[0].recordId, "friendpersonr2");
}

TEST(NBRecord, AssignsPlainMembersAlwaysAndKeepsTheOthers)
{
    NBRecord record;
    ASSERT_TRUE(record.ParseFromJsonValue(PersonSchema(), ParseJson(FULL_RECORD)));
    ASSERT_TRUE(record.ParseFromJsonValue(PersonSchema(),
        ParseJson(R"({"recordType": "person", "version": "5", "record": {"tags": ["x"]}, "createInfo": 1,
            "modifiedInfo": {}, "relations": {}})")));
    EXPECT_EQ(record.GetRecordId() + record.GetOwnerId() + record.GetShareUri(), "");
    EXPECT_FALSE(record.GetIsDelete() || record.GetNewCreate() || record.GetShared());
    EXPECT_EQ(record.GetVersion() + record.GetCreateTime() + record.GetEditedTime() + record.GetPrivilege(), 0U);
    const std::map<std::string, std::string> data = {{"age", "30"}, {"name", "\"Ann\""}, {"tags", "[\"x\"]"}};
    EXPECT_EQ(DataOf(record), data);
    EXPECT_EQ(record.GetRecordCreateInfo().deviceName, "phone");
    EXPECT_EQ(record.GetRecordModifiedInfo().deviceName, "");
    std::vector<NBRelation> relations;
    record.GetRecordRelations(relations);
    EXPECT_EQ(relations.size(), 1U);
    record.ParseRelationsFromJson(ParseJson(R"({"relations": []})"));
    record.GetRecordRelations(relations);
    EXPECT_THAT(relations, IsEmpty());
}

TEST(NBRecord, RefusesUnknownTypesAndWhatIsNoObject)
{
    NubisTest::LogCapture log;
    NBRecord record = RecordBuilder("old", "old").AtVersion(3).OwnedBy("owner").Build();
    EXPECT_FALSE(record.ParseFromJsonValue(PersonSchema(), ParseJson("[]")));
    EXPECT_EQ(record.GetRecordId(), "old");
    EXPECT_THAT(log.TakeErrors(), IsEmpty());
    EXPECT_FALSE(record.ParseFromJsonValue(
        PersonSchema(), ParseJson(R"({"recordId": "new", "recordType": "cat", "version": 9})")));
    EXPECT_THAT(log.TakeErrors(), ElementsAre("parse record failed, can not find schema record type:cat"));
    EXPECT_EQ(record.GetRecordId() + record.GetRecordType() + record.GetOwnerId(), "newcatowner");
    EXPECT_EQ(record.GetVersion(), 3U);
}

TEST(NBRecord, LeavesOutFieldsThatTheSchemaDoesNotKnowOrThatDoNotFit)
{
    NubisTest::LogCapture log;
    NBRecord record = RecordBuilder("person").With("age", 1).With("x", 2).Build();
    EXPECT_TRUE(record.ParseFromJsonValue(PersonSchema(),
        ParseJson(R"({"recordType": "person", "record": {"age": "thirty", "x": 1, "tags": ["a", 1], "photo": ""}})")));
    const std::map<std::string, std::string> data = {{"age", "1"}, {"photo", "\"\""}, {"x", "2"}};
    EXPECT_EQ(DataOf(record), data);
    EXPECT_THAT(log.Take(LOG_DEBUG), ElementsAre("can find field key x from schema node"));
}

TEST(NBRecord, StealsLeaveTheRecordWithout)
{
    NBRecord record = RecordBuilder("person").With("age", 1).Build();
    record.SetRecordRelations({{"friend", "person", "r2"}});
    NBFieldMap fields = {{"gone", 1}};
    std::vector<NBRelation> relations(3);
    record.StealRecordData(fields);
    record.StealRecordRelations(relations);
    EXPECT_EQ(fields.size(), 1U);
    EXPECT_EQ(fields.count("age"), 1U);
    EXPECT_EQ(relations.size(), 1U);
    EXPECT_THAT(DataOf(record), IsEmpty());
    record.GetRecordRelations(relations);
    EXPECT_THAT(relations, IsEmpty());
}

TEST(NBRecord, NoJsonMakesReadingOrWritingThrow)
{
    const NBSchema schema = PersonSchema();
    for (const Json::Value &json : NubisTest::SpoilEachMember(ParseJson(FULL_RECORD))) {
        NBRecord record;
        EXPECT_NO_THROW(record.ParseFromJsonValue(schema, json));
        EXPECT_NO_THROW(record.ToJsonValue());
    }
    Json::Value good = ParseJson(R"({"name": "Ann", "age": 30, "photo": "AQ==", "tags": []})");
    for (const Json::Value &fields : NubisTest::SpoilEachMember(good)) {
        Json::Value json = ParseJson(FULL_RECORD);
        json["record"] = fields;
        NBRecord record;
        EXPECT_TRUE(record.ParseFromJsonValue(schema, json));
        EXPECT_NO_THROW(record.ToJsonValue());
    }
    for (const Json::Value &json : NubisTest::HostileJson()) {
        NBRecord record;
        record.ParseCreateInfoFromJson(json);
        record.ParseModifyInfoFromJson(json);
        record.ParseRelationsFromJson(json);
        EXPECT_FALSE(record.ParseFromJsonValue(schema, json));
    }
}
