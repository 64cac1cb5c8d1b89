// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "crid.h"
#include "kit_fixture.h"
#include "log_capture.h"

namespace {
using namespace Nubis;
using NubisTest::Delete;
using NubisTest::Folder;
using NubisTest::Modify;
using NubisTest::Note;
using NubisTest::ParseJson;
using testing::Key;
using testing::UnorderedElementsAre;

class DatabaseModifyTest : public NubisTest::DatabaseTest {};

TEST_F(DatabaseModifyTest, OneRequestCarriesBothKindsOfRecords)
{
    const auto modified =
        Modify(database_, {Note("a"), Existing("r1")}, {Existing("d1", 3), Note("new")}, true, NB_SAVE_CHANGED_FIELDS);

    EXPECT_FALSE(modified.error.HasError());
    Json::Value request = LastRequest("modifyRecords");
    const std::string made = request["recordsToSave"][0]["recordId"].asString();
    EXPECT_NE(CridV5::DecodeCrid(made), nullptr);
    EXPECT_EQ(request["recordsToSave"][1]["title"], "old");
    EXPECT_EQ(request["recordsToDelete"][0]["recordId"], "d1");
    EXPECT_EQ(request["recordsToDelete"][0]["baseVersion"].asInt(), 3);
    EXPECT_EQ(request["recordsToDelete"][1]["recordId"], "") << "no ids for what is to be deleted";
    EXPECT_EQ(OwnMembers("modifyRecords", {"recordsToSave", "recordsToDelete", "prepareTraceId"}),
        ParseJson(R"({"bundleName": "com.example.notes", "containerName": "main", "lockSessionId": "",
        "databaseType": 1, "savePolicy": 1, "atomic": true})"));
    // Without the arrays in the reply what is saved stays pending, and of what is deleted nothing is known.
    EXPECT_THAT(modified.saved, UnorderedElementsAre(Key(made), Key("r1")));
    EXPECT_EQ(modified.saved.at("r1").GetLocalErrorCode(), 24);
    EXPECT_TRUE(modified.deleted.empty());

    EXPECT_FALSE(Modify(database_, {}, {}, false).error.HasError());
    request = LastRequest("modifyRecords");
    EXPECT_EQ(request["recordsToSave"], Json::Value(Json::arrayValue));
    EXPECT_EQ(request["recordsToDelete"], Json::Value(Json::arrayValue));
    EXPECT_EQ(request["atomic"], false);
}

TEST_F(DatabaseModifyTest, EachRecordHasItsResult)
{
    service_->Answer("modifyRecords", R"({"recordsToSave": [
            {"code": 0, "localRecordId": "r1", "recordId": "server1", "recordType": "note", "version": 4}],
        "recordsToDelete": [{"code": 0, "recordId": "d1", "recordType": "note", "deleted": true}, 7,
            {"code": 6, "recordId": "d2", "error": {"description": "gone"}}, {"code": 0, "recordType": "note"}]})");

    const auto modified = Modify(database_, {Existing("r1")}, {Existing("d1"), Existing("d2")}, false);

    EXPECT_EQ(modified.saved.at("r1").GetRecord().GetRecordId(), "server1");
    EXPECT_FALSE(modified.saved.at("r1").HasError());
    EXPECT_THAT(modified.deleted, UnorderedElementsAre(Key("d1"), Key("d2")));
    EXPECT_TRUE(modified.deleted.at("d1").GetRecord().GetIsDelete());
    EXPECT_EQ(modified.deleted.at("d2").GetErrorMsg(), "gone");
}

TEST_F(DatabaseModifyTest, AFailureIsTheResultOfEveryRecord)
{
    service_->Answer("modifyRecords", R"({"code": 5, "error": {"description": "full"}})");
    const auto modified = Modify(database_, {Existing("r1")}, {Existing("d1"), Existing("")}, true);
    EXPECT_EQ(modified.error.GetServerErrorCode(), 5);
    EXPECT_EQ(modified.saved.at("r1").GetErrorMsg(), "full");
    ASSERT_THAT(modified.deleted, UnorderedElementsAre(Key("d1")));
    EXPECT_EQ(modified.deleted.at("d1").GetErrorMsg(), "full");
    EXPECT_EQ(modified.deleted.at("d1").GetRecord().GetRecordType(), "note");
    EXPECT_EQ(modified.deleted.at("d1").GetRecord().GetVersion(), 0U) << "only id and type are kept";
    for (const char *reply : {"[]", R"({"recordsToSave": {}, "recordsToDelete": 7})"}) {
        service_->Answer("modifyRecords", reply);
        EXPECT_TRUE(Modify(database_, {Existing("r1")}, {Existing("d1")}, true).saved.at("r1").HasError()) << reply;
    }

    SetRules();
    const size_t asked = Asked("modifyRecords");
    NubisTest::LogCapture log;
    EXPECT_EQ(Modify(database_, {Note("a")}, {}, true).error.GetLocalErrorCode(), 11);
    EXPECT_THAT(log.Take(LOG_DEBUG), testing::Contains("ModifyRecords record is empty, will generate record id"));
    EXPECT_EQ(Asked("modifyRecords"), asked);
}

TEST_F(DatabaseModifyTest, ADeletionIsARequestForEachTypeInOrder)
{
    service_->AnswerWith("deleteRecords", [](const Json::Value &request) -> std::string {
        if (request["recordType"] == "folder") {
            return R"({"code": 5, "error": {"code": 1201, "description": "disk"}})";
        }
        return R"({"records": [{"code": 0, "recordId": "b2", "recordType": "note", "deleted": true},
            {"code": 1106, "recordId": "b1", "error": {"description": "changed"}}, {"code": 0}, 7]})";
    });

    const auto deleted = Delete(database_,
        {Existing("b2", 3), Folder("kept").Id("f1"), Existing("b1"), Existing("unanswered")}, NB_SAVE_CHANGED_FIELDS);

    EXPECT_FALSE(deleted.error.HasError()) << "the last one's counts";
    EXPECT_THAT(deleted.results, UnorderedElementsAre(Key("b1"), Key("b2"), Key("f1")));
    EXPECT_TRUE(deleted.results.at("b2").GetRecord().GetIsDelete());
    EXPECT_EQ(deleted.results.at("b1").GetErrorMsg(), "changed");
    EXPECT_EQ(deleted.results.at("f1").GetServerErrorCode(), 1201);
    EXPECT_EQ(NubisTest::TitleOf(deleted.results.at("f1").GetRecord()), "kept");
    ASSERT_EQ(Asked("deleteRecords"), 2U);
    EXPECT_EQ(service_->Requests("deleteRecords")[0]["recordType"], "folder");
    const Json::Value records = LastRequest("deleteRecords")["records"];
    EXPECT_EQ(records[0]["baseVersion"].asInt(), 3);
    EXPECT_EQ(records[1]["title"], "old");
    EXPECT_EQ(OwnMembers("deleteRecords", {"records", "prepareTraceId"}),
        ParseJson(R"({"bundleName": "com.example.notes", "containerName": "main", "lockSessionId": "",
        "databaseType": 1, "savePolicy": 1, "recordType": "note", "recordIds": ["b2", "b1", "unanswered"]})"));

    EXPECT_EQ(Delete(database_, {Folder("").Id("f1")}).error.GetServerErrorCode(), 1201);
    EXPECT_TRUE(Delete(database_, {}).results.empty());
    EXPECT_EQ(Asked("deleteRecords"), 3U);
}

TEST_F(DatabaseModifyTest, AFieldThatCannotBeWrittenKeepsARecordFromBeingSavedButNotDeleted)
{
    NBRecordField broken("text");
    NBSchemaField number;
    number.type = NB_FIELD_INTEGER;
    ASSERT_FALSE(broken.ParseFromJsonValue(number, Json::Value("no number")));
    const NBRecord record = Note("").Id("n1").AtVersion(2).With("broken", broken);

    Delete(database_, {record});

    const Json::Value sent = LastRequest("deleteRecords")["records"][0];
    EXPECT_EQ(sent["baseVersion"].asInt(), 2);
    EXPECT_FALSE(sent.isMember("broken"));
    EXPECT_EQ(NubisTest::Save(database_, {record}).error.GetLocalErrorCode(), 3);
    EXPECT_EQ(NubisTest::Copy(database_, {{record, "s"}}).error.GetLocalErrorCode(), 3);
}
} // namespace
