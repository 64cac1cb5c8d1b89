// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_fixture.h"

#include <rapidcheck/gtest.h>

namespace DriveService {

namespace {

class ReferenceTest : public ServiceTest {
protected:
    static Json::Value PersonWithFriend(const std::string &id, const std::string &friendId)
    {
        Json::Value person = NewPerson(id, "{'name': 'N'}");
        person["friend"] = Members({{"recordType", "person"}, {"recordId", friendId}});
        return person;
    }

    static Json::Value GroupOf(
        const std::string &member, const std::string &relation = "members", const std::string &type = "person")
    {
        Json::Value group = J("{'recordId': 'g', 'recordType': 'group', 'isNew': true}");
        group["relations"][0] = Members({{"relationName", relation}, {"recordType", type}, {"recordId", member}});
        return group;
    }
};

TEST_F(ReferenceTest, RecordsOfOneRequestMayPointToEachOther)
{
    for (const Json::Value &result : Save(List({PersonWithFriend("a", "b"), PersonWithFriend("b", "c"),
             PersonWithFriend("c", "a"), PersonWithFriend("self", "self"), GroupOf("a")}))) {
        EXPECT_THAT(result, Succeeds());
    }
    EXPECT_EQ(
        Fetch("g", "group")["relations"], J("[{'relationName': 'members', 'recordType': 'person', 'recordId': 'a'}]"));
}

TEST_F(ReferenceTest, UnknownDeletedAndWronglyTypedTargetsAreRefused)
{
    Json::Value list = NewPerson("l", "{'name': 'L', 'friends': [{'recordId': 'l', 'recordType': 'person'}, "
                                      "{'recordId': 'none', 'recordType': 'person'}]}");
    Json::Value results = Save(List({PersonWithFriend("a", "none"), list, GroupOf("none")}));
    EXPECT_THAT(
        results[0], FailsWith(ErrorCode::UNKNOWN_REFERENCE,
                        "\"friend\" points to record \"none\" of type \"person\", which does not exist", "friend"));
    EXPECT_THAT(results[1], FailsWith(ErrorCode::UNKNOWN_REFERENCE, "record \"none\"", "friends[1]"));
    EXPECT_THAT(results[2], FailsWith(ErrorCode::UNKNOWN_RELATION, "record \"none\"", "relations[0]"));

    SaveOne(J("{'recordId': 'g2', 'recordType': 'group', 'isNew': true}"));
    SaveOne(NewPerson("gone"));
    Delete("gone");
    results = Save(List({PersonWithFriend("a", "g2"), PersonWithFriend("b", "gone")}));
    EXPECT_THAT(results[0], FailsWith(ErrorCode::UNKNOWN_REFERENCE, "record \"g2\" of type \"person\"", "friend"));
    EXPECT_THAT(results[1], FailsWith(ErrorCode::UNKNOWN_REFERENCE, "record \"gone\"", "friend"));
}

TEST_F(ReferenceTest, ARefusedRecordTakesThoseThatPointToItAlong)
{
    Json::Value wrong = NewPerson("d", "{'name': 7}");
    SaveOne(NewPerson("first", "{'name': 'Dup', 'age': 1}"));
    Json::Value duplicate = NewPerson("dup", "{'name': 'Dup', 'age': 1}");
    Json::Value results = Save(List({PersonWithFriend("a", "b"), PersonWithFriend("b", "c"), PersonWithFriend("c", "d"),
        wrong, PersonWithFriend("e", "dup"), duplicate, PersonWithFriend("f", "first")}));
    for (int i : {0, 1, 2, 4}) {
        EXPECT_THAT(results[i], FailsWith(ErrorCode::UNKNOWN_REFERENCE, "which does not exist", "friend")) << i;
    }
    EXPECT_EQ(results[3]["code"], static_cast<int>(ErrorCode::INVALID_FIELD));
    EXPECT_EQ(results[5]["code"], static_cast<int>(ErrorCode::DUPLICATE_RECORD));
    EXPECT_THAT(results[6], Succeeds());
    EXPECT_EQ(Find("").size(), 2u);
}

// Whatever points where, the largest set is saved in which every reference is met.
RC_GTEST_FIXTURE_PROP(ReferenceTest, AllThatCanBeSavedIsSaved, (std::vector<uint8_t> friends, uint8_t bad))
{
    size_t count = friends.size();
    std::vector<Json::Value> records;
    std::vector<bool> good(count, true);
    for (size_t i = 0; i < count; ++i) {
        friends[i] = static_cast<uint8_t>(friends[i] % count);
        records.push_back(PersonWithFriend("p" + std::to_string(i), "p" + std::to_string(friends[i])));
        if (i == bad % count) {
            records[i]["name"] = 7;
            good[i] = false;
        }
    }
    for (size_t turn = 0; turn < count; ++turn) {
        for (size_t i = 0; i < count; ++i) {
            good[i] = good[i] && good[friends[i]];
        }
    }
    Json::Value results = Save(List(records));
    for (size_t i = 0; i < count; ++i) {
        RC_ASSERT((results[static_cast<Json::ArrayIndex>(i)]["code"] == 0) == good[i]);
    }
}

TEST_F(ReferenceTest, RelationsMustBeOfTheSchema)
{
    SaveOne(NewPerson("p"));
    EXPECT_THAT(Save(List({GroupOf("p", "owners")}))[0],
        FailsWith(
            ErrorCode::UNKNOWN_RELATION, "has no relation \"owners\" to records of type \"person\"", "relations[0]"));
    EXPECT_THAT(Save(List({GroupOf("p", "members", "media")}))[0],
        FailsWith(ErrorCode::UNKNOWN_RELATION, "to records of type \"media\"", "relations[0]"));
    EXPECT_THAT(Save(List({GroupOf("")}))[0],
        FailsWith(ErrorCode::INVALID_RECORD, "expected an object with the texts", "relations[0]"));
}

TEST_F(ReferenceTest, OnlyOverwritingClearsRelationsThatAreNotSent)
{
    SaveOne(NewPerson("p"));
    SaveOne(GroupOf("p"));
    Json::Value change = J("{'recordId': 'g', 'recordType': 'group', 'title': 'T', 'baseVersion': 1}");
    EXPECT_EQ(SaveOne(change, 0)["relations"].size(), 1u);
    EXPECT_EQ(SaveOne(change, 2)["relations"].size(), 0u);
}

} // namespace

} // namespace DriveService
