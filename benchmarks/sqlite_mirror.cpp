// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "sqlite_mirror.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <utility>

#include <sqlite3.h>

namespace NubisBench {
std::unique_ptr<SQLite::Database> OpenDurably(const std::filesystem::path &path)
{
    auto database = std::make_unique<SQLite::Database>(path.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    database->exec("PRAGMA journal_mode = WAL");
    database->exec("PRAGMA synchronous = FULL");
    // As the service has it.
    database->exec("PRAGMA wal_autocheckpoint = 4096");
    return database;
}

SqliteMirror::SqliteMirror(const std::filesystem::path &original, const std::filesystem::path &copy)
    : original_(original.string(), SQLite::OPEN_READWRITE)
{
    SQLite::Statement vacuum(original_, "VACUUM INTO ?");
    vacuum.bind(1, copy.string());
    vacuum.exec();
    copy_ = OpenDurably(copy);
    SQLite::Statement names(original_, "SELECT name FROM sqlite_master WHERE type = 'table'");
    while (names.executeStep()) {
        Follow(names.getColumn(0).getString());
    }
}

SqliteMirror::~SqliteMirror() = default;

SqliteMirror::Statement SqliteMirror::Prepare(SQLite::Database &database, const std::string &sql)
{
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v2(database.getHandle(), sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sql + ": " + database.getErrorMsg());
    }
    return Statement(statement, sqlite3_finalize);
}

void SqliteMirror::Follow(const std::string &table)
{
    const int64_t lastRow = original_.execAndGet("SELECT COALESCE(MAX(rowid), 0) FROM " + table).getInt64();
    Statement select = Prepare(original_, "SELECT rowid, * FROM " + table + " WHERE rowid > ? ORDER BY rowid");
    std::string places = "?";
    for (int column = 2; column < sqlite3_column_count(select.get()); ++column) {
        places += ", ?";
    }
    Statement insert = Prepare(*copy_, "INSERT INTO " + table + " VALUES (" + places + ")");
    tables_.push_back({lastRow, std::move(select), std::move(insert)});
}

std::vector<SqliteMirror::Row> SqliteMirror::NewRows(Table &table)
{
    std::vector<Row> rows;
    sqlite3_stmt *select = table.select.get();
    sqlite3_bind_int64(select, 1, table.lastRow);
    while (sqlite3_step(select) == SQLITE_ROW) {
        table.lastRow = sqlite3_column_int64(select, 0);
        Row &row = rows.emplace_back();
        for (int column = 1; column < sqlite3_column_count(select); ++column) {
            row.emplace_back(sqlite3_value_dup(sqlite3_column_value(select, column)), sqlite3_value_free);
        }
    }
    sqlite3_reset(select);
    return rows;
}

void SqliteMirror::Watch(size_t transactions)
{
    inserted_.clear();
    std::vector<std::vector<TableRows>> added(transactions);
    for (size_t i = 0; i < tables_.size(); ++i) {
        std::vector<Row> rows = NewRows(tables_[i]);
        const size_t each = rows.size() / transactions;
        if (each * transactions != rows.size()) {
            throw std::logic_error("the rows cannot be shared out evenly");
        }
        for (size_t t = 0; t < transactions; ++t) {
            const auto first = rows.begin() + static_cast<std::ptrdiff_t>(t * each);
            added[t].push_back({i, std::vector<Row>(first, first + static_cast<std::ptrdiff_t>(each))});
        }
    }
    std::move(added.begin(), added.end(), std::back_inserter(watched_));
}

void SqliteMirror::Insert()
{
    if (watched_.empty()) {
        throw std::logic_error("nothing was watched");
    }
    copy_->exec("BEGIN IMMEDIATE");
    for (const TableRows &added : watched_.front()) {
        sqlite3_stmt *insert = tables_[added.table].insert.get();
        for (const Row &row : added.rows) {
            for (size_t i = 0; i < row.size(); ++i) {
                sqlite3_bind_value(insert, static_cast<int>(i) + 1, row[i].get());
            }
            if (sqlite3_step(insert) != SQLITE_DONE) {
                throw std::runtime_error(copy_->getErrorMsg());
            }
            sqlite3_reset(insert);
        }
    }
    copy_->exec("COMMIT");
    inserted_.splice(inserted_.end(), watched_, watched_.begin());
}
} // namespace NubisBench
