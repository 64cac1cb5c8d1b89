// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_fixture.h"

#include <algorithm>
#include <numeric>

#include <rapidcheck/gtest.h>

namespace DriveService {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class FetchTest : public ServiceTest {
protected:
    void SavePeople()
    {
        for (const auto &[id, fields] : {
                 std::pair{"a", "{'name': 'Ann', 'age': 30, 'height': 1.5, 'active': true, 'tags': ['x', 'yz']}"},
                 std::pair{"b", "{'name': 'Bob', 'age': 4, 'height': 2, 'active': false, 'scores': [1, 20]}"},
                 std::pair{"c", "{'name': 'ann & co%', 'age': -5, 'tags': ['y'], 'friend': {'recordId': 'a', "
                                "'recordType': 'person'}}"},
                 std::pair{"d", "{'name': 'Dörte', 'height': 10.25}"},
             }) {
            SaveOne(NewPerson(id, fields));
        }
    }
};

TEST_F(FetchTest, ConditionsCompareByTheFieldsType)
{
    SavePeople();
    EXPECT_THAT(Find(""), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(Find("name=Ann"), ElementsAre("a"));
    EXPECT_THAT(Find("name~nn"), ElementsAre("a", "c"));
    EXPECT_THAT(Find("name~"), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(Find("name=ann %26 co%25"), ElementsAre("c"));
    EXPECT_THAT(Find("name~%c3%B6"), ElementsAre("d"));
    EXPECT_THAT(Find("name<B"), ElementsAre("a"));
    EXPECT_THAT(Find("age>4"), ElementsAre("a")) << "30 is more than 4, though \"30\" sorts before \"4\"";
    EXPECT_THAT(Find("age>=4&age<=30"), ElementsAre("a", "b"));
    EXPECT_THAT(Find("age<0"), ElementsAre("c"));
    EXPECT_THAT(Find("height>1.5"), ElementsAre("b", "d"));
    EXPECT_THAT(Find("height=2"), ElementsAre("b"));
    EXPECT_THAT(Find("active=false"), ElementsAre("b"));
    EXPECT_THAT(Find("tags~y"), ElementsAre("c")) << "an element, not a part of one";
    EXPECT_THAT(Find("scores~20"), ElementsAre("b"));
    EXPECT_THAT(Find("friend=a"), ElementsAre("c"));
}

TEST_F(FetchTest, AnAbsentValueMeetsOnlyNotEqual)
{
    SavePeople();
    EXPECT_THAT(Find("age!=30"), ElementsAre("b", "c", "d"));
    EXPECT_THAT(Find("active!=true"), ElementsAre("b", "c", "d"));
    EXPECT_THAT(Find("age<100"), ElementsAre("a", "b", "c"));
    SaveOne(Changed("a", 1, "{'age': null}"));
    EXPECT_THAT(Find("age=30"), IsEmpty());
    EXPECT_THAT(Find("age!=30"), ElementsAre("a", "b", "c", "d"));
}

TEST_F(FetchTest, OrderingsSortByTypeWithAbsentValuesLeast)
{
    SavePeople();
    EXPECT_THAT(Find("orderBy=age"), ElementsAre("d", "c", "b", "a"));
    EXPECT_THAT(Find("orderBy=age desc"), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(Find("orderBy=height desc"), ElementsAre("d", "b", "a", "c"));
    EXPECT_THAT(Find("name!=Bob&orderBy=active desc,name asc"), ElementsAre("a", "d", "c"));
    Delete("b");
    EXPECT_THAT(Find("orderBy=age"), ElementsAre("d", "c", "a"));
}

TEST_F(FetchTest, FieldsNarrowWhatIsReturned)
{
    SavePeople();
    Json::Value members = J("{'recordType': 'person', 'queryParam': 'name=Ann', 'fields': 'age,height'}");
    EXPECT_EQ(Ask("fetchRecordsWithQuery", members)["records"][0]["record"], J("{'age': 30, 'height': 1.5}"));
    members["recordId"] = "a";
    EXPECT_EQ(Ask("fetchRecordWithId", members)["record"], J("{'age': 30, 'height': 1.5}"));
    members["fields"] = "age,shoe";
    for (const char *function : {"fetchRecordsWithQuery", "fetchRecordWithId", "fetchDatabaseChanges"}) {
        EXPECT_THAT(Ask(function, members), FailsWith(ErrorCode::UNKNOWN_FIELD, "no field \"shoe\" to fetch", "shoe"));
    }
}

TEST_F(FetchTest, RecordsAreFetchedByTheirIds)
{
    SavePeople();
    SaveOne(J("{'recordId': 'g', 'recordType': 'group', 'isNew': true}"));
    Delete("b");
    Json::Value reply = Ask("fetchRecordWithIds", J(R"({'recordType': 'person', 'fields': 'name',
        'records': [{'recordId': 'd', 'ownerId': ''}, {'recordId': 'none'}, {'recordId': 'b'}, {'recordId': 'g'}, {}]})"));
    EXPECT_EQ(reply["records"][0]["record"], J("{'name': 'Dörte'}"));
    EXPECT_THAT(reply["records"][1], FailsWith(ErrorCode::RECORD_NOT_FOUND, "\"none\" does not exist", "recordId"));
    EXPECT_EQ(reply["records"][1]["recordId"], "none");
    EXPECT_THAT(reply["records"][2], FailsWith(ErrorCode::RECORD_DELETED, "was deleted (version 2)", "recordId"));
    EXPECT_THAT(reply["records"][3], FailsWith(ErrorCode::RECORD_TYPE_MISMATCH, "is of type \"group\"", "recordType"));
    EXPECT_THAT(reply["records"][4], FailsWith(ErrorCode::INVALID_RECORD, "record to fetch is an object", "recordId"));
    Json::Value mixed = Ask("batchDownloadRecords", J(R"({'fields': 'title,name', 'records': [
        {'recordId': 'a', 'recordType': 'person'}, {'recordId': 'g', 'recordType': 'group'}, {'recordId': 'a'}]})"))
        ["records"];
    EXPECT_EQ(mixed[0]["record"], J("{'name': 'Ann'}"));
    EXPECT_EQ(mixed[1]["recordType"], "group");
    EXPECT_THAT(mixed[2], FailsWith(ErrorCode::UNKNOWN_RECORD_TYPE, "no record type \"\"", "recordType"));
    EXPECT_THAT(Fetch("none"), FailsWith(ErrorCode::RECORD_NOT_FOUND, "\"none\" does not exist", "recordId"));
    EXPECT_THAT(
        Fetch("a", "nobody"), FailsWith(ErrorCode::UNKNOWN_RECORD_TYPE, "has no record type \"nobody\"", "recordType"));
}

TEST_F(FetchTest, ADamagedRecordIsTheServicesFailureAndInNobodyElsesWay)
{
    Save(List({NewPerson("p"), NewPerson("q", "{'name': 'Bob'}")}));
    std::unique_ptr<WriteSession> session = service_->GetStore().BeginWrite();
    int64_t database = session->EnsureDatabase({"com.example.people", "people", 1}).id;
    StoredRecord damaged = session->View().FindRecord(database, "p").value();
    damaged.data = "{\"name\": ";
    session->Put(database, damaged, {});
    damaged = session->View().FindRecord(database, "q").value();
    damaged.relations = "[";
    session->Put(database, damaged, {});
    session->Commit();
    session.reset();
    // So that what is next makes the index anew.
    SqliteConnection(DataPaths(folder_.Path(), 100).database).Execute("DELETE FROM indexed_type");

    Json::Value reply = Fetch("p");
    EXPECT_THAT(reply, FailsWith(ErrorCode::STORE_FAILED, "record p is damaged: ", ""));
    EXPECT_EQ(reply["error"]["errorType"], static_cast<int>(ErrorType::SERVICE));

    Json::Value results = Save(List({Changed("p", 7, "{'name': 'Ann'}"), NewPerson("r", "{'name': 'Cid'}")}));
    EXPECT_THAT(results[0], FailsWith(ErrorCode::VERSION_CONFLICT, "has version 1", "baseVersion"));
    EXPECT_FALSE(results[0].isMember("currentRecord"));
    EXPECT_THAT(results[1], Succeeds());
    EXPECT_THAT(Fetch("r"), Succeeds());

    Json::Value both = List({NewPerson("s", "{'name': 'Dan'}"), Changed("q", 1, "{'age': 1}")});
    reply = Ask("saveRecords", Members({{"records", both}, {"savePolicy", 0}}));
    EXPECT_THAT(reply, FailsWith(ErrorCode::STORE_FAILED, "record q is damaged: ", ""));
    EXPECT_THAT(Fetch("s"), FailsWith(ErrorCode::RECORD_NOT_FOUND, "", "recordId")) << "nothing of it was saved";
    EXPECT_THAT(SaveOne(NewPerson("p", "{'name': 'Ann'}"), 2), Succeeds()) << "saving over it mends it";
    EXPECT_THAT(Fetch("p"), Succeeds());
}

TEST_F(FetchTest, PagesStayWithinTheirBounds)
{
    std::vector<Json::Value> records;
    for (int i = 0; i < 1002; ++i) {
        records.push_back(NewPerson("p" + std::to_string(1000 + i)));
    }
    Save(List(records));
    Json::Value members = J("{'recordType': 'person', 'pageSize': 0}");
    for (int pageSize : {0, -1, 5000}) {
        members["pageSize"] = pageSize;
        EXPECT_EQ(Ask("fetchRecordsWithQuery", members)["records"].size(), 1000u);
        EXPECT_EQ(Ask("fetchDatabaseChanges", members)["changes"].size(), 1000u);
    }
    for (const char *id : {"x1", "x2", "x3"}) {
        SaveOne(NewPerson(id, "{'name': '" + std::string(3 * 1024 * 1024, 'L') + "'}"));
    }
    members = J("{'recordType': 'person', 'queryParam': 'name~L'}");
    Json::Value page = Ask("fetchRecordsWithQuery", members);
    EXPECT_EQ(page["records"].size(), 2u) << "a third record would make the page larger than 8 MiB";
    members["cursor"] = page["nextCursor"];
    page = Ask("fetchRecordsWithQuery", members);
    EXPECT_EQ(page["records"].size(), 1u);
    EXPECT_EQ(page["nextCursor"], "");
    Json::Value eleven = List(std::vector<Json::Value>(11, J("{'recordId': 'x1'}")));
    Json::Value wanted = Members({{"recordType", "person"}, {"records", eleven}});
    EXPECT_THAT(Ask("fetchRecordWithIds", wanted)["records"][10],
        FailsWith(ErrorCode::REPLY_TOO_LARGE, "\"x1\" does not fit into this reply", "records"));
}

TEST_F(FetchTest, PagingIsStableWhileRecordsComeAndGo)
{
    SavePeople();
    Json::Value members = J("{'recordType': 'person', 'queryParam': 'orderBy=age', 'pageSize': 2}");
    Json::Value page = Ask("fetchRecordsWithQuery", members);
    EXPECT_EQ(page["records"][1]["recordId"], "c");
    Delete("c");
    Delete("d");
    SaveOne(NewPerson("e", "{'name': 'E', 'age': -100}"));
    members["cursor"] = page["nextCursor"];
    page = Ask("fetchRecordsWithQuery", members);
    ASSERT_EQ(page["records"].size(), 2u);
    EXPECT_EQ(page["records"][0]["recordId"], "b");
    EXPECT_EQ(page["records"][1]["recordId"], "a");
    EXPECT_EQ(page["nextCursor"], "");
}

TEST_F(FetchTest, AQueryOverAFieldThatBecameQueryableFindsOlderRecords)
{
    Json::Value entry = PeopleEntry();
    Json::Value &title = entry["defaultContainer"]["schema"]["recordTypes"][1]["fields"][0];
    SaveOne(J("{'recordId': 'g', 'recordType': 'group', 'isNew': true, 'title': 'T'}"));
    Json::Value members = J("{'recordType': 'group', 'queryParam': 'title=T'}");
    EXPECT_THAT(Ask("fetchRecordsWithQuery", members), FailsWith(ErrorCode::INVALID_QUERY, "not queryable", "title"));
    title["queryable"] = true;
    Install(entry);
    EXPECT_EQ(Ask("fetchRecordsWithQuery", members)["records"].size(), 1u);
}

// Whatever the values, sorting in the service agrees with sorting in the test, and pages of any size join to the whole.
RC_GTEST_FIXTURE_PROP(FetchTest, PagesOfAnySizeJoinToTheSortedWhole, (std::vector<int8_t> ages, bool descending))
{
    Json::Value records(Json::arrayValue);
    std::vector<std::pair<int, std::string>> expected;
    for (size_t i = 0; i < ages.size(); ++i) {
        std::string id = "p" + std::to_string(1000 + i);
        Json::Value record = NewPerson(id, "{}");
        record["name"] = id;
        if (ages[i] % 3 != 0) {
            record["age"] = ages[i];
        }
        expected.emplace_back(ages[i] % 3 != 0 ? ages[i] : -1000, id);
        records.append(record);
    }
    Save(records);
    std::sort(expected.begin(), expected.end(), [descending](const auto &left, const auto &right) {
        return left.first != right.first ? (left.first < right.first) != descending : left.second < right.second;
    });
    std::vector<std::string> ids;
    for (const auto &[age, id] : expected) {
        ids.push_back(id);
    }
    std::string query = descending ? "orderBy=age desc" : "orderBy=age";
    for (int pageSize : {1, 3, 0}) {
        RC_ASSERT(Find(query, pageSize) == ids);
    }
}

} // namespace

} // namespace DriveService
