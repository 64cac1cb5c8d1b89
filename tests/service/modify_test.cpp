// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_fixture.h"

namespace DriveService {

namespace {

class ModifyTest : public ServiceTest {
protected:
    // Records to delete are written 'id:type:version'.
    Json::Value Modify(const std::vector<Json::Value> &save, const std::vector<std::string> &erase, bool atomic)
    {
        Json::Value deleted(Json::arrayValue);
        for (const std::string &name : erase) {
            size_t type = name.find(':') + 1;
            size_t version = name.find(':', type) + 1;
            Json::Value record = Changed(name.substr(0, type - 1), std::stoi(name.substr(version)), "{}");
            record["recordType"] = name.substr(type, version - type - 1);
            deleted.append(record);
        }
        return Ask("modifyRecords", Members({{"savePolicy", 0}, {"atomic", atomic}, {"recordsToSave", List(save)},
                                        {"recordsToDelete", deleted}}));
    }
};

TEST_F(ModifyTest, SavesAndDeletesRecordsOfAllTypesInOneGo)
{
    SaveOne(NewPerson("p1", "{'name': 'Ann', 'age': 1}"));
    SaveOne(J("{'recordId': 'g1', 'recordType': 'group', 'isNew': true}"));

    // The new record's duplicate is deleted with it, and so are records of two types.
    Json::Value reply = Modify({NewPerson("p2", "{'name': 'Ann', 'age': 1}")}, {"p1:person:1", "g1:group:1"}, true);

    ASSERT_THAT(reply, Succeeds());
    EXPECT_THAT(reply["recordsToSave"][0], Succeeds());
    EXPECT_EQ(reply["recordsToSave"][0]["localRecordId"], "p2");
    for (int i : {0, 1}) {
        EXPECT_THAT(reply["recordsToDelete"][i], Succeeds());
        EXPECT_EQ(reply["recordsToDelete"][i]["deleted"], true);
    }
    EXPECT_THAT(Fetch("g1", "group"), FailsWith(ErrorCode::RECORD_DELETED, "g1", "recordId"));
    EXPECT_THAT(Fetch("p2"), Succeeds());
}

TEST_F(ModifyTest, AnAtomicRequestIsDoneAsAWholeOrNotAtAll)
{
    SaveOne(NewPerson("p1"));
    std::vector<Json::Value> save{NewPerson("p2", "{'name': 'Bob'}"), Changed("p1", 7, "{'name': 'Cid'}")};
    Json::Value start = Ask("getStartCursor");

    Json::Value whole = Modify(save, {"p1:person:1", "nobody:person:1"}, true);

    ASSERT_THAT(whole, Succeeds());
    EXPECT_THAT(whole["recordsToSave"][0], FailsWith(ErrorCode::NOT_APPLIED, "another record", "atomic"));
    EXPECT_THAT(whole["recordsToSave"][1], FailsWith(ErrorCode::RECORD_DELETED, "p1", "recordId"));
    EXPECT_THAT(whole["recordsToDelete"][0], FailsWith(ErrorCode::NOT_APPLIED, "another record", "atomic"));
    EXPECT_THAT(whole["recordsToDelete"][1], FailsWith(ErrorCode::RECORD_NOT_FOUND, "nobody", "recordId"));
    EXPECT_EQ(whole.toStyledString().find("currentRecord"), std::string::npos) << "a state that never was";
    EXPECT_EQ(Ask("getStartCursor"), start);
    EXPECT_THAT(Find(""), testing::ElementsAre("p1"));

    Json::Value apart = Modify(save, {"p1:person:1", "nobody:person:1"}, false);
    EXPECT_THAT(apart["recordsToSave"][0], Succeeds());
    EXPECT_THAT(apart["recordsToDelete"][0], Succeeds());
    EXPECT_THAT(Find(""), testing::ElementsAre("p2"));
}

TEST_F(ModifyTest, WrongRequestsAreRefused)
{
    EXPECT_THAT(Modify({}, {"p:person:1"}, true)["recordsToDelete"][0],
        FailsWith(ErrorCode::RECORD_NOT_FOUND, "\"p\"", "recordId"));
    SaveOne(NewPerson("p1"));
    EXPECT_THAT(Modify({}, {"p1:group:1"}, true)["recordsToDelete"][0],
        FailsWith(ErrorCode::RECORD_TYPE_MISMATCH, "not \"group\"", "recordType"));
    std::vector<std::string> many(2000, "p:person:1");
    EXPECT_THAT(
        Modify({NewPerson("x")}, many, true), FailsWith(ErrorCode::BATCH_TOO_LARGE, "2001 records", "recordsToDelete"));
    ExpectRefused({
        {"modifyRecords", "{'recordsToSave': [], 'savePolicy': 0}", ErrorCode::INVALID_ARGUMENT, "recordsToDelete",
            "recordsToDelete"},
        {"modifyRecords", "{'recordsToSave': [], 'recordsToDelete': [], 'atomic': 1, 'savePolicy': 0}",
            ErrorCode::INVALID_ARGUMENT, "true or false", "atomic"},
    });
}

} // namespace

} // namespace DriveService
