// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "crash_test.h"

#include <iterator>
#include <utility>

#include <SQLiteCpp/SQLiteCpp.h>

#include "crash_note.h"

using namespace Nubis;
using namespace NubisTest;

namespace Crash {
namespace {
constexpr int PAGE = 500;

// Each finds rows that only half a transaction leaves.
constexpr const char *HALF_THERE[] = {
    "SELECT record_id FROM record JOIN cloud_database USING (database_id) WHERE sequence > last_sequence",
    ("SELECT record_id FROM record r WHERE deleted = 0 AND NOT EXISTS (SELECT 1 FROM record_value v"
     " WHERE v.database_id = r.database_id AND v.record_id = r.record_id AND field = 'title'"
     " AND instr(data, text_value) > 0)"),
    "SELECT record_id FROM record_value WHERE record_id NOT IN (SELECT record_id FROM record WHERE deleted = 0)",
    "SELECT record_id FROM asset WHERE record_id NOT IN (SELECT record_id FROM record WHERE deleted = 0)",
    "SELECT subscription_id FROM notice WHERE subscription_id NOT IN (SELECT subscription_id FROM subscription)",
    "PRAGMA foreign_key_check",
};

// The title of a record of the load, whose other fields must tell the same.
std::string TitleOfWhole(const NBRecord &record)
{
    Json::Value fields = JsonOf(record);
    // The service adds to it.
    fields.removeMember("photo");
    std::string title = TitleOf(record);
    const int64_t round = fields["stars"].asInt64();
    EXPECT_EQ(fields, JsonOf(NoteOf("", title, round))) << record.GetRecordId() << " is half there";
    return title;
}
} // namespace

void CrashTest::CheckData(const Journal &journal, int round)
{
    FollowChanges();
    Titles ofRound;
    const std::string prefix = "r" + std::to_string(round) + "c";
    for (auto entry = followed_.lower_bound(prefix);
         entry != followed_.end() && entry->first.compare(0, prefix.size(), prefix) == 0; ++entry) {
        ofRound.insert(*entry);
    }
    EXPECT_EQ(Find("stars=" + std::to_string(round)), ofRound) << "the changes do not lead to the contents";
    EXPECT_EQ(journal.Check(followed_), "");
    CheckFile(journal.Subscriptions());
}

void CrashTest::CheckAllData(const Journal &journal)
{
    FollowChanges();
    const Titles step = std::exchange(followed_, {});
    cursor_.clear();
    FollowChanges();
    EXPECT_EQ(followed_, step) << "following step by step leads elsewhere than following at once";
    EXPECT_EQ(Find(""), followed_);
    EXPECT_EQ(journal.Check(followed_), "");
}

std::string CrashTest::DatabaseFile()
{
    return (Service().Folder() / "state/drive/user-100/drive.db").string();
}

pid_t CrashTest::RunningService()
{
    FetchById(Database(), "note", "none");
    return Service().Pid();
}

void CrashTest::ExpectHoldings(pid_t service, const Holdings &before)
{
    constexpr std::chrono::milliseconds interval(20);
    const auto isMore = [](const Holdings &one, const Holdings &other) {
        return one.threads > other.threads || one.sockets > other.sockets || one.files > other.files;
    };
    const auto end = std::chrono::steady_clock::now() + PATIENCE;
    Holdings now = HoldingsOf(service);
    while (isMore(now, before) && std::chrono::steady_clock::now() < end) {
        // Nothing tells of threads and files of another process that go.
        AwaitReadable(-1, interval);
        now = HoldingsOf(service);
    }
    EXPECT_FALSE(isMore(now, before)) << now.threads << " threads, " << now.sockets << " sockets, " << now.files
                                      << " files; before " << before.threads << ", " << before.sockets << ", "
                                      << before.files;
}

void CrashTest::FollowChanges()
{
    const Async::ChangesResult changes = OnceConnected([this] { return AllChanges(Database(), cursor_, PAGE); });
    ASSERT_FALSE(changes.error.HasError()) << changes.error.GetErrorMsg();
    cursor_ = changes.cursor;
    for (const NBRecord &record : changes.records) {
        if (record.GetIsDelete()) {
            followed_.erase(record.GetRecordId());
        } else {
            followed_[record.GetRecordId()] = TitleOfWhole(record);
        }
    }
}

Titles CrashTest::Find(const std::string &queryText)
{
    Titles found;
    std::string cursor;
    do {
        const Async::QueryResult page = Query(Database(), {"note", queryText, {}}, PAGE, cursor);
        EXPECT_FALSE(page.error.HasError()) << page.error.GetErrorMsg();
        for (const NBRecord &record : page.records) {
            found[record.GetRecordId()] = TitleOfWhole(record);
        }
        cursor = page.cursor;
    } while (!cursor.empty());
    return found;
}

void CrashTest::CheckFile(const std::set<std::string> &subscriptions)
{
    constexpr int busyMs = 10000;
    SQLite::Database database(DatabaseFile(), SQLite::OPEN_READONLY, busyMs);
    EXPECT_EQ(database.execAndGet("PRAGMA integrity_check").getString(), "ok");
    for (const char *sql : HALF_THERE) {
        SQLite::Statement rows(database, sql);
        EXPECT_FALSE(rows.executeStep()) << rows.getColumn(0).getString() << " is found by " << sql;
    }
    std::set<std::string> kept;
    SQLite::Statement rows(database, "SELECT subscription_id FROM subscription");
    while (rows.executeStep()) {
        kept.insert(rows.getColumn(0).getString());
    }
    EXPECT_TRUE(std::includes(kept.begin(), kept.end(), subscriptions.begin(), subscriptions.end()))
        << "an acknowledged subscription is lost";
}
} // namespace Crash
