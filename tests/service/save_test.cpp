// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <limits>

#include <sys/resource.h>

#include "service_fixture.h"

namespace DriveService {

namespace {

using testing::HasSubstr;
using testing::SizeIs;

class SaveTest : public ServiceTest {};

TEST_F(SaveTest, ANewRecordComesBackWithItsBookkeeping)
{
    nowMs_ = 5000;
    Json::Value result = SaveOne(NewPerson("p1", "{'name': 'Ann', 'height': 2, 'tags': ['x', 'y']}"));
    EXPECT_EQ(result["recordId"], "p1");
    EXPECT_EQ(result["localRecordId"], "p1");
    EXPECT_EQ(result["version"], 1);
    EXPECT_EQ(result["createdTime"], 5000);
    EXPECT_EQ(result["createInfo"], J("{'time': 5000, 'deviceName': 'tablet', 'appId': 'app-7'}"));
    EXPECT_EQ(result["modifiedInfo"], result["createInfo"]);
    EXPECT_EQ(result["record"], J("{'name': 'Ann', 'height': 2.0, 'tags': ['x', 'y']}"));
    EXPECT_EQ(result["record"]["height"].type(), Json::realValue);
    EXPECT_EQ(result["deleted"], false);
    EXPECT_THAT(result["ownerId"].asString(), testing::StartsWith("local-"));

    nowMs_ = 6000;
    SaveOne(Changed("p1", 1, "{'age': 30, 'tags': null}"));
    Restart();
    Json::Value fetched = Fetch("p1");
    EXPECT_EQ(fetched["version"], 2);
    EXPECT_EQ(fetched["createdTime"], 5000);
    EXPECT_EQ(fetched["editedTime"], 6000);
    EXPECT_EQ(fetched["createInfo"]["time"], 5000);
    EXPECT_EQ(fetched["modifiedInfo"]["time"], 6000);
    EXPECT_EQ(fetched["record"], J("{'name': 'Ann', 'height': 2.0, 'age': 30}"));
}

TEST_F(SaveTest, OnlyANewRecordMayComeWithoutAnId)
{
    Json::Value result = SaveOne(NewPerson(""));
    EXPECT_EQ(result["localRecordId"], "");
    EXPECT_THAT(result["recordId"].asString(), testing::MatchesRegex("F[A-Za-z0-9_-]{32}"));
    EXPECT_THAT(Fetch(result["recordId"].asString()), Succeeds());
    EXPECT_THAT(Save(List({Changed("", 1, "{'name': 'Bob'}")}))[0],
        FailsWith(ErrorCode::INVALID_RECORD, "has no recordId", "recordId"));
}

TEST_F(SaveTest, PolicyIfUnchangedRefusesWhatIsBasedOnAnotherVersion)
{
    SaveOne(NewPerson("p1"));
    SaveOne(Changed("p1", 1, "{'age': 1}"));
    Json::Value results =
        Save(List({Changed("p1", 1, "{'age': 2}"), NewPerson("p1"), NewPerson("p2"), Changed("p2", 1, "{'age': 5}")}));
    EXPECT_THAT(results[0],
        FailsWith(ErrorCode::VERSION_CONFLICT, "has version 2, the change is based on version 1", "baseVersion"));
    EXPECT_EQ(results[0]["localRecordId"], "p1");
    EXPECT_EQ(results[0]["currentRecord"]["record"]["age"], 1);
    EXPECT_EQ(results[0]["error"]["errorType"], static_cast<int>(ErrorType::STATE));
    EXPECT_THAT(results[1], FailsWith(ErrorCode::RECORD_EXISTS, "exists already, with version 2", "recordId"));
    EXPECT_THAT(results[2], Succeeds()) << "one refused record must not hinder the others";
    EXPECT_EQ(results[3]["version"], 2) << "an id that stands in a request twice is saved twice";
    EXPECT_EQ(Fetch("p1")["record"]["age"], 1);
}

TEST_F(SaveTest, TheOtherPoliciesMergeOrOverwriteWhateverTheVersion)
{
    SaveOne(NewPerson("p1", "{'name': 'Ann', 'age': 1, 'active': true}"));
    SaveOne(Changed("p1", 77, "{'age': 2, 'active': null}"), 1);
    EXPECT_EQ(Fetch("p1")["record"], J("{'name': 'Ann', 'age': 2}"));
    SaveOne(Changed("p1", 77, "{'name': 'Eve'}"), 2);
    EXPECT_EQ(Fetch("p1")["record"], J("{'name': 'Eve'}"));
    EXPECT_EQ(Fetch("p1")["version"], 3);
    SaveOne(NewPerson("p1", "{'name': 'New'}"), 1);
    EXPECT_EQ(Fetch("p1")["version"], 4);
}

TEST_F(SaveTest, DeletedAndUnknownRecordsCanOnlyBeCreated)
{
    SaveOne(NewPerson("p1", "{'name': 'Ann', 'age': 9}"));
    Delete("p1");
    Json::Value results = Save(List({Changed("p1", 2, "{'age': 2}"), Changed("p9", 1, "{'age': 2}")}), 2);
    EXPECT_THAT(results[0], FailsWith(ErrorCode::RECORD_DELETED, "was deleted (version 2)", "recordId"));
    EXPECT_THAT(results[1], FailsWith(ErrorCode::RECORD_NOT_FOUND, "\"p9\" does not exist", "recordId"));
    Json::Value again = SaveOne(NewPerson("p1", "{'name': 'Back'}"));
    EXPECT_EQ(again["version"], 3);
    EXPECT_EQ(again["record"], J("{'name': 'Back'}"));
    Delete("p1");
    EXPECT_THAT(Save(J("[{'recordId': 'p1', 'recordType': 'group', 'isNew': true}]"))[0],
        FailsWith(ErrorCode::RECORD_TYPE_MISMATCH, "\"p1\" is of type \"person\"", "recordType"))
        << "followers of persons only would never learn of the deletion";
}

TEST_F(SaveTest, DeletionFollowsThePolicyAndCanBeRepeated)
{
    SaveOne(NewPerson("p1"));
    Json::Value deletion = J(R"({'recordType': 'person', 'savePolicy': 0, 'records': [
        {'recordId': 'p1', 'baseVersion': 7}, {'recordId': 'p9'}, {'recordType': 'person'},
        {'recordId': 'p1', 'baseVersion': 'x'}]})");
    Json::Value results = Ask("deleteRecords", deletion)["records"];
    EXPECT_THAT(results[0],
        FailsWith(ErrorCode::VERSION_CONFLICT, "has version 1, the deletion is based on version 7", "baseVersion"));
    EXPECT_THAT(results[1], FailsWith(ErrorCode::RECORD_NOT_FOUND, "\"p9\" does not exist", "recordId"));
    EXPECT_THAT(results[2], FailsWith(ErrorCode::INVALID_RECORD, "record to delete is an object", "recordId"));
    EXPECT_THAT(results[3], FailsWith(ErrorCode::INVALID_RECORD, "came text \"x\"", "baseVersion"));
    EXPECT_THAT(Delete("p1", "group"),
        FailsWith(ErrorCode::RECORD_TYPE_MISMATCH, "is of type \"person\", not \"group\"", "recordType"));
    for (int round = 0; round < 2; ++round) {
        Json::Value done = Delete("p1");
        EXPECT_THAT(done, Succeeds());
        EXPECT_EQ(done["version"], 2);
        EXPECT_EQ(done["deleted"], true);
        EXPECT_FALSE(done.isMember("record"));
    }
}

struct FieldCase {
    const char *fields;
    const char *text;
    const char *position;
};

TEST_F(SaveTest, EachFieldIsCheckedAgainstItsTypeAndNamed)
{
    const FieldCase cases[] = {
        {"{'name': 5}", "field \"name\": expected String, came integer 5", "name"},
        {"{'name': 'A', 'age': 1.5}", "expected Integer, came number 1.5", "age"},
        {"{'name': 'A', 'age': 9223372036854775808}", "expected Integer, came integer 9223372036854775808", "age"},
        {"{'name': 'A', 'height': 'x'}", "expected Double, came text \"x\"", "height"},
        {"{'name': 'A', 'active': 1}", "expected Boolean, came integer 1", "active"},
        {"{'name': 'A', 'photo': 'abc'}", "expected Blob (a Base64 text), came text \"abc\"", "photo"},
        {"{'name': 'A', 'tags': 'x'}", "expected List of String, came text \"x\"", "tags"},
        {"{'name': 'A', 'tags': ['x', 3]}", "expected String, came integer 3", "tags[1]"},
        {"{'name': 'A', 'props': []}", "expected Map, came an array", "props"},
        {"{'name': 'A', 'props': {'a': {}}}", "within a Map, came an object", "props.a"},
        {"{'name': 'A', 'avatar': 7}", "expected Asset, came integer 7", "avatar"},
        {"{'name': 'A', 'avatar': {'size': -1}}", "integer that is not negative, came integer -1", "avatar.size"},
        {"{'name': 'A', 'avatar': {'uri': 1}}", "expected a text, came integer 1", "avatar.uri"},
        {"{'name': 'A', 'avatar': {'assetOperType': 4}}", "from 0 to 3, came integer 4", "avatar.assetOperType"},
        {"{'name': 'A', 'friend': {'recordId': 'x'}}", "expected Reference (an object", "friend"},
        {"{'name': 'A', 'friend': {'recordId': 'x', 'recordType': 'group'}}",
            "a Reference to a record of type \"person\", came text \"group\"", "friend"},
        {"{'name': 'A', 'shoe': 1}", "record type \"person\" has no field \"shoe\"", "shoe"},
        {"{'age': 1}", "expected String because the field is primary, came no value", "name"},
        {"{'name': null}", "because the field is primary", "name"},
    };
    for (const FieldCase &test : cases) {
        EXPECT_THAT(
            Save(List({NewPerson("p", test.fields)}))[0], FailsWith(ErrorCode::INVALID_FIELD, test.text, test.position))
            << test.fields;
    }
    EXPECT_THAT(Fetch("p"), FailsWith(ErrorCode::RECORD_NOT_FOUND, "does not exist", "recordId"));
    Json::Value entry = PeopleEntry();
    entry["defaultContainer"]["schema"]["recordTypes"][1]["fields"][0]["nullable"] = false;
    Install(entry);
    EXPECT_THAT(Save(J("[{'recordId': 'g', 'recordType': 'group', 'isNew': true}]"))[0],
        FailsWith(ErrorCode::INVALID_FIELD, "because the field is not nullable", "title"));
}

TEST_F(SaveTest, EveryKindOfValueIsKeptAsItWasSent)
{
    const char *fields = R"({'name': 'Zoë \u0000 \\ 漢字', 'age': -9223372036854775808, 'height': 0.1, 'active': false,
        'tags': ['', 'a,b&c'], 'scores': [1, -2], 'photo': 'AAEC/w==', 'props': {'i': 1, 'd': 1.5, 's': 't', 'b': true},
        'avatar': {'uri': 'file://x', 'assetName': 'x', 'assetOperType': 1, 'sha256': '', 'version': 18446744073709551615,
        'assetId': 'a', 'subPath': '', 'exCheckInfo': '', 'size': 3}, 'friend': {'recordId': 'p1', 'recordType': 'person'}})";
    SaveOne(NewPerson("p1", fields));
    EXPECT_EQ(Fetch("p1")["record"], J(fields));

    SaveOne(J("{'recordId': 'm', 'recordType': 'media', 'isNew': true, 'attachments': "
              "[{'asset': {'uri': 'a', 'assetId': '1'}}, {'uri': 'b', 'assetId': '2'}]}"));
    EXPECT_EQ(Fetch("m", "media")["record"]["attachments"],
        J("[{'uri': 'a', 'assetId': '1'}, {'uri': 'b', 'assetId': '2'}]"));
}

TEST_F(SaveTest, NumbersKeepEveryBit)
{
    for (int64_t age : {int64_t{9007199254740993}, std::numeric_limits<int64_t>::max()}) {
        SaveOne(NewPerson("p", "{'name': 'A', 'age': " + std::to_string(age) + "}"), 2);
        EXPECT_EQ(Fetch("p")["record"]["age"].asInt64(), age);
        EXPECT_THAT(Find("age=" + std::to_string(age)), SizeIs(1));
        EXPECT_THAT(Find("age=" + std::to_string(age - 1)), SizeIs(0));
    }
    for (const char *text :
        {"5e-324", "2.2250738585072011e-308", "1.7976931348623157e308", "-0.0", "0.30000000000000004"}) {
        SaveOne(NewPerson("p", std::string("{'name': 'A', 'height': ") + text + "}"), 2);
        double height = Fetch("p")["record"]["height"].asDouble();
        EXPECT_EQ(height, std::strtod(text, nullptr));
        EXPECT_EQ(std::signbit(height), text[0] == '-');
        EXPECT_THAT(Find(std::string("height=") + text), SizeIs(1));
    }
}

TEST_F(SaveTest, NullIsTheEmptyListOrMapWhereItMustNotBeMissing)
{
    Json::Value entry = PeopleEntry();
    for (const char *field :
        {"{'name': 'names', 'type': 'List', 'listType': 'Map'}", "{'name': 'map', 'type': 'Map'}"}) {
        entry["defaultContainer"]["schema"]["recordTypes"][1]["fields"].append(J(field));
    }
    Install(entry);
    SaveOne(J("{'recordId': 'g', 'recordType': 'group', 'isNew': true, 'names': [null, {'a': 1}], 'map': null}"));
    EXPECT_EQ(Fetch("g", "group")["record"], J("{'names': [{}, {'a': 1}], 'map': {}}"));
    SaveOne(J("{'recordId': 'g', 'recordType': 'group', 'names': null}"), 1);
    EXPECT_EQ(Fetch("g", "group")["record"], J("{'names': [], 'map': {}}"));
    EXPECT_THAT(Save(J("[{'recordId': 'h', 'recordType': 'group', 'isNew': true, 'map': null}]"))[0],
        FailsWith(ErrorCode::INVALID_FIELD, "came no value", "names"));
}

TEST_F(SaveTest, NoRequestMakesAReplyManyTimesItsSize)
{
    Json::Value records(Json::arrayValue);
    for (const char *name : {"unknown", "tags", "props"}) {
        Json::Value record = NewPerson(name);
        for (int i = 0; i < 10000; ++i) {
            std::string member = "m" + std::to_string(i);
            Json::Value &bad = std::string(name) == "unknown" ? record[member]
                               : std::string(name) == "tags"  ? record["tags"][i]
                                                              : record["props"][member];
            bad = Json::Value(std::string(name) == "props" ? Json::arrayValue : Json::intValue);
        }
        records.append(record);
    }
    records.append(NewPerson("long", "{'name': 'A', 'props': {}}"));
    records[3]["props"][std::string(100000, 'x')] = Json::Value(Json::arrayValue);
    for (const Json::Value &result : Save(records)) {
        EXPECT_EQ(result["code"], static_cast<int>(ErrorCode::INVALID_FIELD));
        EXPECT_LT(result.toStyledString().size(), 20000u);
    }
    // Pages are bounded by the data of their records, so nothing else in them may be large.
    Json::Value request = J("{'function': 'saveRecords', 'bundleName': 'com.example.people', 'savePolicy': 0, "
                            "'containerName': 'people'}");
    for (const std::string &device : {std::string(100000, 'd'), std::string("\xff")}) {
        request["records"][0] = NewPerson("p" + std::to_string(device.size()));
        service_->Router().Answer(request.toStyledString(), device);
    }
    EXPECT_LT(Fetch("p100000")["createInfo"]["deviceName"].asString().size(), 100u);
    EXPECT_EQ(Fetch("p1")["createInfo"]["deviceName"], "");
}

TEST_F(SaveTest, AFullDiskLeavesEverythingAsItWas)
{
    SaveOne(NewPerson("p1"));
    Json::Value large = NewPerson("p2", "{'name': '" + std::string(6 * 1024 * 1024, 'x') + "'}");
    Json::Value members = Members({{"savePolicy", 0}, {"records", List({large})}});
    Json::Value cursor = Ask("getStartCursor");
    struct rlimit before {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    auto handler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit full = before;
    full.rlim_cur = 1024 * 1024;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    Json::Value reply = Ask("saveRecords", members);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_THAT(reply, FailsWith(ErrorCode::STORE_FAILED, "/drive.db: disk I/O error", ""));
    EXPECT_EQ(Ask("getStartCursor"), cursor);
    EXPECT_THAT(Ask("saveRecords", members)["records"][0], Succeeds()) << "no failure outlives its cause";
    Restart();
    EXPECT_EQ(Fetch("p2")["version"], 1);
}

TEST_F(SaveTest, BookkeepingMembersAreChecked)
{
    SaveOne(J("{'recordId': 'g', 'recordType': 'group', 'isNew': true}"));
    struct Case {
        Json::Value record;
        ErrorCode code;
        const char *text;
        const char *position;
    };
    auto person = [](const char *name, const Json::Value &value) {
        return Members({{"recordId", "a"}, {"recordType", "person"}, {"isNew", true}, {name, value}});
    };
    const Case cases[] = {
        {5, ErrorCode::INVALID_RECORD, "a record is an object, came integer 5", "records"},
        {person("recordId", 3), ErrorCode::INVALID_RECORD, "expected a text, came integer 3", "recordId"},
        {person("isNew", "yes"), ErrorCode::INVALID_RECORD, "expected true or false, came text", "isNew"},
        {person("baseVersion", -1), ErrorCode::INVALID_RECORD, "not negative, came integer -1", "baseVersion"},
        {person("deleted", true), ErrorCode::INVALID_RECORD, "a deleted record cannot be saved", "deleted"},
        {person("recordType", "nobody"), ErrorCode::UNKNOWN_RECORD_TYPE, "no record type \"nobody\"", "recordType"},
        {person("recordId", "g"), ErrorCode::RECORD_TYPE_MISMATCH, "\"g\" is of type \"group\", not \"person\"",
            "recordType"},
    };
    for (const Case &test : cases) {
        Json::Value refused = Save(List({test.record}))[0];
        EXPECT_THAT(refused, FailsWith(test.code, test.text, test.position));
        if (test.record.isObject() && test.record["recordId"].isString()) {
            EXPECT_EQ(refused["localRecordId"], test.record["recordId"]) << "clients find their record by it";
        }
    }
    Json::Value other = J("{'recordId': 'a', 'recordType': 'group', 'isNew': true, 'relations': 5}");
    EXPECT_THAT(
        Save(List({other}))[0], FailsWith(ErrorCode::INVALID_RECORD, "expected an array, came integer 5", "relations"));
}

TEST_F(SaveTest, ACreateThatMeetsAnotherInTheDuplicateCheckFieldsReportsIt)
{
    SaveOne(NewPerson("p1", "{'name': 'Ann', 'age': 30}"));
    Json::Value results =
        Save(List({NewPerson("p2", "{'name': 'Ann', 'age': 30}"), NewPerson("p3", "{'name': 'Ann', 'age': 31}"),
                 NewPerson("p4", "{'name': 'Ann', 'age': 31}"), NewPerson("p5"), NewPerson("p6")}),
            2);
    EXPECT_THAT(results[0], FailsWith(ErrorCode::DUPLICATE_RECORD, "record \"p1\" has the same values", "name,age"));
    EXPECT_EQ(results[0]["currentRecord"]["recordId"], "p1");
    EXPECT_THAT(results[1], Succeeds());
    EXPECT_THAT(results[2], FailsWith(ErrorCode::DUPLICATE_RECORD, "record \"p3\" has the same values", "name,age"));
    EXPECT_THAT(results[3], Succeeds());
    EXPECT_THAT(results[4], Succeeds()) << "records without one of the values are like no other";
    Json::Value moved = List({Changed("p1", 0, "{'age': 40}"), NewPerson("p7", "{'name': 'Ann', 'age': 30}")});
    EXPECT_THAT(Save(moved, 1)[1], Succeeds()) << "the same request has made the values free";
    Json::Value taken = List({NewPerson("p8", "{'name': 'Ann', 'age': 40}"), Changed("p1", 0, "{'height': 1}")});
    EXPECT_THAT(Save(taken, 1)[0], FailsWith(ErrorCode::DUPLICATE_RECORD, "record \"p1\"", "name,age"))
        << "a change of other fields leaves the values taken";
    Json::Value entry = PeopleEntry();
    for (Json::Value &field : entry["defaultContainer"]["schema"]["recordTypes"][0]["fields"]) {
        field["type"] = field["name"] == "age" ? Json::Value("Double") : field["type"];
    }
    Install(entry);
    EXPECT_THAT(Save(taken, 1)[0], FailsWith(ErrorCode::DUPLICATE_RECORD, "record \"p1\"", "name,age"))
        << "nor does a new type of a field set free what was saved before";
}

TEST_F(SaveTest, AVeryLargeSaveIsAcknowledgedWithoutAllOfItsData)
{
    Json::Value records(Json::arrayValue);
    for (const char *id : {"p1", "p2", "p3", "p4", "p5"}) {
        records.append(NewPerson(id, "{'name': '" + std::string(7 * 1024 * 1024, 'x') + "'}"));
    }
    Json::Value results = Save(records);
    EXPECT_TRUE(results[3].isMember("record"));
    EXPECT_THAT(results[4], Succeeds());
    EXPECT_FALSE(results[4].isMember("record")) << "the reply must fit into a parcel";
    EXPECT_EQ(Fetch("p5")["record"]["name"], records[4]["name"]);
}

TEST_F(SaveTest, WrongRequestsAreRefusedAsAWhole)
{
    Json::Value entry = PeopleEntry();
    entry["defaultContainer"]["maxBatchNumber"] = 1;
    Install(entry);
    ExpectRefused({
        {"saveRecords", "{'records': [{}, {}], 'savePolicy': 0}", ErrorCode::BATCH_TOO_LARGE, "takes at most 1 at once",
            "records"},
        {"saveRecords", "{'records': [], 'savePolicy': 3}", ErrorCode::INVALID_ARGUMENT,
            "an integer from 0 to 2, came integer 3", "savePolicy"},
        {"saveRecords", "{'records': {}, 'savePolicy': 0}", ErrorCode::INVALID_ARGUMENT, "expected an array",
            "records"},
        {"saveRecords", "{'records': [], 'savePolicy': 0, 'databaseType': 3}", ErrorCode::INVALID_ARGUMENT,
            "from 0 to 2", "databaseType"},
        {"saveRecords", "{'records': [], 'savePolicy': 0, 'containerName': 'x'}", ErrorCode::UNKNOWN_CONTAINER,
            "has no container \"x\"", "containerName"},
        {"saveRecords", "{'records': [], 'savePolicy': 0, 'bundleName': '../x'}", ErrorCode::UNKNOWN_BUNDLE,
            "has no bundle \"../x\"", "bundleName"},
    });
}

} // namespace

} // namespace DriveService
