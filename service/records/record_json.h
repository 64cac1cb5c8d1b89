// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_RECORDS_RECORD_JSON_H
#define NUBIS_SERVICE_RECORDS_RECORD_JSON_H

#include <set>
#include <string>

#include <json/json.h>

#include "store/store_types.h"
#include "util/failure.h"

namespace DriveService {

// A record as clients read it: {"code": 0, "recordId", "recordType", "record": {the fields}, "version", "createdTime",
// "editedTime", "deleted", "createInfo", "modifiedInfo", "relations", "ownerId", "isShared"}. A deleted record has no
// fields and no relations. `fields` are the wanted ones, none: all.
Json::Value RecordToJson(const StoredRecord &record, const std::set<std::string> &fields = {});
// The same without "record" and "relations".
Json::Value BookkeepingToJson(const StoredRecord &record);

// The record's data; throws StoreError when it is damaged.
Json::Value DataOf(const StoredRecord &record);

// The record's relations; throws StoreError when they are damaged.
Json::Value RelationsOf(const StoredRecord &record);

// {"code", "recordId", "localRecordId", "recordType", "error"}
Json::Value RecordFailureToJson(const Failure &failure, const std::string &recordId, const std::string &localRecordId,
    const std::string &recordType);

// About how many bytes the record takes in a reply.
size_t ReplyBytesOf(const StoredRecord &record);

} // namespace DriveService

#endif // NUBIS_SERVICE_RECORDS_RECORD_JSON_H
