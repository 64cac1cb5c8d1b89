// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_STORE_SQLITE_CHECK_H
#define NUBIS_SERVICE_STORE_SQLITE_CHECK_H

#include <string>

#include <SQLiteCpp/SQLiteCpp.h>

#include "store/store_types.h"

namespace DriveService {

// Of an intact database SQLite says "ok"; more than these lines would not help anybody.
constexpr const char *SQL_QUICK_CHECK = "PRAGMA quick_check(10)";
constexpr const char *SQL_SCHEMA_VERSION = "SELECT MAX(version) FROM schema_info";

// Runs the two statements above. Throws SQLite::Exception when the database cannot be read.
StoreReport CheckTables(SQLite::Statement &quickCheck, SQLite::Statement &schemaVersion);

// Checks a database that nobody has opened, without making or changing a file. What SQLite cannot read is a problem, too.
StoreReport CheckDatabaseFile(const std::string &path);

} // namespace DriveService

#endif // NUBIS_SERVICE_STORE_SQLITE_CHECK_H
