// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kit_fixture.h"

namespace {
using namespace Nubis;
using NubisTest::Note;
using NubisTest::ParseJson;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::SizeIs;
using testing::UnorderedElementsAre;

class DatabaseReadTest : public NubisTest::DatabaseTest {};

TEST_F(DatabaseReadTest, OrderingsFollowTheQueryText)
{
    const NBOrderBy time{true, "time"};
    const NBOrderBy size{false, "size"};
    const std::pair<NBQuery, const char *> params[] = {{{"note", "a=1", {time, size}}, "a=1&orderBy=time desc,size"},
        {{"note", "", {size, time}}, "orderBy=size,time desc"}, {{"note", "a=1", {}}, "a=1"}};
    for (const auto &[query, param] : params) {
        NubisTest::Query(database_, query);
        EXPECT_EQ(LastRequest("fetchRecordsWithQuery")["queryParam"], param);
    }
}

TEST_F(DatabaseReadTest, APageOfRecordsIsRead)
{
    service_->Answer("fetchRecordsWithQuery", R"({"nextCursor": "c2", "records": [
        {"recordId": "r1", "recordType": "note", "record": {"title": "a"}}, 5,
        {"recordId": "r2", "recordType": "unknown"}, {"recordId": "r3", "recordType": "note"}]})");
    const auto page = NubisTest::Query(database_, NBQuery{"note", "", {}}, 50, "c1");
    EXPECT_FALSE(page.error.HasError());
    EXPECT_EQ(page.cursor, "c2");
    ASSERT_THAT(page.records, SizeIs(4));
    EXPECT_EQ(NubisTest::TitleOf(page.records[0]), "a");
    EXPECT_EQ(page.records[3].GetRecordId(), "r3");
    EXPECT_EQ(OwnMembers("fetchRecordsWithQuery", {"prepareTraceId"}),
        ParseJson(R"({"bundleName": "com.example.notes", "containerName": "main", "lockSessionId": "",
        "databaseType": 1, "recordType": "note", "pageSize": 50, "cursor": "c1", "fields": "", "queryParam": ""})"));
}

TEST_F(DatabaseReadTest, DesiredKeysAreJoined)
{
    const auto ignore = [](auto...) {};
    database_->FetchRecords(nullptr, "note", {"a", "b", "c"}, 1, "", ignore);
    EXPECT_EQ(service_->WaitFor("fetchRecordsWithQuery", 1)[0].request["fields"], "a,b,c");
    database_->FetchRecords(nullptr, "note", {"", "a", ""}, 1, "", ignore);
    EXPECT_EQ(service_->WaitFor("fetchRecordsWithQuery", 2)[1].request["fields"], ",a,");
    database_->FetchDatabaseChanges(nullptr, "note", {"a"}, 1, "", ignore);
    const Json::Value changes = service_->WaitFor("fetchDatabaseChanges", 1)[0].request;
    EXPECT_EQ(changes["fields"], "a");
    EXPECT_FALSE(changes.isMember("queryParam"));
    database_->FetchDatabaseChangesWithQuery(nullptr, {}, NBQuery{"note", "x=1", {}}, 1, "", ignore);
    EXPECT_EQ(service_->WaitFor("fetchDatabaseChanges", 2)[1].request["queryParam"], "x=1");
}

TEST_F(DatabaseReadTest, ChangesEndWhereTheServiceSaysSo)
{
    service_->Answer("fetchDatabaseChanges",
        R"({"changes": [{"recordId": "r1", "recordType": "note", "deleted": true}], "nextCursor": "n",
            "newStartCursor": "s"})");
    auto page = NubisTest::Changes(database_, "c", 7);
    EXPECT_EQ(page.cursor, "n");
    EXPECT_TRUE(page.hasMore);
    ASSERT_THAT(page.records, SizeIs(1));
    EXPECT_TRUE(page.records[0].GetIsDelete());
    service_->Answer("fetchDatabaseChanges", R"({"changes": [], "nextCursor": "", "newStartCursor": "s"})");
    page = NubisTest::Changes(database_);
    EXPECT_EQ(page.cursor, "s");
    EXPECT_FALSE(page.hasMore);
}

TEST_F(DatabaseReadTest, RepliesWithoutTheirArrayAreBad)
{
    for (const char *reply : {"{}", "[]", "3", "x", R"({"records": {}, "changes": {}, "nextCursor": "n"})"}) {
        service_->Answer("fetchRecordsWithQuery", reply);
        service_->Answer("fetchDatabaseChanges", reply);
        const auto page = NubisTest::Query(database_, NBQuery{"note", "", {}});
        EXPECT_EQ(page.error.GetLocalErrorCode(), 3) << reply;
        EXPECT_EQ(page.cursor, "");
        const auto changes = NubisTest::Changes(database_);
        EXPECT_EQ(changes.error.GetLocalErrorCode(), 3) << reply;
        EXPECT_FALSE(changes.hasMore);
    }
    service_->Answer("fetchDatabaseChanges", "");
    EXPECT_EQ(NubisTest::Changes(database_).error.GetLocalErrorCode(), 11);
}

TEST_F(DatabaseReadTest, ARecordIsFetchedByItsId)
{
    service_->Answer("fetchRecordWithId",
        R"({"code": 0, "recordId": "r1", "recordType": "note", "version": 4, "record": {"stars": 3}})");
    const auto fetched = NubisTest::FetchById(database_, "note", "r1");
    EXPECT_FALSE(fetched.error.HasError());
    EXPECT_EQ(fetched.recordId, "r1");
    EXPECT_EQ(fetched.record.GetVersion(), 4U);
    EXPECT_FALSE(LastRequest("fetchRecordWithId").isMember("ownerId"));
    NBRecord record = Note("").Id("r9").OwnedBy("ann");
    database_->FetchRecordWithId(nullptr, record, {}, nullptr);
    const Json::Value request = service_->WaitFor("fetchRecordWithId", 2)[1].request;
    EXPECT_EQ(request["recordId"], "r9");
    EXPECT_EQ(request["recordType"], "note");
    EXPECT_EQ(request["ownerId"], "ann");
}

TEST_F(DatabaseReadTest, AFailedFetchStillNamesTheRecord)
{
    const std::map<std::string, int> localCodes = {{"[]", 3}, {"{}", 3}, {"x", 3}, {"", 11}, {R"({"code": 4})", 24},
        {R"({"recordId": "other", "recordType": "unknown"})", 3}};
    for (const auto &[reply, code] : localCodes) {
        service_->Answer("fetchRecordWithId", reply);
        const auto fetched = NubisTest::FetchById(database_, "note", "r1");
        EXPECT_EQ(fetched.error.GetLocalErrorCode(), code) << reply;
        EXPECT_EQ(fetched.recordId, "r1") << reply;
    }
    service_->Answer("fetchRecordWithId", R"({"code": 5, "error": {"description": "gone"}})");
    const auto fetched = NubisTest::FetchById(database_, "note", "r1");
    EXPECT_EQ(fetched.error.GetServerErrorCode(), 5);
    EXPECT_EQ(fetched.record.GetRecordId(), "r1");
    EXPECT_EQ(fetched.record.GetRecordType(), "");
}

TEST_F(DatabaseReadTest, ManyIdsAreFetchedByType)
{
    service_->AnswerWith("fetchRecordWithIds", [](const Json::Value &request) -> std::string {
        if (request["recordType"] == "folder") {
            return R"({"code": 6, "error": {}})";
        }
        return R"({"records": [{"code": 0, "recordId": "n2", "recordType": "note"}, 5, {"recordId": "n1"},
            {"code": 0, "recordType": "note"}]})";
    });
    const auto fetched = NubisTest::FetchByIds(
        database_, {Note("").Id("n1").OwnedBy("ann"), NubisTest::Folder("kept").Id("f1"), Note("").Id("n2")});
    // The folders came first, and their error is theirs alone.
    EXPECT_FALSE(fetched.error.HasError());
    EXPECT_THAT(fetched.results, UnorderedElementsAre(Key("f1"), Key("n1"), Key("n2")));
    EXPECT_EQ(fetched.results.at("f1").GetServerErrorCode(), 6);
    EXPECT_EQ(NubisTest::TitleOf(fetched.results.at("f1").GetRecord()), "kept");
    EXPECT_EQ(fetched.results.at("n1").GetLocalErrorCode(), 24);
    EXPECT_FALSE(fetched.results.at("n2").HasError());
    const auto requests = service_->Requests("fetchRecordWithIds");
    ASSERT_THAT(requests, SizeIs(2));
    EXPECT_EQ(requests[0]["recordType"], "folder");
    EXPECT_EQ(requests[1]["records"],
        ParseJson(R"([{"recordId": "n1", "ownerId": "ann"}, {"recordId": "n2", "ownerId": ""}])"));
    EXPECT_THAT(NubisTest::FetchByIds(database_, {}).results, IsEmpty());
    EXPECT_EQ(Asked("fetchRecordWithIds"), 2U);
}

TEST_F(DatabaseReadTest, TheStartCursorIsFetchedAtOnce)
{
    service_->Answer("getStartCursor", R"({"startCursor": "s1"})");
    std::string cursor;
    EXPECT_FALSE(database_->GetStartCursor("note", cursor).HasError());
    EXPECT_EQ(cursor, "s1");
    const Json::Value request = LastRequest("getStartCursor");
    EXPECT_FALSE(request.isMember("prepareTraceId") || request.isMember("lockSessionId"));
    service_->Answer("getStartCursor", R"({"code": 1})");
    EXPECT_EQ(database_->GetStartCursor(NubisTest::ContextOf("t", "p"), "note", cursor).GetLocalErrorCode(), 24);
    EXPECT_EQ(cursor, "s1");
    EXPECT_EQ(LastRequest("getStartCursor")["prepareTraceId"], "p");
}
} // namespace
