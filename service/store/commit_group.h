// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_STORE_COMMIT_GROUP_H
#define NUBIS_SERVICE_STORE_COMMIT_GROUP_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "store/sqlite_connection.h"

namespace DriveService {

// Write sessions that share one transaction, because bringing a transaction to disk costs more than most of them write.
struct CommitGroup {
    size_t sessions = 0; // that have had their turn
    bool isClosed = false;
    bool hasNotices = false;
    std::string failure; // why nothing of the group was kept; empty when it is on disk
    std::mutex mutex;
    std::condition_variable over;
    bool isOver = false; // guarded by the mutex; nothing changes afterwards
};

// The one writing connection, handed from session to session in the order in which they came. A session that commits
// while others wait lets the next one go on in the same transaction; the last of such a group brings it to disk, for
// all of them.
class GroupWriter {
public:
    // Opens or makes the file.
    explicit GroupWriter(std::string path);
    GroupWriter(const GroupWriter &) = delete;
    GroupWriter &operator=(const GroupWriter &) = delete;

    // For who uses it before there are sessions.
    SqliteConnection &Connection()
    {
        return *connection_;
    }

    // Called after each group that added notices is on disk, before the next one begins.
    void SetNoticeListener(std::function<void()> listener);

    // How many sessions wait for their turn.
    size_t Waiting();

private:
    friend class WriteTurn;
    // Where a session waits for its turn, without the writer's mutex, so that it goes on as soon as it is called.
    class Place {
    public:
        void Await();
        void Call();

    private:
        std::mutex mutex_;
        std::condition_variable called_;
        bool isNext_ = false;
    };

    void Take();
    void PassOn();
    // The one to be called next, which the writer then belongs to; null when nobody waits. The caller must hold mutex_.
    std::shared_ptr<Place> TakeNext();
    // True when the next session has gone on with the group and the group is over; false when nobody is to join it.
    bool AwaitOthers(CommitGroup &group);
    // Brings the open group to disk, or says in it why not; the writer stays the caller's.
    std::shared_ptr<CommitGroup> Settle();
    void TellListener();

    const std::string path_;
    // These two are the writing session's.
    std::unique_ptr<SqliteConnection> connection_;
    std::shared_ptr<CommitGroup> group_; // null when no transaction is open

    std::mutex mutex_;
    bool isTaken_ = false;                      // guarded by mutex_
    std::deque<std::shared_ptr<Place>> places_; // guarded by mutex_

    std::mutex listenerMutex_; // held while it is called
    std::function<void()> onNotices_;
};

// A session's turn at the writer: waits for it, and ends with Commit or undone. Used by one thread. Throws
// SQLite::Exception, and StoreError when what others of the group had written was lost.
class WriteTurn {
public:
    explicit WriteTurn(GroupWriter &writer);
    // Waits, too, until what others had written before is on disk, or lost: what the session has told may rest on it.
    ~WriteTurn();
    WriteTurn(const WriteTurn &) = delete;
    WriteTurn &operator=(const WriteTurn &) = delete;

    SqliteConnection &Connection()
    {
        return *writer_.connection_;
    }

    // Keeps others from waiting for this session: what they have written is committed now, and it shares its
    // transaction with none. One that has written something already is only the last of its group.
    void StandAlone();

    // Returns when all that was written is on disk.
    void Commit(bool hasNotices);

    // Ends the turn with nothing of its own kept. Returns when what it has seen of others is on disk.
    void Undo();

private:
    void BeginGroup();
    void End();
    void ThrowIfLost() const;

    GroupWriter &writer_;
    std::shared_ptr<CommitGroup> group_;
    bool isFirst_ = false;
    bool isOpen_ = true;
    int changesBefore_ = 0;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_STORE_COMMIT_GROUP_H
