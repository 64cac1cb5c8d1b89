// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command_error.h"
#include "demo_data.h"
#include "demo_edits.h"
#include "demo_report.h"
#include "temp_dir.h"

namespace NubisTool {
namespace {
using testing::ElementsAre;
using testing::HasSubstr;

void Fill(const std::string &folder)
{
    std::ofstream(folder + "/iso_3166-1.json") << R"({"3166-1": [{"alpha_2": "AZ", "alpha_3": "AZE", "flag": "F",
        "name": "Azerbaijan", "numeric": "031", "official_name": "Republic of Azerbaijan"}]})";
    std::ofstream(folder + "/iso_3166-2.json") << R"({"3166-2": [
        {"code": "AZ-BAB", "name": "Babək", "parent": "NX", "type": "Rayon"},
        {"code": "AZ-NX", "name": "Naxçıvan", "type": "Autonomous republic"},
        {"code": "AZ-X", "name": "X", "parent": "AZ-NX", "type": "Rayon"}]})";
    std::ofstream(folder + "/iso_639-3.json") << R"({"639-3": [{"alpha_3": "aae", "name": "Arbëreshë Albanian",
        "inverted_name": "Albanian, Arbëreshë", "scope": "I", "type": "L"}]})";
}

TEST(DemoData, TurnsTheListsIntoRowsThatReferToEachOther)
{
    TempDir folder;
    Fill(folder.Path());
    std::vector<DemoTable> tables = LoadDemoData(folder.Path());
    ASSERT_EQ(tables.size(), 3U);
    EXPECT_EQ(tables[0].rows[0].values["number"].asInt(), 31);
    EXPECT_EQ(tables[1].rows[0].values["country"].asString(), "AZ");
    EXPECT_EQ(tables[1].rows[0].values["parent"].asString(), "AZ-NX");
    EXPECT_FALSE(tables[1].rows[1].values.isMember("parent"));
    EXPECT_EQ(tables[1].rows[2].values["parent"].asString(), "AZ-NX");
    EXPECT_EQ(tables[2].rows[0].values["names"].size(), 2U);
    EXPECT_TRUE(tables[2].rows[0].values["isLiving"].asBool());

    std::ofstream(folder.Path() + "/iso_639-3.json") << "{}";
    EXPECT_THROW(LoadDemoData(folder.Path()), CommandError);
    try {
        LoadDemoData(folder.Path() + "/none");
        FAIL();
    } catch (const CommandError &error) {
        EXPECT_THAT(error.Advice(), HasSubstr("apt-get install iso-codes"));
    }
}

TEST(DemoEdits, AreSpreadCountedAndLeaveWhatOthersReferTo)
{
    LocalStore store;
    for (int i = 0; i < 1000; ++i) {
        Json::Value fields(Json::objectValue);
        fields["name"] = "n" + std::to_string(i);
        if (i >= 10) {
            fields["parent"]["recordId"] = "r" + std::to_string(i % 10);
        }
        store.Put("r" + std::to_string(i), {"Language", 1, fields});
    }
    DemoEdits edits = ChooseEdits(store, {100, 50, 25});
    std::set<std::string> touched(edits.removals.begin(), edits.removals.end());
    EXPECT_EQ(touched.size(), 50U);
    ASSERT_EQ(edits.changes.size(), 1U);
    EXPECT_EQ(edits.changes[0].rows.size(), 100U);
    for (const Row &row : edits.changes[0].rows) {
        EXPECT_THAT(row.values["name"].asString(), testing::EndsWith(" (edited)"));
    }
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(touched.count("r" + std::to_string(i)), 0U);
    }
    std::set<std::string> names;
    for (const Row &row : edits.additions[0].rows) {
        names.insert(row.values["name"].asString());
    }
    EXPECT_EQ(names.size(), 25U);
    EXPECT_THROW(ChooseEdits(store, {1000, 50, 0}), CommandError);
}

TEST(DemoReport, SaysWhetherEverythingHeld)
{
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    Console console{in, out, err, false};
    DemoReport report(console, false);
    report.Step("First");
    report.Check("this", true);
    EXPECT_TRUE(report.Held());
    std::vector<std::string> differences = IdDifferences({"a", "b"}, {"b", "b", "c"});
    EXPECT_THAT(
        differences, ElementsAre(HasSubstr("a did not arrive"), HasSubstr("b arrived"), HasSubstr("c arrived")));
    report.Check("that", differences.empty(), differences);
    EXPECT_FALSE(report.Held());
    report.Finish(1);
    EXPECT_THAT(out.str(), HasSubstr("[FAILS] that"));
    EXPECT_THAT(out.str(), HasSubstr("NOT everything held"));
}
} // namespace
} // namespace NubisTool
