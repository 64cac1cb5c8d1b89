// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "store/sqlite_connection.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace DriveService {

namespace {

// Only programs from outside (a backup, a shell) ever make the service wait for a lock.
constexpr int BUSY_TIMEOUT_MS = 10000;

// Queries make texts of their own; without a bound a client could fill the memory with them.
constexpr size_t MAX_STATEMENTS = 128;

// SQLite gives its journal files the mode of the database file, so that one mode settles all three.
void MakePrivateFile(const std::string &path)
{
    int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (fd < 0) {
        throw std::runtime_error("cannot open " + path + ": " + std::strerror(errno));
    }
    close(fd);
}

} // namespace

SqliteConnection::SqliteConnection(const std::string &path)
{
    MakePrivateFile(path);
    database_ =
        std::make_unique<SQLite::Database>(path, SQLite::OPEN_READWRITE | SQLite::OPEN_NOMUTEX, BUSY_TIMEOUT_MS);
    database_->exec("PRAGMA journal_mode = WAL");
    // With WAL, anything less may lose acknowledged transactions when the machine goes down.
    database_->exec("PRAGMA synchronous = FULL");
}

SQLite::Statement &SqliteConnection::Prepare(const std::string &sql)
{
    auto found = statements_.find(sql);
    if (found == statements_.end()) {
        if (statements_.size() >= MAX_STATEMENTS) {
            statements_.clear();
        }
        found = statements_.emplace(sql, std::make_unique<SQLite::Statement>(*database_, sql)).first;
    }
    found->second->reset();
    found->second->clearBindings();
    return *found->second;
}

void SqliteConnection::Execute(const std::string &sql)
{
    database_->exec(sql);
}

SqliteTransaction::SqliteTransaction(SqliteConnection &connection, Mode mode) : connection_(connection)
{
    if (mode == Mode::WRITE) {
        connection_.Execute("BEGIN IMMEDIATE");
        return;
    }
    connection_.Execute("BEGIN");
    // SQLite takes the view at the first read.
    connection_.Execute("SELECT version FROM schema_info");
}

SqliteTransaction::~SqliteTransaction()
{
    if (!open_) {
        return;
    }
    try {
        connection_.Execute("ROLLBACK");
    } catch (const std::exception &) {
        // SQLite has rolled back by itself, which some failures make it do.
    }
}

void SqliteTransaction::Commit()
{
    connection_.Execute("COMMIT");
    open_ = false;
}

} // namespace DriveService
