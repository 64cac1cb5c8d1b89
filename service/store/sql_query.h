// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_STORE_SQL_QUERY_H
#define NUBIS_SERVICE_STORE_SQL_QUERY_H

#include <string>
#include <vector>

#include "store/store_types.h"

namespace DriveService {

// A statement's text with the values for its question marks, in order. Names and values of callers are always bound,
// never part of the text.
struct SqlText {
    std::string text;
    std::vector<IndexedValue> values;

    void Add(const std::string &part)
    {
        text += part;
    }
    void Add(const std::string &part, IndexedValue value)
    {
        text += part;
        values.push_back(std::move(value));
    }
};

// Rows: the record's id, then one value for each sort key.
SqlText MakePositionsSql(const RecordQuery &query);

// Rows: the given columns of the records.
SqlText MakeChangesSql(const ChangesQuery &query, const std::string &columns);

// Rows: at most one id of a live record that has all of the values.
SqlText MakeFindByValuesSql(int64_t databaseId, const std::string &recordType, const std::vector<IndexRow> &values,
    const std::string &exceptId);

} // namespace DriveService

#endif // NUBIS_SERVICE_STORE_SQL_QUERY_H
