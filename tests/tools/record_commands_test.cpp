// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <string>

#include "end_to_end_fixture.h"
#include "record_json.h"

// The commands that change several records at once.
namespace NubisTool {
namespace {
using testing::HasSubstr;

constexpr const char *NOTE = " --bundle com.example.notes --type note ";

TEST_F(EndToEndTest, ModifySavesAndDeletesWhatItCanOrNothingAtAll)
{
    Put("both.json", R"({"delete": ["old", {"recordId": "none", "recordType": "note"}], "save": [
        {"title": "made"}, {"recordId": "kept", "stars": 2}, {"recordId": "f", "isNew": true, "recordType": "folder",
        "title": "F"}]})");
    const std::string modify = std::string("nubis record modify both.json") + NOTE;
    const std::string lines = std::string("save() { nubis record save --new --id $1 '{\"title\": \"x\"}' >/dev/null") +
                              NOTE + "; }\nsave old && save kept || exit 98\n" + modify + " --atomic >/dev/null\n" +
                              modify + "--json";
    EXPECT_EQ(RunLines(lines), 1);
    EXPECT_THAT(Errors(), HasSubstr("nothing was done, because not everything could be:"));
    EXPECT_THAT(Errors(), HasSubstr("NOT_APPLIED"));
    // Not what the records advise that were refused only because of another one.
    EXPECT_THAT(Errors(), testing::Not(HasSubstr("next: correct what the other records")));
    Json::Value results = Out();
    ASSERT_EQ(results.size(), 5U) << out_;
    EXPECT_EQ(results[0]["version"].asInt(), 2);
    EXPECT_THAT(results[1]["reason"].asString(), HasSubstr("RECORD_NOT_FOUND"));
    EXPECT_EQ(results[2]["version"].asInt(), 1);
    EXPECT_EQ(results[3]["version"].asInt(), 2) << "the atomic one left a trace";
    EXPECT_EQ(results[4]["recordType"].asString(), "folder");
}

TEST_F(EndToEndTest, ModifyNamesWhatIsWrongWithItsInputAndSendsNothing)
{
    Put("wrong.json", "{\"save\": [{\"recordId\": \"a\", \"title\": \"x\", \"isNew\": true},\n"
                      "{\"recordId\": \"a\", \"stars\": 1},\n{\"title\": 5}, 7],\n\"delete\": [\"\",\n"
                      "{\"recordId\": \"b\", \"verison\": 1}, {\"recordId\": \"c\", \"version\": \"1\"},\n"
                      "{\"recordId\": \"d\", \"recordType\": \"nope\"}]}");
    const std::string modify = "nubis record modify --bundle com.example.notes ";
    ASSERT_EQ(RunLines(modify + "--type note wrong.json; echo $?\necho '{\"save\": [{}]}' | " + modify +
                       "; echo $?\necho '{\"drop\": []}' | " + modify + "; echo $?"),
        0);
    EXPECT_EQ(out_, "1\n1\n1\n");
    for (const char *problem : {"wrong.json:2: expected a record id of its own, found \"a\", which line 1 has",
             "wrong.json:3: field title: expected a text", "wrong.json:3: expected an object",
             "wrong.json:4: expected a record id", "of a record to delete, found \"verison\"",
             "wrong.json:5: field version: expected the record's version, a whole number, found \"1\"",
             "wrong.json:6: expected a record type of the container notes, found \"nope\"",
             "expected \"recordType\", or --type for all", "\"drop\" is not one of the arrays"}) {
        EXPECT_THAT(Errors(), HasSubstr(problem));
    }
}

TEST_F(EndToEndTest, CopiesTakeWhatIsNotSetAndSharedRecordsSaySo)
{
    const std::string copy =
        std::string("nubis record copy a none --to-id c --set '{\"title\": \"C\", \"done\": null}'");
    EXPECT_EQ(
        RunLines(std::string("nubis record save --new --id a '{\"title\": \"A\", \"stars\": 3, \"done\": true}'") +
                 NOTE + ">/dev/null || exit 98\n" + copy + NOTE + "\nnubis share c none" + NOTE +
                 "\nnubis record get c --json" + NOTE),
        0);
    const std::string said = "copied note a to c\nshared note c, version 2\n";
    ASSERT_THAT(out_, testing::StartsWith(said)) << Errors();
    EXPECT_THAT(Errors(), HasSubstr("not every record could be copied:\n  none to "));
    EXPECT_THAT(Errors(), HasSubstr("not every record could be shared:\n  none: "));
    out_.erase(0, said.size());
    Json::Value record = Out()[0];
    EXPECT_TRUE(record["shared"].asBool());
    EXPECT_EQ(CompactText(record["fields"]), R"({"stars":3,"title":"C"})");
}
} // namespace
} // namespace NubisTool
