// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "blocking_calls.h"
#include "crid.h"
#include "kit_fixture.h"
#include "log_capture.h"
#include "note_builder.h"

namespace {
using namespace Nubis;
using NubisTest::Modify;
using NubisTest::Note;
using NubisTest::ParseJson;
using testing::Key;
using testing::UnorderedElementsAre;

class DatabaseModifyTest : public NubisTest::DatabaseTest {
protected:
    static NBRecord Existing(const std::string &recordId)
    {
        return Note("old").Id(recordId).Existing(3);
    }
};

TEST_F(DatabaseModifyTest, OneRequestCarriesBothKindsOfRecords)
{
    const auto modified =
        Modify(database_, {Note("a"), Existing("r1")}, {Existing("d1"), Note("new")}, true, NB_SAVE_CHANGED_FIELDS);

    EXPECT_FALSE(modified.error.HasError());
    Json::Value request = LastRequest("modifyRecords");
    const std::string made = request["recordsToSave"][0]["recordId"].asString();
    EXPECT_NE(CridV5::DecodeCrid(made), nullptr);
    EXPECT_EQ(request["recordsToSave"][1]["title"], "old");
    EXPECT_EQ(request["recordsToDelete"][0]["recordId"], "d1");
    EXPECT_EQ(request["recordsToDelete"][0]["baseVersion"].asInt(), 3);
    EXPECT_EQ(request["recordsToDelete"][1]["recordId"], "") << "no ids for what is to be deleted";
    for (const char *name :
        {"recordsToSave", "recordsToDelete", "traceId", "prepareTraceId", "nbVersion", "saVersion"}) {
        EXPECT_TRUE(request.isMember(name)) << name;
        request.removeMember(name);
    }
    EXPECT_EQ(request, ParseJson(R"({"function": "modifyRecords", "bundleName": "com.example.notes",
        "containerName": "main", "lockSessionId": "", "databaseType": 1, "savePolicy": 1, "atomic": true,
        "syncDemon": "1"})"));
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
    NubisTest::LogCapture log;
    service_->Answer("modifyRecords", R"({"recordsToSave": [
            {"code": 0, "localRecordId": "r1", "recordId": "server1", "recordType": "note", "version": 4}, "x",
            {"code": 5, "recordId": "r2", "error": {"description": "no"}}],
        "recordsToDelete": [{"code": 0, "recordId": "d1", "recordType": "note", "deleted": true}, 7,
            {"code": 6, "recordId": "d2", "error": {"description": "gone"}}, {"code": 0, "recordType": "note"}]})");

    const auto modified =
        Modify(database_, {Existing("r1"), Existing("r2"), Existing("r3")}, {Existing("d1"), Existing("d2")}, false);

    EXPECT_FALSE(modified.error.HasError());
    EXPECT_EQ(modified.saved.at("r1").GetRecord().GetRecordId(), "server1");
    EXPECT_FALSE(modified.saved.at("r1").HasError());
    EXPECT_EQ(modified.saved.at("r2").GetErrorMsg(), "no");
    EXPECT_EQ(modified.saved.at("r3").GetLocalErrorCode(), 24);
    EXPECT_THAT(modified.deleted, UnorderedElementsAre(Key("d1"), Key("d2")));
    EXPECT_TRUE(modified.deleted.at("d1").GetRecord().GetIsDelete());
    EXPECT_EQ(modified.deleted.at("d2").GetErrorMsg(), "gone");
    EXPECT_THAT(log.TakeErrors(), testing::Contains("reply records error, unknown record id:"));
}

TEST_F(DatabaseModifyTest, AFailureIsTheResultOfEveryRecord)
{
    service_->Answer("modifyRecords", R"({"code": 5, "error": {"description": "full"}})");
    const auto modified = Modify(database_, {Existing("r1")}, {Existing("d1"), Existing("")}, true);
    EXPECT_EQ(modified.error.GetServerErrorCode(), 5);
    EXPECT_EQ(modified.saved.at("r1").GetErrorMsg(), "full");
    EXPECT_EQ(NubisTest::TitleOf(modified.saved.at("r1").GetRecord()), "old");
    ASSERT_THAT(modified.deleted, UnorderedElementsAre(Key("d1")));
    EXPECT_EQ(modified.deleted.at("d1").GetErrorMsg(), "full");
    EXPECT_EQ(modified.deleted.at("d1").GetRecord().GetRecordType(), "note");
    EXPECT_EQ(modified.deleted.at("d1").GetRecord().GetVersion(), 0U) << "only id and type are kept";
    for (const char *reply :
        {"", "[]", "x", R"({"recordsToSave": {}, "recordsToDelete": 7})", R"({"recordsToSave": [)"}) {
        service_->Answer("modifyRecords", reply);
        EXPECT_TRUE(Modify(database_, {Existing("r1")}, {Existing("d1")}, true).saved.at("r1").HasError()) << reply;
    }

    service_->Answer("getRecordIdRules", R"({"ruleId": 9})");
    database_->GetRecordIdRules();
    const size_t asked = Asked("modifyRecords");
    NubisTest::LogCapture log;
    EXPECT_EQ(Modify(database_, {Note("a")}, {}, true).error.GetLocalErrorCode(), 11);
    EXPECT_THAT(log.Take(LOG_DEBUG), testing::Contains("ModifyRecords record is empty, will generate record id"));
    EXPECT_EQ(Asked("modifyRecords"), asked);
}
} // namespace
