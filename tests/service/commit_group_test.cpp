// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "store/commit_group.h"

#include <csignal>
#include <functional>
#include <future>
#include <thread>

#include <sys/resource.h>
#include <sys/stat.h>

#include "service_fixture.h"

namespace DriveService {

namespace {

constexpr std::chrono::seconds PATIENCE(60);

// Sessions that come while another one writes, so that they share its transaction.
class CommitGroupTest : public testing::Test {
protected:
    CommitGroupTest()
    {
        writer_.Connection().Execute("CREATE TABLE t (x TEXT)");
    }

    static void Write(WriteTurn &turn, const std::string &text)
    {
        turn.Connection().Execute("INSERT INTO t VALUES ('" + text + "')");
    }

    // What another connection sees.
    std::string OnDisk()
    {
        SqliteConnection other(path_);
        SQLite::Statement &rows = other.Prepare("SELECT COALESCE(group_concat(x, ''), '') FROM t");
        rows.executeStep();
        return rows.getColumn(0).getString();
    }

    // Begins a session on another thread, which waits for the present ones.
    std::future<void> Join(std::function<void(WriteTurn &)> work)
    {
        size_t before = writer_.Waiting();
        auto joined = std::async(std::launch::async, [this, work = std::move(work)] {
            WriteTurn turn(writer_);
            work(turn);
        });
        while (writer_.Waiting() == before) {
            std::this_thread::yield();
        }
        return joined;
    }

    TempFolder folder_;
    const std::string path_ = folder_.Path() + "/group.db";
    GroupWriter writer_{path_};
};

TEST_F(CommitGroupTest, EachKeepsOrUndoesItsOwnAndReturnsWhenAllIsOnDisk)
{
    int told = 0;
    writer_.SetNoticeListener([&told] { ++told; });
    auto first = std::make_unique<WriteTurn>(writer_);
    Write(*first, "a");
    auto undone = Join([this](WriteTurn &turn) {
        Write(turn, "b");
        EXPECT_EQ(OnDisk(), "") << "nobody else sees what may still be lost";
    });
    auto last = Join([this](WriteTurn &turn) {
        Write(turn, "c");
        turn.Commit(false);
        EXPECT_EQ(OnDisk(), "ac");
    });
    first->Commit(true);
    EXPECT_EQ(OnDisk(), "ac");
    undone.get();
    last.get();
    EXPECT_EQ(told, 1);
}

TEST_F(CommitGroupTest, OneThatIsUndoneFirstLeavesTheOthersATransaction)
{
    auto first = std::make_unique<WriteTurn>(writer_);
    Write(*first, "a");
    auto next = Join([](WriteTurn &turn) {
        Write(turn, "b");
        turn.Commit(false);
    });
    first.reset();
    next.get();
    EXPECT_EQ(OnDisk(), "b");
}

TEST_F(CommitGroupTest, NobodyWaitsForOneThatStandsAlone)
{
    auto first = std::make_unique<WriteTurn>(writer_);
    Write(*first, "a");
    std::promise<void> firstIsOver;
    std::promise<void> aloneIsOver;
    auto alone = Join([&](WriteTurn &turn) {
        turn.StandAlone();
        EXPECT_EQ(firstIsOver.get_future().wait_for(PATIENCE), std::future_status::ready);
        Write(turn, "b");
        turn.Commit(false);
        aloneIsOver.set_value();
    });
    auto next = Join([&](WriteTurn &turn) {
        EXPECT_EQ(aloneIsOver.get_future().wait_for(PATIENCE), std::future_status::ready);
        turn.Commit(false);
    });
    first->Commit(false);
    firstIsOver.set_value();
    alone.get();
    next.get();
    EXPECT_EQ(OnDisk(), "ab");
}

// A disk that is full when the group is to be written, and a failure in which SQLite undoes all by itself.
TEST_F(CommitGroupTest, WhatIsLostIsLostForAllAndTheyAreTold)
{
    signal(SIGXFSZ, SIG_IGN);
    struct rlimit before {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    for (bool isByItself : {false, true}) {
        auto first = std::make_unique<WriteTurn>(writer_);
        Write(*first, "a");
        auto second = Join([&](WriteTurn &turn) {
            Write(turn, "b");
            if (isByItself) {
                turn.Connection().Rollback();
            } else {
                EXPECT_THROW(turn.Commit(false), StoreError);
            }
        });
        std::future<void> refused;
        if (!isByItself) {
            refused =
                Join([](WriteTurn &turn) { EXPECT_THROW(turn.Undo(), StoreError) << "it may not tell what it saw"; });
            struct stat log {};
            ASSERT_EQ(stat((path_ + "-wal").c_str(), &log), 0);
            struct rlimit full = before;
            full.rlim_cur = static_cast<rlim_t>(log.st_size);
            ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
        }
        EXPECT_THROW(first->Commit(false), StoreError);
        second.get();
        if (refused.valid()) {
            refused.get();
        }
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(OnDisk(), "");
    }
    WriteTurn later(writer_);
    Write(later, "c");
    later.Commit(false);
    EXPECT_EQ(OnDisk(), "c");
}

} // namespace

} // namespace DriveService
