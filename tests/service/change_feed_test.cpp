// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_fixture.h"

namespace DriveService {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ChangeFeedTest : public ServiceTest {
protected:
    // "ID@VERSION" of each change after the cursor, with "-" before deletions; the cursor is moved to the end.
    std::vector<std::string> Changes(
        std::string &cursor, const std::string &type = "", int pageSize = 0, const std::string &query = "")
    {
        std::vector<std::string> seen;
        Json::Value members = Members({{"recordType", type}, {"pageSize", pageSize}, {"queryParam", query}});
        for (bool more = true; more;) {
            members["cursor"] = cursor;
            Json::Value reply = Ask("fetchDatabaseChanges", members);
            EXPECT_THAT(reply, Succeeds());
            for (const Json::Value &change : reply["changes"]) {
                seen.push_back((change["deleted"].asBool() ? "-" : "") + change["recordId"].asString() + "@" +
                               change["version"].asString());
            }
            more = reply["nextCursor"] != "";
            EXPECT_EQ(reply["newStartCursor"] == "", more);
            cursor = reply[more ? "nextCursor" : "newStartCursor"].asString();
        }
        return seen;
    }
};

TEST_F(ChangeFeedTest, EachRecordComesOnceInItsNewestState)
{
    SaveOne(NewPerson("a"));
    SaveOne(NewPerson("b"));
    SaveOne(NewPerson("c"));
    SaveOne(Changed("a", 1, "{'age': 1}"));
    Delete("b");
    for (int pageSize : {0, 1, 2}) {
        std::string cursor;
        EXPECT_THAT(Changes(cursor, "", pageSize), ElementsAre("c@1", "a@2", "-b@2")) << pageSize;
        EXPECT_THAT(Changes(cursor, "", pageSize), IsEmpty());
    }
    Json::Value tombstone = Ask("fetchDatabaseChanges")["changes"][2];
    EXPECT_EQ(tombstone["recordType"], "person");
    EXPECT_FALSE(tombstone.isMember("record"));
}

TEST_F(ChangeFeedTest, TheStartCursorIsThePresentEnd)
{
    SaveOne(NewPerson("a"));
    std::string cursor = Ask("getStartCursor", J("{'recordType': ''}"))["startCursor"].asString();
    EXPECT_THAT(Changes(cursor), IsEmpty());
    SaveOne(NewPerson("b"));
    Restart();
    EXPECT_THAT(Changes(cursor), ElementsAre("b@1"));
    EXPECT_THAT(Ask("getStartCursor", J("{'recordType': 'nobody'}")),
        FailsWith(ErrorCode::UNKNOWN_RECORD_TYPE, "nobody", "recordType"));
}

TEST_F(ChangeFeedTest, ATypeAndConditionsNarrowTheFeed)
{
    SaveOne(NewPerson("a", "{'name': 'A', 'age': 5}"));
    SaveOne(J("{'recordId': 'g', 'recordType': 'group', 'isNew': true}"));
    SaveOne(NewPerson("b", "{'name': 'B', 'age': 50}"));
    SaveOne(NewPerson("c", "{'name': 'C'}"));
    Delete("c");
    std::string cursor;
    EXPECT_THAT(Changes(cursor, "group"), ElementsAre("g@1"));
    EXPECT_THAT(Changes(cursor, "person"), IsEmpty()) << "the cursor is the database's, not the type's";
    cursor.clear();
    EXPECT_THAT(Changes(cursor, "person", 1), ElementsAre("a@1", "b@1", "-c@2"));
    cursor.clear();
    EXPECT_THAT(Changes(cursor, "person", 0, "age>10"), ElementsAre("b@1", "-c@2"));
    ExpectRefused({
        {"fetchDatabaseChanges", "{'queryParam': 'age>10'}", ErrorCode::INVALID_QUERY, "name a recordType",
            "queryParam"},
        {"fetchDatabaseChanges", "{'queryParam': 'orderBy=age', 'recordType': 'person'}", ErrorCode::INVALID_QUERY,
            "leave out orderBy", "orderBy"},
        {"fetchDatabaseChanges", "{'cursor': 7}", ErrorCode::INVALID_ARGUMENT, "expected a text", "cursor"},
    });
}

} // namespace

} // namespace DriveService
