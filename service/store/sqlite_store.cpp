// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "store/sqlite_store.h"

#include "store/sqlite_schema.h"
#include "store/sqlite_write.h"

namespace DriveService {

namespace {

// More readers than the machine can run at once only cost memory; the rest wait their turn.
constexpr size_t MAX_READERS = 16;

} // namespace

// A connection of the pool with a transaction on it. The connection goes back after the transaction has ended.
class SqliteReaderLease {
public:
    SqliteReaderLease(SqliteStore &store, std::unique_ptr<SqliteConnection> connection)
        : lent_{store, std::move(connection)}, transaction_(*lent_.connection, SqliteTransaction::Mode::READ)
    {}

    SqliteConnection &Connection()
    {
        return *lent_.connection;
    }

private:
    struct Lent {
        Lent(SqliteStore &owner, std::unique_ptr<SqliteConnection> held) : store(owner), connection(std::move(held))
        {}
        ~Lent()
        {
            store.ReturnReader(std::move(connection));
        }
        Lent(const Lent &) = delete;
        Lent &operator=(const Lent &) = delete;

        SqliteStore &store;
        std::unique_ptr<SqliteConnection> connection;
    };

    Lent lent_;
    SqliteTransaction transaction_;
};

// The lease is a base, not a member, because it must be there before the reading base and end after it.
class SqlitePooledRead : private SqliteReaderLease, public SqliteRead {
public:
    SqlitePooledRead(SqliteStore &store, std::unique_ptr<SqliteConnection> connection)
        : SqliteReaderLease(store, std::move(connection)), SqliteRead(Connection())
    {}
};

SqliteStore::SqliteStore(std::string path) : path_(std::move(path))
{
    try {
        writer_ = std::make_unique<GroupWriter>(path_);
        MigrateSchema(writer_->Connection());
    } catch (const std::exception &failure) {
        throw StoreError("cannot use the database " + path_ + ": " + failure.what());
    }
}

std::unique_ptr<ReadSession> SqliteStore::BeginRead()
{
    return GuardStore(path_,
        [this]() -> std::unique_ptr<ReadSession> { return std::make_unique<SqlitePooledRead>(*this, TakeReader()); });
}

std::unique_ptr<WriteSession> SqliteStore::BeginWrite()
{
    return GuardStore(
        path_, [this]() -> std::unique_ptr<WriteSession> { return std::make_unique<SqliteWrite>(*writer_); });
}

void SqliteStore::SetNoticeListener(std::function<void()> listener)
{
    writer_->SetNoticeListener(std::move(listener));
}

std::unique_ptr<SqliteConnection> SqliteStore::TakeReader()
{
    std::unique_lock<std::mutex> lock(poolMutex_);
    readerReturned_.wait(lock, [this] { return !idleReaders_.empty() || readers_ < MAX_READERS; });
    if (!idleReaders_.empty()) {
        std::unique_ptr<SqliteConnection> reader = std::move(idleReaders_.back());
        idleReaders_.pop_back();
        return reader;
    }
    ++readers_;
    lock.unlock();
    try {
        return std::make_unique<SqliteConnection>(path_);
    } catch (const std::exception &failure) {
        ReturnReader(nullptr);
        throw StoreError("cannot open " + path_ + " for reading: " + failure.what());
    }
}

void SqliteStore::ReturnReader(std::unique_ptr<SqliteConnection> connection)
{
    {
        std::lock_guard<std::mutex> lock(poolMutex_);
        if (connection) {
            idleReaders_.push_back(std::move(connection));
        } else {
            --readers_;
        }
    }
    readerReturned_.notify_one();
}

} // namespace DriveService
