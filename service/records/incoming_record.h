// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_RECORDS_INCOMING_RECORD_H
#define NUBIS_SERVICE_RECORDS_INCOMING_RECORD_H

#include <optional>
#include <string>
#include <vector>

#include <json/json.h>

#include "catalogue/catalogue_types.h"
#include "records/value_check.h"
#include "util/failure.h"

namespace DriveService {

// A record as a client sends it: data fields stand beside the bookkeeping members at the top level. A field that is
// null is to be unset.
struct IncomingRecord {
    std::string recordId; // empty: the service makes one
    std::string recordType;
    const RecordTypeRule *rule = nullptr; // owned by the catalogue entry
    bool isNew = false;
    std::optional<int64_t> baseVersion;
    int64_t createdTime = 0;              // 0: not given
    std::optional<Json::Value> relations; // an array; empty when none was sent
    std::string ownerId;
    bool isShared = false;
    Json::Value fields = Json::Value(Json::objectValue);
    std::vector<RecordReference> fieldReferences;
    std::vector<RecordReference> relationReferences;
};

// Reads and checks one record against the container's schema. What can be told before anything else (id and type) is
// filled in even when the result is a failure.
std::optional<Failure> ReadIncomingRecord(Json::Value &&json, const ContainerEntry &container, IncomingRecord &record);

} // namespace DriveService

#endif // NUBIS_SERVICE_RECORDS_INCOMING_RECORD_H
