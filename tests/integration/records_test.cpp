// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "nb_container.h"
#include "note_builder.h"
#include "notes_test.h"

using namespace Nubis;
using namespace NubisTest;

namespace {
class RecordsTest : public NotesTest {};

std::set<std::string> TitlesOf(const std::vector<NBRecord> &records)
{
    std::set<std::string> titles;
    for (const NBRecord &record : records) {
        titles.insert(TitleOf(record));
    }
    return titles;
}

TEST_F(RecordsTest, EveryKindOfValueComesBackAsItWasSaved)
{
    NBAsset photo;
    photo.assetName = "p\u00e9.jpg";
    photo.size = 1234567890123ULL;
    photo.assetOperType = 2;
    photo.assetId = "photo-1";
    NBFieldList tags{NBRecordField("red"), NBRecordField("\xE2\x82\xAC uro"), NBRecordField("")};
    const NBRecord folder = Folder("f").Id("folder-1");
    ASSERT_TRUE(AllSaved(Save(Database(), {folder})));
    NBRecord note = Note(u8"Grüße \U0001F30D")
                        .Id("note-1")
                        .With("stars", NBRecordField(INT64_MIN))
                        .With("score", NBRecordField(0.1))
                        .With("done", NBRecordField(true))
                        .With("thumbnail", NBRecordField(std::vector<uint8_t>{0, 255, 10, 0}))
                        .With("tags", NBRecordField(tags))
                        .With("meta", NBRecordField(NBFieldMap{{"k", NBRecordField(int64_t{7})}}))
                        .With("photo", NBRecordField(photo))
                        .With("folder", InFolder("folder-1"));
    ASSERT_TRUE(AllSaved(Save(Database(), {note})));

    const auto fetched = FetchById(Database(), "note", "note-1");

    ASSERT_FALSE(fetched.error.HasError());
    EXPECT_EQ(JsonOf(fetched.record), JsonOf(note));
    EXPECT_EQ(fetched.record.GetVersion(), 1U);
    EXPECT_EQ(fetched.record.GetRecordModifiedInfo().deviceName, "test-device");
    EXPECT_EQ(fetched.record.GetRecordCreateInfo().appId, "notes-1");
    EXPECT_GT(fetched.record.GetCreateTime(), 0U);
}

TEST_F(RecordsTest, ANewRecordWithoutAnIdGetsOneByTheContainersRule)
{
    const auto saved = Save(Database(), {Note("a"), Note("b")});

    ASSERT_TRUE(AllSaved(saved));
    ASSERT_EQ(saved.results.size(), 2U);
    for (const auto &[id, result] : saved.results) {
        EXPECT_EQ(id.size(), 33U);
        EXPECT_EQ(result.GetRecord().GetRecordId(), id);
        EXPECT_FALSE(FetchById(Database(), "note", id).error.HasError());
    }
}

TEST_F(RecordsTest, ARefusedRecordSaysWhyAndItsNeighboursAreSaved)
{
    std::vector<NBRecord> records{Note("good").Id("n1"), Note("lost").Id("n2").With("folder", InFolder("nowhere")),
        Note("odd").Id("n3").With("stars", NBRecordField("many")),
        Note("strange").Id("n4").With("colour", NBRecordField(1))};

    const auto saved = Save(Database(), std::move(records));

    ASSERT_FALSE(saved.error.HasError());
    ASSERT_EQ(saved.results.size(), 4U);
    EXPECT_FALSE(saved.results.at("n1").HasError());
    EXPECT_THAT(saved.results.at("n2").GetErrorMsg(), testing::HasSubstr("nowhere"));
    EXPECT_THAT(saved.results.at("n3").GetErrorMsg(), testing::HasSubstr("stars"));
    EXPECT_THAT(saved.results.at("n4").GetErrorMsg(), testing::HasSubstr("colour"));
    EXPECT_EQ(AllChanges(Database()).records.size(), 1U);
}

TEST_F(RecordsTest, SavePoliciesDecideConflicts)
{
    NBRecord first = Note("first").Id("n").With("stars", NBRecordField(1));
    ASSERT_TRUE(AllSaved(Save(Database(), {first})));
    NBRecord other = Note("second").Id("n").Existing(1);
    ASSERT_TRUE(AllSaved(Save(Database(), {other}, NB_SAVE_CHANGED_FIELDS)));
    int stars = 0;
    NBFieldMap data;
    FetchById(Database(), "note", "n").record.GetRecordData(data);
    ASSERT_EQ(data.at("stars").GetInt(stars), NB_LOCAL_SUCCESS);
    EXPECT_EQ(stars, 1);

    const auto stale = Save(Database(), {Note("third").Id("n").Existing(1)}, NB_SAVE_IF_UNCHANGED);
    EXPECT_TRUE(stale.results.at("n").IsServerError());
    EXPECT_TRUE(AllSaved(Save(Database(), {Note("third").Id("n").Existing(2)}, NB_SAVE_IF_UNCHANGED)));
    EXPECT_EQ(TitleOf(FetchById(Database(), "note", "n").record), "third");

    const auto twin = Save(Database(), {Folder("same").Id("f1"), Folder("same").Id("f2")});
    EXPECT_FALSE(twin.results.at("f1").HasError());
    EXPECT_THAT(twin.results.at("f2").GetErrorMsg(), testing::HasSubstr("f1"));
}

TEST_F(RecordsTest, QueriesFilterOrderAndPage)
{
    std::vector<NBRecord> records;
    for (int i = 0; i < 25; ++i) {
        const std::string number = std::to_string(i);
        records.push_back(Note("n" + number).Id("id" + number).With("stars", NBRecordField(i)));
    }
    ASSERT_TRUE(AllSaved(Save(Database(), std::move(records))));
    NBQuery query{"note", "stars>=5&title!=n7", {{true, "stars"}}};

    auto page = Query(Database(), query, 10);
    ASSERT_FALSE(page.error.HasError()) << page.error.GetErrorMsg();
    EXPECT_EQ(page.records.size(), 10U);
    EXPECT_EQ(TitleOf(page.records.front()), "n24");
    std::vector<NBRecord> all = page.records;
    while (!page.cursor.empty()) {
        page = Query(Database(), query, 10, page.cursor);
        all.insert(all.end(), page.records.begin(), page.records.end());
    }
    EXPECT_EQ(all.size(), 19U);
    EXPECT_EQ(TitlesOf(all).count("n7"), 0U);
    EXPECT_EQ(TitleOf(all.back()), "n5");

    const auto wrong = Query(Database(), {"note", "thumbnail=x", {}}, 10);
    EXPECT_TRUE(wrong.error.IsServerError());
    EXPECT_THAT(wrong.error.GetErrorMsg(), testing::HasSubstr("thumbnail"));
}

TEST_F(RecordsTest, ChangesArriveOncePageByPageAndOnlyTheNewOnesAfterwards)
{
    std::vector<NBRecord> records;
    for (int i = 0; i < 57; ++i) {
        records.push_back(Note("n" + std::to_string(i)).Id("id" + std::to_string(i)));
    }
    ASSERT_TRUE(AllSaved(Save(Database(), records)));
    const auto first = AllChanges(Database(), "", 10);
    ASSERT_FALSE(first.error.HasError());
    EXPECT_EQ(TitlesOf(first.records).size(), 57U);
    EXPECT_EQ(first.records.size(), 57U);

    std::string start;
    ASSERT_FALSE(Database()->GetStartCursor("", start).HasError());
    ASSERT_TRUE(AllSaved(Save(Database(), {Note("changed").Id("id3").Existing(1)})));
    ASSERT_TRUE(AllSaved(Save(Database(), {Note("changed again").Id("id3").Existing(2), Note("new").Id("new")})));

    for (const std::string &cursor : {start, first.cursor}) {
        const auto after = AllChanges(Database(), cursor);
        EXPECT_EQ(TitlesOf(after.records), (std::set<std::string>{"changed again", "new"}));
        EXPECT_EQ(after.records.size(), 2U);
    }
    EXPECT_TRUE(Changes(Database(), "nonsense").error.IsServerError());
}

TEST_F(RecordsTest, ManyIdsAreFetchedByTypeWithAResultForEach)
{
    ASSERT_TRUE(AllSaved(Save(Database(), {Folder("f").Id("f1"), Note("n").Id("n1")})));

    const auto fetched = FetchByIds(Database(), {Note("").Id("n1"), Folder("").Id("f1"), Note("").Id("gone")});

    EXPECT_EQ(TitleOf(fetched.results.at("n1").GetRecord()), "n");
    EXPECT_EQ(TitleOf(fetched.results.at("f1").GetRecord()), "f");
    EXPECT_TRUE(fetched.results.at("gone").HasError());
    const auto missing = FetchById(Database(), "note", "gone");
    EXPECT_TRUE(missing.error.IsServerError());
    EXPECT_EQ(missing.recordId, "gone");
}

TEST_F(RecordsTest, ALargeRequestTravelsWholeAndComesBackInBoundedPages)
{
    constexpr size_t BLOB_BYTES = 5U << 20U;
    constexpr size_t NOTES = 6;
    std::vector<uint8_t> bytes(BLOB_BYTES);
    for (size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<uint8_t>((i * 2654435761U) >> 13U);
    }
    std::vector<NBRecord> notes;
    for (size_t i = 0; i < NOTES; ++i) {
        notes.push_back(Note("big").Id(std::to_string(i)).With("thumbnail", NBRecordField(bytes)));
    }
    ASSERT_TRUE(AllSaved(Save(Database(), std::move(notes))));

    EXPECT_LT(Changes(Database(), "", 100).records.size(), NOTES);
    const auto all = AllChanges(Database());
    ASSERT_EQ(all.records.size(), NOTES);
    for (const NBRecord &record : all.records) {
        NBFieldMap data;
        record.GetRecordData(data);
        std::vector<uint8_t> back;
        ASSERT_EQ(data["thumbnail"].GetBlob(back), NB_LOCAL_SUCCESS);
        EXPECT_TRUE(back == bytes);
    }
}

TEST_F(RecordsTest, DatabasesOfAContainerAreApart)
{
    ASSERT_TRUE(AllSaved(Save(Database(), {Note("private").Id("n")})));
    const auto shared = Container()->GetSharedDatabase();

    EXPECT_TRUE(AllChanges(shared).records.empty());
    EXPECT_TRUE(FetchById(shared, "note", "n").error.IsServerError());
}
} // namespace
