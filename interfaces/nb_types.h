// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_TYPES_H
#define NB_TYPES_H

#include <cstdint>
#include <string>
#include <vector>

namespace Nubis {
/// The system sync service on whose behalf the process talks to the cloud. Sent as decimal text in "syncDemon".
enum NBCloudSyncDemon : int32_t {
    NB_SYNC_DEMON_DATA = 0,
    NB_SYNC_DEMON_FILE = 1,
    NB_SYNC_DEMON_ASSET = 2,
    /// Not chosen yet; the value with which every kit instance starts.
    NB_SYNC_DEMON_NONE = 3,
};

/// Which of the three databases of a container. Sent as the integer "databaseType".
enum NBDatabaseScope : int32_t {
    NB_DATABASE_PUBLIC = 0,
    NB_DATABASE_PRIVATE = 1,
    NB_DATABASE_SHARED = 2,
};

/// What the service does when a saved record meets a newer one. The library passes the value through.
enum NBSavePolicy : int32_t {
    /// Write only if the record is unchanged since its "baseVersion".
    NB_SAVE_IF_UNCHANGED = 0,
    /// Write only the changed fields; the last writer wins.
    NB_SAVE_CHANGED_FIELDS = 1,
    /// Overwrite the whole record.
    NB_SAVE_OVERWRITE = 2,
};

/// One ordering of a query.
struct NBOrderBy {
    /// Largest first.
    bool isDescending = false;
    /// A field that the schema calls sortable.
    std::string fieldName;
};

/// What to read: records of one type that pass the query text, in the given orderings (the first counts most).
struct NBQuery {
    /// One of the schema's record types.
    std::string recordType;
    /// A filter in the service's query syntax; empty reads all records of the type.
    std::string queryText;
    /// Empty leaves the order to the service.
    std::vector<NBOrderBy> orderings;
};

/// A lock on a database.
struct NBLock {
    /// The interval that the service reported for the lock; 0 when it reported none.
    int lockInterval = 0;
    /// The session that holds the lock; empty asks for a new session.
    std::string lockSessionId;
};

/// The progress of one record of a save. The library creates entries with both counters 0.
struct NBProgressResult {
    ///@{
    /// In bytes; whoever uploads the contents counts both.
    uint64_t transferredSize = 0;
    uint64_t totalSize = 0;
    ///@}
};
} // namespace Nubis

#endif // NB_TYPES_H
