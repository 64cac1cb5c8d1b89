// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_QUERY_CURSOR_H
#define NUBIS_SERVICE_QUERY_CURSOR_H

#include <string>

#include "store/store_types.h"

namespace DriveService {

// Cursors are opaque to clients: KIND "." BODY "." CHECK, where BODY is URL-safe Base64 of a JSON array that begins
// with the database's uid and CHECK tells damaged texts. The kind carries the version of the form. Reading throws
// RequestError (INVALID_CURSOR) that names the cursor.

// The place in a database's change sequence up to which changes were read.
std::string WriteChangeCursor(const DatabaseInfo &database, int64_t sequence);
int64_t ReadChangeCursor(const std::string &cursor, const DatabaseInfo &database);

// The place in the results of one query; `query` is any text that is the same for the same query.
std::string WriteQueryCursor(const DatabaseInfo &database, const std::string &query, const QueryPosition &position);
QueryPosition ReadQueryCursor(const std::string &cursor, const DatabaseInfo &database, const std::string &query,
    const std::vector<SortKey> &order);

} // namespace DriveService

#endif // NUBIS_SERVICE_QUERY_CURSOR_H
