// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_fixture.h"

namespace DriveService {

namespace {

class CopyTest : public ServiceTest {
protected:
    Json::Value Copy(const std::string &orders)
    {
        return Ask("copyRecords", Members({{"records", J(orders)}}));
    }
};

TEST_F(CopyTest, ACopyHasWhatTheOrderDoesNotSayFromItsSource)
{
    SaveOne(NewPerson("p1", "{'name': 'Ann', 'age': 7, 'height': 1.5, 'tags': ['x']}"));
    SaveOne(J(R"({'recordId': 'g1', 'recordType': 'group', 'isNew': true, 'title': 't',
        'relations': [{'relationName': 'members', 'recordType': 'person', 'recordId': 'p1'}]})"));
    SaveOne(Changed("p1", 1, "{'age': 8}"));

    Json::Value reply = Copy(R"([
        {'recordId': 'p2', 'recordType': 'person', 'srcRecordId': 'p1', 'name': 'Bob', 'tags': null, 'baseVersion': 0},
        {'recordType': 'group', 'srcRecordId': 'g1'},
        {'recordId': 'g2', 'recordType': 'group', 'srcRecordId': 'g1', 'relations': []}])");

    ASSERT_THAT(reply, Succeeds());
    EXPECT_EQ(Fetch("p2")["record"], J("{'name': 'Bob', 'age': 8, 'height': 1.5}"));
    EXPECT_EQ(Fetch("p2")["version"], 1);
    EXPECT_EQ(Find("age=8&name=Bob"), std::vector<std::string>{"p2"});
    EXPECT_EQ(reply["records"][0]["localRecordId"], "p2");
    Json::Value group = Fetch(reply["records"][1]["recordId"].asString(), "group");
    EXPECT_EQ(group["relations"], Fetch("g1", "group")["relations"]);
    EXPECT_EQ(group["record"], J("{'title': 't'}"));
    EXPECT_EQ(Fetch("g2", "group")["relations"], J("[]"));
}

TEST_F(CopyTest, EveryOrderHasItsAnswerInItsPlace)
{
    SaveOne(NewPerson("p1", "{'name': 'Ann', 'age': 7}"));

    Json::Value records = Copy(R"([
        {'recordId': 'a', 'recordType': 'person', 'srcRecordId': 'nobody'},
        {'recordId': 'b', 'recordType': 'person', 'srcRecordId': 'p1', 'name': 'Bob'},
        {'recordId': 'c', 'recordType': 'group', 'srcRecordId': 'p1'},
        {'recordId': 'd', 'recordType': 'person'}, 7,
        {'recordId': 'p1', 'recordType': 'person', 'srcRecordId': 'p1'},
        {'recordId': 'e', 'recordType': 'person', 'srcRecordId': 'p1'},
        {'recordId': 'f', 'recordType': 'person', 'srcRecordId': 'b', 'name': 'Cid'}])")["records"];

    ASSERT_EQ(records.size(), 8u);
    EXPECT_THAT(records[0], FailsWith(ErrorCode::RECORD_NOT_FOUND, "nobody", "srcRecordId"));
    EXPECT_EQ(records[0]["recordId"], "a");
    EXPECT_THAT(records[1], Succeeds());
    EXPECT_THAT(records[2], FailsWith(ErrorCode::RECORD_TYPE_MISMATCH, "not \"group\"", "recordType"));
    EXPECT_THAT(records[3], FailsWith(ErrorCode::INVALID_RECORD, "srcRecordId", "srcRecordId"));
    EXPECT_THAT(records[4], FailsWith(ErrorCode::INVALID_RECORD, "came integer 7", "srcRecordId"));
    EXPECT_THAT(records[5], FailsWith(ErrorCode::RECORD_EXISTS, "p1", "recordId"));
    EXPECT_THAT(records[6], FailsWith(ErrorCode::DUPLICATE_RECORD, "p1", "name,age"));
    EXPECT_THAT(records[7], FailsWith(ErrorCode::RECORD_NOT_FOUND, "\"b\"", "srcRecordId"))
        << "sources are as they were before the request";
}

TEST_F(CopyTest, FieldsThatTheSchemaHasLostAreLeftBehind)
{
    SaveOne(NewPerson("p1", "{'name': 'Ann', 'age': 7}"));
    Json::Value entry = PeopleEntry();
    Json::Value &person = entry["defaultContainer"]["schema"]["recordTypes"][0];
    Json::Value removed;
    person["fields"].removeIndex(1, &removed);
    ASSERT_EQ(removed["name"], "age");
    person.removeMember("dupCheckFields");
    Install(entry);
    Restart();

    EXPECT_THAT(Copy("[{'recordId': 'p2', 'recordType': 'person', 'srcRecordId': 'p1'}]")["records"][0], Succeeds());
    EXPECT_EQ(Fetch("p2")["record"], J("{'name': 'Ann'}"));
}

TEST_F(CopyTest, ManyCopiesOfALargeRecordAreRefusedAsAWhole)
{
    SaveOne(NewPerson("p1", "{'name': '" + std::string(4U << 20U, 'x') + "'}"));
    std::string orders;
    for (int i = 0; i < 40; ++i) {
        orders += (i == 0 ? "" : ",") + std::string("{'recordType': 'person', 'srcRecordId': 'p1', 'age': ") +
                  std::to_string(i) + "}";
    }
    EXPECT_THAT(Copy("[" + orders + "]"), FailsWith(ErrorCode::BATCH_TOO_LARGE, "copy less at a time", "records"));
    EXPECT_EQ(Ask("fetchDatabaseChanges", J("{'recordType': 'person', 'fields': 'age'}"))["changes"].size(), 1u);
}

TEST_F(CopyTest, APreSharedRecordIsAChangedRecord)
{
    SaveOne(NewPerson("p1", "{'name': 'Ann', 'age': 7}"));
    Json::Value cursor = Ask("getStartCursor")["startCursor"];
    Json::Value wanted = J("{'recordType': 'person', 'recordId': 'p1'}");

    Json::Value shared = Ask("setPreShared", wanted);

    EXPECT_EQ(shared["isShared"], true);
    EXPECT_EQ(shared["version"], 2);
    EXPECT_EQ(shared, Fetch("p1"));
    EXPECT_EQ(Find("age=7"), std::vector<std::string>{"p1"});
    EXPECT_EQ(Ask("setPreShared", wanted), shared) << "nothing is left to change";
    EXPECT_EQ(Ask("fetchDatabaseChanges", Members({{"cursor", cursor}}))["changes"].size(), 1u);
    EXPECT_THAT(Ask("setPreShared", J("{'recordType': 'person', 'recordId': 'x'}")),
        FailsWith(ErrorCode::RECORD_NOT_FOUND, "does not exist", "recordId"));
}

} // namespace

} // namespace DriveService
