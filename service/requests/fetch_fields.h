// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_REQUESTS_FETCH_FIELDS_H
#define NUBIS_SERVICE_REQUESTS_FETCH_FIELDS_H

#include <memory>
#include <set>
#include <string>

#include "requests/request.h"
#include "store/store.h"

namespace DriveService {

// The request's "fields", a comma list; empty: all. Every name must be a field of the type, or of any of the
// container's types when there is none. Throws RequestError (UNKNOWN_FIELD).
std::set<std::string> WantedFields(const Request &request, const Target &target, const RecordTypeRule *rule);

// The live record that a request for one names by "recordType" and "recordId".
struct WantedRecord {
    Target target;
    const RecordTypeRule &rule; // owned by the target
    std::set<std::string> fields;
    int64_t databaseId = 0;
    std::unique_ptr<ReadSession> session; // the view that the record was read from
    StoredRecord record;
};

// Throws RequestError.
WantedRecord FetchWanted(ServiceContext &context, const Request &request);

// The request's "pageSize" brought to the service's bounds.
PageBounds BoundsOf(const Request &request);

// A view in which conditions and orderings on the type's fields can be answered.
std::unique_ptr<ReadSession> BeginIndexedRead(ServiceContext &context, int64_t databaseId, const RecordTypeRule &rule);

} // namespace DriveService

#endif // NUBIS_SERVICE_REQUESTS_FETCH_FIELDS_H
