// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "store/sqlite_schema.h"

#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "store/sqlite_check.h"

namespace DriveService {

namespace {

// Step n leads from version n to version n + 1. Steps that were released are never changed, only added to.
//
// record_value holds the values of the fields that queries may use, one row for a value and one for each element of a
// list, in the one column of its kind. Tables of plain values instead of JSON functions keep the statements the same
// for every SQL database.
//
// asset holds what is known of the contents of a record's assets; all else of them is in the record's data. Assets of
// records that were last saved before there was the table have no row.
constexpr const char *RECORD_STEP[] = {
    "CREATE TABLE cloud_database ("
    " database_id BIGINT NOT NULL PRIMARY KEY,"
    " uid TEXT NOT NULL,"
    " bundle_name TEXT NOT NULL,"
    " container_name TEXT NOT NULL,"
    " database_type BIGINT NOT NULL,"
    " last_sequence BIGINT NOT NULL,"
    " UNIQUE (bundle_name, container_name, database_type))",
    "CREATE TABLE record ("
    " database_id BIGINT NOT NULL,"
    " record_id TEXT NOT NULL,"
    " record_type TEXT NOT NULL,"
    " version BIGINT NOT NULL,"
    " sequence BIGINT NOT NULL,"
    " deleted BIGINT NOT NULL,"
    " created_time BIGINT NOT NULL,"
    " edited_time BIGINT NOT NULL,"
    " create_time BIGINT NOT NULL,"
    " create_device TEXT NOT NULL,"
    " create_app TEXT NOT NULL,"
    " modify_time BIGINT NOT NULL,"
    " modify_device TEXT NOT NULL,"
    " modify_app TEXT NOT NULL,"
    " owner_id TEXT NOT NULL,"
    " shared BIGINT NOT NULL,"
    " relations TEXT NOT NULL,"
    " data TEXT NOT NULL,"
    " PRIMARY KEY (database_id, record_id))",
    "CREATE UNIQUE INDEX record_by_sequence ON record (database_id, sequence)",
    "CREATE INDEX record_by_type_sequence ON record (database_id, record_type, sequence)",
    "CREATE INDEX record_by_type_id ON record (database_id, record_type, deleted, record_id)",
    "CREATE TABLE record_value ("
    " database_id BIGINT NOT NULL,"
    " record_type TEXT NOT NULL,"
    " record_id TEXT NOT NULL,"
    " field TEXT NOT NULL,"
    " position BIGINT NOT NULL,"
    " integer_value BIGINT,"
    " real_value DOUBLE PRECISION,"
    " text_value TEXT,"
    " PRIMARY KEY (database_id, record_id, field, position))",
    "CREATE INDEX record_value_integer ON record_value (database_id, record_type, field, integer_value)"
    " WHERE integer_value IS NOT NULL",
    "CREATE INDEX record_value_real ON record_value (database_id, record_type, field, real_value)"
    " WHERE real_value IS NOT NULL",
    "CREATE INDEX record_value_text ON record_value (database_id, record_type, field, text_value)"
    " WHERE text_value IS NOT NULL",
    "CREATE TABLE indexed_type ("
    " database_id BIGINT NOT NULL,"
    " record_type TEXT NOT NULL,"
    " fields TEXT NOT NULL,"
    " PRIMARY KEY (database_id, record_type))",
    "CREATE TABLE setting ("
    " name TEXT NOT NULL PRIMARY KEY,"
    " value TEXT NOT NULL)",
};

constexpr const char *ASSET_STEP[] = {
    "CREATE TABLE asset ("
    " database_id BIGINT NOT NULL,"
    " record_id TEXT NOT NULL,"
    " field TEXT NOT NULL,"
    " asset_id TEXT NOT NULL,"
    " uploaded BIGINT NOT NULL,"
    " revision BIGINT NOT NULL,"
    " content TEXT NOT NULL,"
    " PRIMARY KEY (database_id, record_id, field, asset_id))",
    "CREATE INDEX asset_by_id ON asset (database_id, asset_id)",
};

constexpr const char *SUBSCRIPTION_STEP[] = {
    "CREATE TABLE subscription ("
    " subscription_id TEXT NOT NULL PRIMARY KEY,"
    " bundle_name TEXT NOT NULL,"
    " container_name TEXT NOT NULL,"
    " event_name TEXT NOT NULL,"
    " expiration_time BIGINT NOT NULL,"
    " UNIQUE (bundle_name, container_name, event_name))",
    "CREATE TABLE notice ("
    " notice_number BIGINT NOT NULL PRIMARY KEY,"
    " uid TEXT NOT NULL,"
    " subscription_id TEXT NOT NULL,"
    " database_scopes TEXT NOT NULL,"
    " record_types TEXT NOT NULL,"
    " prepare_trace_id TEXT NOT NULL)",
};

const std::vector<std::vector<const char *>> &Steps()
{
    static const auto *steps = new std::vector<std::vector<const char *>>{
        {std::begin(RECORD_STEP), std::end(RECORD_STEP)},
        {std::begin(ASSET_STEP), std::end(ASSET_STEP)},
        {std::begin(SUBSCRIPTION_STEP), std::end(SUBSCRIPTION_STEP)},
    };
    return *steps;
}

} // namespace

int64_t LatestSchemaVersion()
{
    return static_cast<int64_t>(Steps().size());
}

void MigrateSchema(SqliteConnection &connection)
{
    connection.Execute("CREATE TABLE IF NOT EXISTS schema_info (version BIGINT NOT NULL)");
    SqliteTransaction transaction(connection, SqliteTransaction::Mode::WRITE);
    SQLite::Statement &read = connection.Prepare(SQL_SCHEMA_VERSION);
    read.executeStep();
    bool fresh = read.getColumn(0).isNull();
    int64_t found = fresh ? 0 : read.getColumn(0).getInt64();
    read.reset();
    if (found < 0 || found > LatestSchemaVersion()) {
        throw std::runtime_error("the database has schema version " + std::to_string(found) +
                                 ", this program knows versions up to " + std::to_string(LatestSchemaVersion()) +
                                 "; use a newer program, or import a backup into a new data folder");
    }
    if (fresh) {
        connection.Execute("INSERT INTO schema_info (version) VALUES (0)");
    }
    for (auto version = static_cast<size_t>(found); version < Steps().size(); ++version) {
        for (const char *statement : Steps()[version]) {
            connection.Execute(statement);
        }
        connection.Execute("UPDATE schema_info SET version = " + std::to_string(version + 1));
    }
    transaction.Commit();
}

} // namespace DriveService
