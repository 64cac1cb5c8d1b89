// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <functional>

#include "catalogue/catalogue_parser.h"
#include "service_fixture.h"

namespace DriveService {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string ProblemsOf(const std::function<void(Json::Value &)> &change)
{
    Json::Value entry = PeopleEntry();
    change(entry);
    return DescribeProblems("f.json", ParseCatalogueEntry(entry).problems);
}

Json::Value &Schema(Json::Value &entry)
{
    return entry["defaultContainer"]["schema"];
}

Json::Value &Field(Json::Value &entry, int index)
{
    return Schema(entry)["recordTypes"][0]["fields"][index];
}

TEST(CatalogueCheckTest, AGoodEntryIsReadWhole)
{
    ParsedEntry parsed = ParseCatalogueEntry(PeopleEntry());
    EXPECT_EQ(DescribeProblems("f", parsed.problems), "");
    const ContainerEntry &container = parsed.entry.defaultContainer;
    EXPECT_EQ(parsed.entry.verifyRemainSpace, 1);
    EXPECT_EQ(container.maxBatchNumber, 2000u);
    EXPECT_EQ(container.FindType("person")->FindField("age")->type, FieldType::INTEGER);
    EXPECT_EQ(container.FindType("person")->FindField("friend")->refRecordType, "person");
    EXPECT_EQ(container.FindType("group")->FindRelation("members")->recordType, "person");
    EXPECT_FALSE(parsed.entry.reply.isMember("configParams"))
        << "clients are told nothing of the service's own members";
    Json::Value bare = PeopleEntry();
    bare["defaultContainer"].removeMember("maxBatchNumber");
    EXPECT_EQ(ParseCatalogueEntry(bare).entry.defaultContainer.maxBatchNumber, 10u);
}

struct CheckCase {
    std::function<void(Json::Value &)> change;
    const char *problem;
};

TEST(CatalogueCheckTest, ProblemsNameTheMemberAndWhatWasExpected)
{
    using V = Json::Value;
    const CheckCase cases[] = {
        {[](V &e) { e.removeMember("bundleName"); },
            "f.json: bundleName: is missing, expected a text that is not empty"},
        {[](V &e) { e["bundleName"] = "../x"; }, "bundleName: expected letters, digits"},
        {[](V &e) { e["appId"] = 5; }, "appId: expected a text that is not empty, found integer 5"},
        {[](V &e) { e["schemaGroupVersion"] = "3"; },
            "schemaGroupVersion: expected an integer from 0 to 2147483647, found text \"3\""},
        {[](V &e) { e["switchStatus"] = 4; }, "switchStatus: expected an integer from 0 to 3, found integer 4"},
        {[](V &e) { e["colour"] = 1; }, "colour: is not a known member"},
        {[](V &e) { e["configParams"]["a"] = 1; }, "configParams.a: expected a text, found integer 1"},
        {[](V &e) { e["configParams"]["code"] = "x"; }, "configParams.code: is reserved"},
        {[](V &e) { e["demons"] = J("['0', '2']"); }, "demons[1]: expected \"0\" or \"1\", found text \"2\""},
        {[](V &e) { e["defaultContainer"] = J("[]"); }, "defaultContainer: expected an object, found an array"},
        {[](V &e) { e["sharedContainer"] = J("[5]"); }, "sharedContainer[0]: expected an object, found integer 5"},
        {[](V &e) { e["sharedContainer"].append(e["defaultContainer"]); },
            "sharedContainer[0].name: \"people\" is there twice"},
        {[](V &e) { e["defaultContainer"]["name"] = ""; }, "defaultContainer.name: expected a text that is not empty"},
        {[](V &e) { e["defaultContainer"]["maxBatchNumber"] = 0; },
            "maxBatchNumber: expected an integer from 1 to 100000"},
        {[](V &e) { e["defaultContainer"]["settings"]["x"] = 1; },
            "defaultContainer.settings.x: is not a known member"},
        {[](V &e) { e["defaultContainer"]["recordIdRule"]["upid"] = "12x"; },
            "recordIdRule.upid: expected a decimal number as text, found text \"12x\""},
        {[](V &e) { e["defaultContainer"].removeMember("schema"); },
            "defaultContainer.schema: is missing, expected an object"},
        {[](V &e) { Schema(e).removeMember("recordTypes"); }, "schema.recordTypes: is missing, expected an array"},
        {[](V &e) { Schema(e)["recordTypes"][0] = 1; }, "schema.recordTypes[0]: expected an object, found integer 1"},
        {[](V &e) { Schema(e)["recordTypes"].append(Schema(e)["recordTypes"][1]); },
            "schema.recordTypes[3].recordType: \"group\" is there twice"},
        {[](V &e) { Field(e, 0)["type"] = "Text"; },
            "recordTypes[0].fields[0].type: expected one of \"Null\", \"Integer\", \"Long\", \"Double\", \"String\","},
        {[](V &e) { Field(e, 0)["type"] = "string"; }, "found text \"string\""},
        {[](V &e) { Field(e, 0)["primary"] = 1; }, "fields[0].primary: expected true or false, found integer 1"},
        {[](V &e) { Field(e, 0)["name"] = "a b"; }, "fields[0].name: expected at most 128 letters"},
        {[](V &e) { Field(e, 2)["name"] = "recordId"; }, "fields[2].name: \"recordId\" is reserved"},
        {[](V &e) { Field(e, 2)["name"] = "orderBy"; }, "fields[2].name: \"orderBy\" is reserved"},
        {[](V &e) { Field(e, 2)["name"] = "age"; }, "fields[2].name: \"age\" is there twice"},
        {[](V &e) { Field(e, 0)["listType"] = "String"; }, "fields[0].listType: is only for fields of type \"List\""},
        {[](V &e) { Field(e, 4).removeMember("listType"); }, "fields[4].listType: is missing"},
        {[](V &e) { Field(e, 4)["listType"] = "List"; }, "fields[4].listType: a list of lists is not supported"},
        {[](V &e) { Field(e, 4)["sortable"] = true; },
            "fields[4].sortable: a field of type \"List\" cannot be sorted by"},
        {[](V &e) { Field(e, 0)["reference"] = J("{'recordType': 'person'}"); },
            "fields[0].reference: is only for fields of type \"Reference\""},
        {[](V &e) { Field(e, 9)["reference"]["recordType"] = "nobody"; },
            "fields[9].reference.recordType: expected a record type of this schema, found text \"nobody\""},
        {[](V &e) { Schema(e)["recordTypes"][0]["dupCheckFields"][1] = "shoe"; },
            "dupCheckFields[1]: expected the name of a field of this record type, found text \"shoe\""},
        {[](V &e) { Schema(e)["recordTypes"][0]["dupCheckFields"][1] = "tags"; },
            "dupCheckFields[1]: a field of type \"List\" cannot be compared"},
        {[](V &e) { Schema(e)["recordTypes"][0]["dupCheckFields"][1] = "name"; },
            "dupCheckFields[1]: \"name\" is there twice"},
        {[](V &e) { Schema(e)["recordTypes"][1]["relations"][0]["recordType"] = "nobody"; },
            "relations[0].recordType: expected a record type of this schema"},
        {[](V &e) { Schema(e)["recordTypes"][1]["relations"][0]["refField"]["shoe"] = "x"; },
            "relations[0].refField.shoe: expected the name of a field of this record type"},
        {[](V &e) { Schema(e)["recordTypes"][1]["relations"][0]["refField"]["title"] = 1; },
            "relations[0].refField.title: expected the name of a field, found integer 1"},
        {[](V &e) { Schema(e)["recordTypes"][1]["relations"].append(Schema(e)["recordTypes"][1]["relations"][0]); },
            "relations[1].relationName: \"members\" is there twice"},
    };
    for (const CheckCase &test : cases) {
        EXPECT_THAT(ProblemsOf(test.change), HasSubstr(test.problem));
    }
}

TEST(CatalogueCheckTest, AllProblemsOfAFileAreFoundAtOnce)
{
    std::string problems = ProblemsOf([](Json::Value &entry) {
        entry["appId"] = 1;
        Field(entry, 0)["type"] = "Text";
        Field(entry, 1)["extra"] = 1;
    });
    EXPECT_EQ(std::count(problems.begin(), problems.end(), '\n'), 3) << problems;
}

TEST(CatalogueCheckTest, TextsThatAreNoEntryAreOneProblem)
{
    EXPECT_THAT(DescribeProblems("f", ParseCatalogueText("{\"a\": 1,}").problems), HasSubstr("f: expected JSON: "));
    EXPECT_THAT(DescribeProblems("f", ParseCatalogueText("{\"a\": 1, \"a\": 2}").problems), HasSubstr("Duplicate key"));
    EXPECT_EQ(DescribeProblems("f", ParseCatalogueText("[]").problems), "f: expected an object, found an array\n");
    EXPECT_THAT(ParseCatalogueText(std::string(5000, '[')).problems, testing::SizeIs(1));
}

} // namespace

} // namespace DriveService
