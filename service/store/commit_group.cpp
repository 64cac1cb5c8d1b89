// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "store/commit_group.h"

#include <new>
#include <utility>

#include "store/store.h"

namespace DriveService {

namespace {

// The first of a group waits for all others of it.
constexpr size_t MAX_GROUP_SESSIONS = 32;

void Remember(std::string &failure, const char *text)
{
    try {
        failure = text;
    } catch (const std::bad_alloc &) {
        // So short that it needs none.
        failure = "out of memory";
    }
}

void Release(CommitGroup &group)
{
    {
        std::lock_guard<std::mutex> lock(group.mutex);
        group.isOver = true;
    }
    group.over.notify_all();
}

} // namespace

GroupWriter::GroupWriter(std::string path) : path_(std::move(path)), connection_(new SqliteConnection(path_))
{}

void GroupWriter::SetNoticeListener(std::function<void()> listener)
{
    std::lock_guard<std::mutex> lock(listenerMutex_);
    onNotices_ = std::move(listener);
}

size_t GroupWriter::Waiting()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return places_.size();
}

void GroupWriter::Place::Await()
{
    std::unique_lock<std::mutex> lock(mutex_);
    called_.wait(lock, [this] { return isNext_; });
}

void GroupWriter::Place::Call()
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        isNext_ = true;
    }
    called_.notify_one();
}

void GroupWriter::Take()
{
    std::shared_ptr<Place> place;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!isTaken_) {
            isTaken_ = true;
            return;
        }
        place = places_.emplace_back(std::make_shared<Place>());
    }
    place->Await();
}

std::shared_ptr<GroupWriter::Place> GroupWriter::TakeNext()
{
    if (places_.empty()) {
        return nullptr;
    }
    std::shared_ptr<Place> next = std::move(places_.front());
    places_.pop_front();
    return next;
}

void GroupWriter::PassOn()
{
    std::shared_ptr<Place> next;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        next = TakeNext();
        isTaken_ = next != nullptr;
    }
    if (next != nullptr) {
        next->Call();
    }
}

bool GroupWriter::AwaitOthers(CommitGroup &group)
{
    if (group.isClosed || group.sessions >= MAX_GROUP_SESSIONS || !connection_->IsInTransaction()) {
        return false;
    }
    std::shared_ptr<Place> next;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        next = TakeNext();
    }
    if (next == nullptr) {
        return false;
    }
    next->Call();
    std::unique_lock<std::mutex> lock(group.mutex);
    group.over.wait(lock, [&group] { return group.isOver; });
    return true;
}

std::shared_ptr<CommitGroup> GroupWriter::Settle()
{
    std::shared_ptr<CommitGroup> group = std::move(group_);
    std::string &failure = group->failure;
    try {
        if (connection_->IsInTransaction()) {
            connection_->Run("COMMIT");
        } else {
            // Some failures make SQLite undo the whole transaction by itself.
            failure = connection_->LastError();
        }
    } catch (const std::exception &cause) {
        connection_->Rollback();
        Remember(failure, cause.what());
    }
    if (failure.empty() && group->hasNotices) {
        TellListener();
    }
    return group;
}

void GroupWriter::TellListener()
{
    std::lock_guard<std::mutex> lock(listenerMutex_);
    if (onNotices_) {
        onNotices_();
    }
}

WriteTurn::WriteTurn(GroupWriter &writer) : writer_(writer)
{
    writer_.Take();
    group_ = writer_.group_;
    if (group_ == nullptr) {
        BeginGroup();
        return;
    }
    ++group_->sessions;
    try {
        Connection().Run("SAVEPOINT session");
    } catch (const std::exception &) {
        End();
        throw;
    }
    changesBefore_ = Connection().Changes();
}

WriteTurn::~WriteTurn()
{
    if (!isOpen_) {
        return;
    }
    try {
        Undo();
    } catch (const std::exception &) {
        // Those whose writes were lost are told by their own commits.
    }
}

void WriteTurn::BeginGroup()
{
    try {
        if (Connection().IsReadOnly()) {
            // The file could not be written when it was opened; that may have been put right since.
            writer_.connection_ = std::make_unique<SqliteConnection>(writer_.path_);
        }
        group_ = std::make_shared<CommitGroup>();
        if (Connection().IsInTransaction()) {
            // There was no memory to undo it.
            Connection().Rollback();
        }
        Connection().Run("BEGIN IMMEDIATE");
    } catch (const std::exception &) {
        isOpen_ = false;
        writer_.PassOn();
        throw;
    }
    writer_.group_ = group_;
    group_->sessions = 1;
    isFirst_ = true;
}

void WriteTurn::StandAlone()
{
    if (!isFirst_ && Connection().Changes() == changesBefore_) {
        Connection().Run("RELEASE session");
        Release(*writer_.Settle());
        if (!group_->failure.empty()) {
            isOpen_ = false;
            writer_.PassOn();
            ThrowIfLost();
        }
        BeginGroup();
    }
    group_->isClosed = true;
}

void WriteTurn::Commit(bool hasNotices)
{
    if (!isFirst_) {
        Connection().Run("RELEASE session");
    }
    group_->hasNotices = group_->hasNotices || hasNotices;
    End();
}

void WriteTurn::Undo()
{
    if (isFirst_) {
        isOpen_ = false;
        Connection().Rollback();
        writer_.group_.reset();
        writer_.PassOn();
        return;
    }
    if (Connection().IsInTransaction()) {
        try {
            Connection().Run("ROLLBACK TO session");
            Connection().Run("RELEASE session");
        } catch (const std::exception &) {
            // What is left of its writes must not be kept, nor what others wrote with it.
            Connection().Rollback();
        }
    }
    End();
}

void WriteTurn::End()
{
    isOpen_ = false;
    if (!writer_.AwaitOthers(*group_)) {
        std::shared_ptr<CommitGroup> group = writer_.Settle();
        // First the next group, which is what the others wait for.
        writer_.PassOn();
        Release(*group);
    }
    ThrowIfLost();
}

void WriteTurn::ThrowIfLost() const
{
    if (!group_->failure.empty()) {
        throw StoreError("the database failed: " + writer_.path_ + ": " + group_->failure);
    }
}

} // namespace DriveService
