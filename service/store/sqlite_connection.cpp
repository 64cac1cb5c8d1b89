// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "store/sqlite_connection.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

namespace DriveService {

namespace {

// Only programs from outside (a backup, a shell) ever make the service wait for a lock.
constexpr int BUSY_TIMEOUT_MS = 10000;

// Queries make texts of their own; without a bound a client could fill the memory with them.
constexpr size_t MAX_STATEMENTS = 128;

constexpr int SYNCHRONOUS_FULL = 2;

// 16 MiB.
constexpr int LOG_PAGES = 4096;

// SQLite gives its journal files the mode of the database file, so that one mode settles all three. A file that is
// there must not even be opened: closing it would drop the locks that other connections of this process hold on it, and
// the next program from outside would take the journal away from under them.
void MakePrivateFile(const std::string &path)
{
    int fd = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (fd >= 0) {
        close(fd);
    } else if (errno != EEXIST) {
        throw std::runtime_error("cannot make " + path + ": " + std::strerror(errno));
    }
}

} // namespace

SqliteConnection::SqliteConnection(const std::string &path)
{
    // Nobody asks how much memory SQLite has, and counting it takes a lock for each allocation. Before it is used first.
    static const int uncounted = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    static_cast<void>(uncounted);
    MakePrivateFile(path);
    database_ =
        std::make_unique<SQLite::Database>(path, SQLite::OPEN_READWRITE | SQLite::OPEN_NOMUTEX, BUSY_TIMEOUT_MS);
    // SQLite answers with the mode that it could set, and fails at none.
    SQLite::Statement journal(*database_, "PRAGMA journal_mode = WAL");
    if (!journal.executeStep() || journal.getColumn(0).getString() != "wal") {
        throw std::runtime_error("the file system of " + path + " does not support the write-ahead log");
    }
    // With WAL, anything less may lose acknowledged transactions when the machine goes down.
    database_->exec("PRAGMA synchronous = FULL");
    // A page that changes often is copied into the file the more rarely the longer the log may become.
    database_->exec("PRAGMA wal_autocheckpoint = " + std::to_string(LOG_PAGES));
    SQLite::Statement level(*database_, "PRAGMA synchronous");
    if (!level.executeStep() || level.getColumn(0).getInt() != SYNCHRONOUS_FULL) {
        throw std::runtime_error("the database " + path + " would not be written safely");
    }
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
    // Its result is that of the last execution, whose failure was reported then.
    found->second->tryReset();
    found->second->clearBindings();
    return *found->second;
}

void SqliteConnection::Execute(const std::string &sql)
{
    database_->exec(sql);
}

void SqliteConnection::Run(const std::string &sql)
{
    SQLite::Statement &statement = Prepare(sql);
    statement.executeStep();
    // One that stands on a row keeps the transaction from ending.
    statement.reset();
}

void SqliteConnection::Rollback()
{
    try {
        Run("ROLLBACK");
    } catch (const std::exception &) {
        // SQLite has rolled back by itself, which some failures make it do.
    }
}

bool SqliteConnection::IsReadOnly() const
{
    return sqlite3_db_readonly(database_->getHandle(), "main") != 0;
}

bool SqliteConnection::IsInTransaction() const
{
    return sqlite3_get_autocommit(database_->getHandle()) == 0;
}

int SqliteConnection::Changes() const
{
    return database_->getTotalChanges();
}

std::string SqliteConnection::LastError() const
{
    return database_->getErrorMsg();
}

SqliteTransaction::SqliteTransaction(SqliteConnection &connection, Mode mode) : connection_(connection)
{
    if (mode == Mode::WRITE) {
        connection_.Run("BEGIN IMMEDIATE");
        return;
    }
    connection_.Run("BEGIN");
    try {
        // SQLite takes the view at the first read.
        connection_.Run("SELECT version FROM schema_info");
    } catch (const std::exception &) {
        connection_.Rollback();
        throw;
    }
}

SqliteTransaction::~SqliteTransaction()
{
    if (open_) {
        connection_.Rollback();
    }
}

void SqliteTransaction::Commit()
{
    connection_.Run("COMMIT");
    open_ = false;
}

} // namespace DriveService
