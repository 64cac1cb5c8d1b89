// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "store/sqlite_store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "service_fixture.h"

namespace DriveService {

namespace {

class StoreTest : public testing::Test {
protected:
    StoreTest() : path_(folder_.Path() + "/drive.db"), store_(std::make_unique<SqliteStore>(path_))
    {}

    static StoredRecord Record(const std::string &id)
    {
        StoredRecord record;
        record.recordId = id;
        record.recordType = "t";
        record.version = 1;
        return record;
    }

    int64_t Put(const std::string &id)
    {
        std::unique_ptr<WriteSession> session = store_->BeginWrite();
        DatabaseInfo database = session->EnsureDatabase({"b", "c", 1});
        StoredRecord record = Record(id);
        session->Put(database.id, record, {});
        session->Commit();
        return record.sequence;
    }

    TempFolder folder_;
    std::string path_;
    std::unique_ptr<SqliteStore> store_;
};

TEST_F(StoreTest, TheFilesAreTheOwnersAlone)
{
    Put("a");
    for (const char *ending : {"", "-wal", "-shm"}) {
        struct stat info {};
        ASSERT_EQ(stat((path_ + ending).c_str(), &info), 0) << ending;
        EXPECT_EQ(info.st_mode & 0777, 0600u) << ending;
    }
}

TEST_F(StoreTest, WhatWasNotCommittedIsUndone)
{
    EXPECT_EQ(Put("a"), 1);
    {
        std::unique_ptr<WriteSession> session = store_->BeginWrite();
        int64_t id = session->EnsureDatabase({"b", "c", 1}).id;
        StoredRecord record = Record("lost");
        session->Put(id, record, {});
        EXPECT_EQ(record.sequence, 2);
        EXPECT_TRUE(session->View().FindRecord(id, "lost"));
        EXPECT_FALSE(store_->BeginRead()->FindRecord(id, "lost")) << "others see only what was committed";
    }
    EXPECT_EQ(Put("b"), 2) << "an undone change leaves no gap in the sequence";
    store_.reset();
    store_ = std::make_unique<SqliteStore>(path_);
    DatabaseInfo database = store_->BeginRead()->FindDatabase({"b", "c", 1}).value();
    EXPECT_EQ(database.lastSequence, 2);
    EXPECT_FALSE(store_->BeginRead()->FindRecord(database.id, "lost"));
    EXPECT_TRUE(store_->BeginRead()->FindRecord(database.id, "a"));
}

TEST_F(StoreTest, DatabasesOfNewerProgramsAndOtherFilesAreRefused)
{
    store_.reset();
    {
        SqliteConnection connection(path_);
        connection.Execute("UPDATE schema_info SET version = 99");
    }
    auto open = [](const std::string &path) -> std::string {
        try {
            SqliteStore store(path);
        } catch (const StoreError &error) {
            return error.what();
        }
        return "opened";
    };
    EXPECT_THAT(open(path_), testing::HasSubstr("has schema version 99, this program knows versions up to "));
    EXPECT_THAT(open(folder_.Path()), testing::HasSubstr("cannot use the database " + folder_.Path()));
    EXPECT_THAT(open(folder_.Path() + "/none/db"), testing::HasSubstr("cannot make " + folder_.Path() + "/none/db"));
    std::string other = folder_.Path() + "/other";
    FILE *file = fopen(other.c_str(), "w");
    fputs("this is no database, it only has many characters in it", file);
    fclose(file);
    EXPECT_THAT(open(other), testing::HasSubstr("file is not a database"));
}

TEST_F(StoreTest, CommitsAreSafeAndOtherProgramsLeaveTheJournalAlone)
{
    {
        SqliteConnection connection(path_);
        for (const auto &[pragma, expected] :
            {std::pair{"PRAGMA journal_mode", "wal"}, std::pair{"PRAGMA synchronous", "2"}}) {
            SQLite::Statement &statement = connection.Prepare(pragma);
            ASSERT_TRUE(statement.executeStep());
            EXPECT_EQ(statement.getColumn(0).getString(), expected);
        }
        Put("a");
        store_->BeginRead();
    }
    // The next program that closes the file takes the journal away when nobody holds this lock, and what is
    // acknowledged from then on is written nowhere.
    constexpr off_t firstLockByte = 0x40000000;
    int fd = open(path_.c_str(), O_RDWR | O_CLOEXEC);
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_start = firstLockByte;
    EXPECT_EQ(fcntl(fd, F_OFD_GETLK, &lock), 0);
    EXPECT_EQ(lock.l_type, F_RDLCK);
    close(fd);
}

TEST_F(StoreTest, AViewThatCannotBeTakenSpoilsNoLaterOne)
{
    store_->BeginRead();
    SqliteConnection other(path_);
    other.Execute("ALTER TABLE schema_info RENAME TO hidden");
    EXPECT_THROW(store_->BeginRead(), StoreError);
    other.Execute("ALTER TABLE hidden RENAME TO schema_info");
    EXPECT_EQ(store_->BeginRead()->Setting("a"), std::nullopt);
}

TEST_F(StoreTest, ADatabaseOfTheFirstProgramIsBroughtUpToDate)
{
    Put("a");
    store_.reset();
    {
        SqliteConnection connection(path_);
        std::vector<std::string> later;
        SQLite::Statement &tables = connection.Prepare(
            "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT IN"
            " ('schema_info', 'cloud_database', 'record', 'record_value', 'indexed_type', 'setting')");
        while (tables.executeStep()) {
            later.push_back(tables.getColumn(0).getString());
        }
        for (const std::string &name : later) {
            connection.Execute("DROP TABLE " + name);
        }
        connection.Execute("UPDATE schema_info SET version = 1");
    }
    store_ = std::make_unique<SqliteStore>(path_);
    std::unique_ptr<WriteSession> session = store_->BeginWrite();
    int64_t id = session->EnsureDatabase({"b", "c", 1}).id;
    session->ReplaceAssets(id, "a", {{"f", "x", true, 3, "content"}, {"f", "y", false, 1, "content"}});
    EXPECT_EQ(session->View().Assets(id, "a").size(), 2u);
    EXPECT_TRUE(session->View().IsUploaded(id, "x", "content"));
    EXPECT_FALSE(session->View().IsUploaded(id, "x", "other"));
    EXPECT_FALSE(session->View().IsUploaded(id, "y", "content"));
    StoredRecord tombstone = session->View().FindRecord(id, "a").value();
    tombstone.deleted = true;
    session->Put(id, tombstone, {});
    EXPECT_TRUE(session->View().Assets(id, "a").empty());
}

} // namespace

} // namespace DriveService
