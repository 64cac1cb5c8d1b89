// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_STORE_SQLITE_CONNECTION_H
#define NUBIS_SERVICE_STORE_SQLITE_CONNECTION_H

#include <memory>
#include <string>
#include <unordered_map>

#include <SQLiteCpp/SQLiteCpp.h>

namespace DriveService {

// One connection to a database file, with its prepared statements. Everything that only SQLite knows (files, pragmas,
// journal) is in this class. Used by one thread at a time; throws SQLite::Exception.
class SqliteConnection {
public:
    // Makes the file with mode 0600 when it is not there; throws std::runtime_error when it cannot,
    // or when what is committed would not be on disk.
    explicit SqliteConnection(const std::string &path);

    SqliteConnection(const SqliteConnection &) = delete;
    SqliteConnection &operator=(const SqliteConnection &) = delete;

    // A statement without bindings, prepared once for each text. It is the caller's until it asks for the next
    // one, or ends the transaction.
    SQLite::Statement &Prepare(const std::string &sql);

    void Execute(const std::string &sql);

    // The same for a text that comes again: it is parsed once.
    void Run(const std::string &sql);

    // Undoes the open transaction, if there is one; fails at nothing.
    void Rollback();

    const std::string &Path() const
    {
        return database_->getFilename();
    }

    // The file may not be written, or could not be when it was opened.
    bool IsReadOnly() const;

    bool IsInTransaction() const;

    // Differs whenever rows were written meanwhile.
    int Changes() const;

    // Of the last operation that failed.
    std::string LastError() const;

private:
    std::unique_ptr<SQLite::Database> database_;
    std::unordered_map<std::string, std::unique_ptr<SQLite::Statement>> statements_;
};

// Begins a transaction and rolls it back at its end unless Commit was called.
class SqliteTransaction {
public:
    enum class Mode {
        READ,  // the view is taken at once, so that all later statements agree
        WRITE, // takes the write lock at once, so that it cannot be lost to another writer later
    };

    SqliteTransaction(SqliteConnection &connection, Mode mode);
    ~SqliteTransaction();
    SqliteTransaction(const SqliteTransaction &) = delete;
    SqliteTransaction &operator=(const SqliteTransaction &) = delete;

    void Commit();

private:
    SqliteConnection &connection_;
    bool open_ = true;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_STORE_SQLITE_CONNECTION_H
