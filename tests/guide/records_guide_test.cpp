// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// What docs/guide shows of records; a region between two marks of a name is a snippet of it.

#include <future>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "nb_database.h"
#include "note_builder.h"
#include "notes_test.h"
#include "nubis_async.h"

using namespace Nubis;
using NubisTest::TitleOf;

namespace {
//! [wait]
// One record, waited for on this thread.
NBError Fetch(const std::shared_ptr<NBDatabase> &database, const std::string &id, NBRecord &record)
{
    using Outcome = std::pair<NBError, NBRecord>;
    auto outcome = std::make_shared<std::promise<Outcome>>();
    const int code = database->FetchRecordWithId(
        nullptr, "note", id, {}, [outcome](auto, auto, std::string, NBRecord &fetched, const NBError &error) {
            outcome->set_value({error, std::move(fetched)});
        });
    if (code != NB_LOCAL_SUCCESS) {
        return NBError(static_cast<NBLocalErrorCode>(code)); // then no callback comes
    }
    NBError error;
    std::tie(error, record) = outcome->get_future().get();
    return error;
}
//! [wait]

//! [save]
// Saves the records; what the service refused, and why, by record id.
std::map<std::string, NBError> Save(
    const std::shared_ptr<NBDatabase> &database, std::vector<NBRecord> records, NBSavePolicy policy)
{
    const Async::RecordsResult saved = Async::SaveRecords(database, std::move(records), policy).Start().get();
    std::map<std::string, NBError> refused;
    for (const auto &[id, result] : saved.results) {
        if (result.HasError()) {
            refused.emplace(id, result); // when the request as a whole failed, each has its error
        }
    }
    if (saved.error.HasError() && refused.empty()) {
        refused.emplace("", saved.error); // it could not even be sent
    }
    return refused;
}
//! [save]

//! [conflict]
// Adds a star, whoever else changes the note meanwhile.
bool AddStar(const std::shared_ptr<NBDatabase> &database, const std::string &id)
{
    constexpr int VERSION_CONFLICT = 1106;
    while (true) {
        NBRecord note;
        if (Fetch(database, id, note).HasError()) {
            return false;
        }
        NBFieldMap fields;
        note.StealRecordData(fields);
        int64_t stars = 0;
        fields["stars"].GetLong(stars); // leaves 0 when the note has none
        note.SetRecordData({{"stars", NBRecordField(stars + 1)}});
        // The version in the note is the one that was read, so a change that came between is noticed.
        const auto refused = Save(database, {note}, NB_SAVE_IF_UNCHANGED);
        if (refused.empty()) {
            return true;
        }
        if (refused.begin()->second.GetServerErrorCode() != VERSION_CONFLICT) {
            return false;
        }
    }
}
//! [conflict]

//! [query]
// All notes that pass the query, page by page.
NBError ReadAll(const std::shared_ptr<NBDatabase> &database, const NBQuery &query, std::vector<NBRecord> &notes)
{
    Async::QueryResult page;
    do {
        page = Async::FetchRecordsWithQuery(database, {"title", "stars"}, query, 100, page.cursor).Start().get();
        std::move(page.records.begin(), page.records.end(), std::back_inserter(notes));
    } while (!page.error.HasError() && !page.cursor.empty());
    return page.error;
}
//! [query]

//! [follow]
// A copy of all notes, and how far it is.
struct Copy {
    std::map<std::string, NBRecord> notes;
    std::string cursor; // empty: from the beginning
};

// Brings the copy up to date. On an error it is as far as it came, and the next call goes on from there.
NBError Follow(const std::shared_ptr<NBDatabase> &database, Copy &copy)
{
    Async::ChangesResult page;
    do {
        page = Async::FetchDatabaseChanges(database, "note", {}, 100, copy.cursor).Start().get();
        if (page.error.HasError()) {
            break;
        }
        for (NBRecord &note : page.records) {
            if (note.GetIsDelete()) {
                copy.notes.erase(note.GetRecordId());
            } else {
                copy.notes[note.GetRecordId()] = std::move(note);
            }
        }
        copy.cursor = page.cursor;
    } while (page.hasMore);
    return page.error;
}
//! [follow]

using RecordsGuide = NubisTest::NotesTest;

TEST_F(RecordsGuide, RecordsAreSavedReadAndFollowed)
{
    auto database = Database();
    Copy copy;
    //! [record]
    NBRecord folder;
    folder.SetRecordType("folder");
    folder.SetRecordId("f1"); // without an id the record gets one
    folder.SetNewCreate(true);
    folder.SetRecordData({{"title", NBRecordField("Trips")}});

    NBRecord note;
    note.SetRecordType("note");
    note.SetRecordId("n1");
    note.SetNewCreate(true);
    NBReference inFolder{"f1", "folder"};
    NBFieldList tags{NBRecordField("sun"), NBRecordField("sea")};
    NBAsset photo;
    photo.uri = "file:///photos/rome.jpg";
    photo.assetName = "rome.jpg";
    note.SetRecordData({
        {"title", NBRecordField("Rome")},
        {"stars", NBRecordField(4)},
        {"tags", NBRecordField(tags)},
        {"photo", NBRecordField(photo)},
        {"folder", NBRecordField(inFolder)},
    });
    //! [record]
    ASSERT_TRUE(Save(database, {folder, note}, NB_SAVE_IF_UNCHANGED).empty());

    NBRecord record;
    ASSERT_FALSE(Fetch(database, "n1", record).HasError());
    //! [fields]
    NBFieldMap fields;
    record.GetRecordData(fields);
    std::string title;
    NBReference where;
    if (fields["title"].GetString(title) == NB_LOCAL_SUCCESS) {
        // A field that is not there, or of another type, returns NB_LOCAL_BAD_DATA and leaves `title` alone.
    }
    fields["folder"].GetReference(where);
    //! [fields]
    EXPECT_EQ(title + where.recordId, "Romef1");

    std::vector<std::future<bool>> stars(3);
    for (auto &star : stars) {
        star = std::async(std::launch::async, [&] { return AddStar(database, "n1"); });
    }
    for (auto &star : stars) {
        EXPECT_TRUE(star.get());
    }
    std::vector<NBRecord> notes;
    //! [orderings]
    NBQuery query{"note", "stars>=4&tags~sea", {{true, "stars"}, {false, "title"}}};
    //! [orderings]
    ASSERT_FALSE(ReadAll(database, query, notes).HasError());
    ASSERT_EQ(notes.size(), 1U);
    notes[0].GetRecordData(fields);
    int64_t count = 0;
    fields["stars"].GetLong(count);
    EXPECT_EQ(count, 7);

    ASSERT_FALSE(Follow(database, copy).HasError());
    EXPECT_EQ(TitleOf(copy.notes["n1"]), "Rome");
    note.SetVersion(4);
    NBRecord second = note;
    second.SetRecordId("n2");
    //! [modify]
    // The note is replaced by the second one, or nothing happens.
    auto modified = Async::ModifyRecords(database, {second}, {note}, NB_SAVE_IF_UNCHANGED, true).Start().get();
    bool isDone = !modified.error.HasError();
    for (const auto &results : {modified.saved, modified.deleted}) {
        for (const auto &[id, result] : results) {
            isDone = isDone && !result.HasError();
        }
    }
    //! [modify]
    EXPECT_TRUE(isDone);
    ASSERT_FALSE(Follow(database, copy).HasError());
    EXPECT_EQ(copy.notes.count("n1"), 0U);
    EXPECT_EQ(copy.notes.count("n2"), 1U);
}
} // namespace
