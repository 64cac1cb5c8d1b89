// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "store/sqlite_check.h"

#include <sys/stat.h>

#include "store/sqlite_schema.h"

namespace DriveService {

namespace {

std::string UriOf(const std::string &path, const char *options)
{
    std::string uri = "file:";
    for (char character : path) {
        switch (character) {
            case '%':
                uri += "%25";
                break;
            case '?':
                uri += "%3f";
                break;
            case '#':
                uri += "%23";
                break;
            default:
                uri += character;
        }
    }
    return uri + options;
}

// Even a reader makes files beside a database with a write-ahead log. A log that is empty, or not there, is not needed;
// where a process died there is one, and the other file, too.
const char *OptionsFor(const std::string &path)
{
    struct stat log {};
    bool hasLog = stat((path + "-wal").c_str(), &log) == 0 && log.st_size > 0;
    return hasLog ? "?mode=ro" : "?mode=ro&immutable=1";
}

} // namespace

StoreReport CheckTables(SQLite::Statement &quickCheck, SQLite::Statement &schemaVersion)
{
    StoreReport report;
    while (quickCheck.executeStep()) {
        std::string line = quickCheck.getColumn(0).getString();
        if (line != "ok") {
            report.problems.push_back(line);
        }
    }
    quickCheck.reset();
    if (schemaVersion.executeStep()) {
        report.schemaVersion = schemaVersion.getColumn(0).getInt64();
    }
    schemaVersion.reset();
    if (report.schemaVersion < 1 || report.schemaVersion > LatestSchemaVersion()) {
        report.problems.push_back("it has schema version " + std::to_string(report.schemaVersion) +
                                  ", this program knows versions up to " + std::to_string(LatestSchemaVersion()));
    }
    return report;
}

StoreReport CheckDatabaseFile(const std::string &path)
{
    try {
        SQLite::Database database(UriOf(path, OptionsFor(path)), SQLite::OPEN_READONLY | SQLite::OPEN_URI);
        SQLite::Statement quickCheck(database, SQL_QUICK_CHECK);
        SQLite::Statement schemaVersion(database, SQL_SCHEMA_VERSION);
        return CheckTables(quickCheck, schemaVersion);
    } catch (const SQLite::Exception &failure) {
        return {0, {failure.what()}};
    }
}

} // namespace DriveService
