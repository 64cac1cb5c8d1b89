// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_BENCH_SQLITE_MIRROR_H
#define NUBIS_BENCH_SQLITE_MIRROR_H

#include <cstdint>
#include <filesystem>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include <SQLiteCpp/SQLiteCpp.h>

struct sqlite3_stmt;
struct sqlite3_value;

namespace NubisBench {
// Opens a database with the settings that the service has, so that a commit is as durable.
std::unique_ptr<SQLite::Database> OpenDurably(const std::filesystem::path &path);

// Follows what a service adds to its database, and adds the same rows to a copy of it by SQLite alone.
class SqliteMirror {
public:
    // The copy begins with what is in the database now.
    SqliteMirror(const std::filesystem::path &original, const std::filesystem::path &copy);
    ~SqliteMirror();
    SqliteMirror(const SqliteMirror &) = delete;
    SqliteMirror &operator=(const SqliteMirror &) = delete;

    // Takes up the rows that have come to the original since the last time, for so many transactions, each of which adds as
    // many rows of each table as the others. Throws when the rows cannot be shared out so.
    void Watch(size_t transactions = 1);
    // Adds to the copy what the earliest Watch took up that is not in it yet: one transaction, durable. Throws when there
    // is none.
    void Insert();

private:
    using Row = std::vector<std::shared_ptr<sqlite3_value>>;
    using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)>;
    struct Table {
        int64_t lastRow;
        Statement select;
        Statement insert;
    };
    struct TableRows {
        size_t table = 0;
        std::vector<Row> rows;
    };

    void Follow(const std::string &table);
    static Statement Prepare(SQLite::Database &database, const std::string &sql);
    static std::vector<Row> NewRows(Table &table);

    SQLite::Database original_;
    std::unique_ptr<SQLite::Database> copy_;
    std::vector<Table> tables_;
    std::list<std::vector<TableRows>> watched_;
    std::list<std::vector<TableRows>> inserted_; // until the next watch, so that freeing them is not measured
};
} // namespace NubisBench

#endif // NUBIS_BENCH_SQLITE_MIRROR_H
