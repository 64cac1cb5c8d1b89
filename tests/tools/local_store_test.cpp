// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "local_store.h"

#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command_error.h"
#include "record_builder.h"
#include "temp_dir.h"

namespace NubisTool {
namespace {
using namespace Nubis;
using NubisTest::RecordBuilder;
using testing::ElementsAre;
using testing::HasSubstr;

NBRecord Tombstone(const std::string &id)
{
    NBRecord record = RecordBuilder("Person", id);
    record.SetDelete(true);
    return record;
}

TEST(LocalStore, TakesChangesAsASyncServiceWould)
{
    LocalStore store;
    using Effect = LocalStore::Effect;
    EXPECT_EQ(store.Take(RecordBuilder("Person", "p").With("age", 1).AtVersion(1)), Effect::ADDED);
    EXPECT_EQ(store.Take(RecordBuilder("Person", "p").With("age", 2).AtVersion(2)), Effect::CHANGED);
    EXPECT_EQ(store.Take(RecordBuilder("Person", "p").With("age", 1).AtVersion(1)), Effect::NOTHING) << "overtaken";
    EXPECT_EQ(store.Entries().at("p").version, 2U);
    EXPECT_EQ(store.Entries().at("p").fields["age"].asInt(), 2);
    EXPECT_EQ(store.Take(Tombstone("p")), Effect::REMOVED);
    EXPECT_EQ(store.Take(Tombstone("p")), Effect::NOTHING);
    EXPECT_TRUE(store.Entries().empty());
}

TEST(LocalStore, ComparesEveryRecordVersionAndField)
{
    LocalStore first;
    LocalStore second;
    NBFieldList noTags;
    first.Take(RecordBuilder("Person", "same").With("age", 1).With("tags", NBRecordField(noTags)).AtVersion(1));
    second.Take(RecordBuilder("Person", "same").With("age", 1).AtVersion(1));
    EXPECT_TRUE(Compare(first, "A", second, "B").lines.empty());

    first.Take(RecordBuilder("Person", "changed").With("age", 1).With("name", "x").AtVersion(1));
    second.Take(RecordBuilder("Person", "changed").With("age", 2).AtVersion(3));
    first.Take(RecordBuilder("Person", "gone"));
    second.Take(RecordBuilder("Person", "new"));
    StoreDifference difference = Compare(first, "A", second, "B");
    EXPECT_EQ(difference.records, 4U);
    EXPECT_THAT(
        difference.lines, ElementsAre("changed: version: A has 1, B has 3", "changed: age: A has 1, B has 2",
                              "changed: name: A has \"x\", B has null", "gone: only A has it", "new: only B has it"));
}

TEST(LocalStore, SurvivesAFileAndRefusesOthers)
{
    TempDir folder;
    std::string path = folder.Path() + "/store";
    LocalStore store;
    store.Take(RecordBuilder("Person", "p").With("name", "日本").AtVersion(9));
    store.Write(path);
    EXPECT_TRUE(Compare(store, "A", LocalStore::Read(path), "B").lines.empty());
    std::ofstream(path) << "{\"recordId\": \"p\"}\n";
    EXPECT_THROW(LocalStore::Read(path), CommandError);
    EXPECT_THROW(LocalStore::Read(path + "/none"), CommandError);
    EXPECT_THROW(store.Write(folder.Path() + "/none/x"), CommandError);
}
} // namespace
} // namespace NubisTool
