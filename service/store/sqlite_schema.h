// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_STORE_SQLITE_SCHEMA_H
#define NUBIS_SERVICE_STORE_SQLITE_SCHEMA_H

#include <cstdint>

#include "store/sqlite_connection.h"

namespace DriveService {

// The form that this program works with.
int64_t LatestSchemaVersion();

// Brings the tables to the form that this program works with, in one transaction. Throws std::runtime_error when the
// database was made by a newer program.
void MigrateSchema(SqliteConnection &connection);

} // namespace DriveService

#endif // NUBIS_SERVICE_STORE_SQLITE_SCHEMA_H
