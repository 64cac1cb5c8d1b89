// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "records/find_live.h"

#include "util/json_util.h"

namespace DriveService {

std::optional<Failure> FindLive(ReadSession &session, int64_t databaseId, const std::string &recordType,
    const std::string &recordId, StoredRecord &found, const char *idMember)
{
    std::string named = "record \"" + Excerpt(recordId) + "\"";
    std::optional<StoredRecord> record = session.FindRecord(databaseId, recordId);
    if (!record) {
        return Failure(ErrorCode::RECORD_NOT_FOUND, named + " does not exist", idMember);
    }
    if (record->deleted) {
        return Failure(ErrorCode::RECORD_DELETED,
            named + " was deleted (version " + std::to_string(record->version) + ")", idMember);
    }
    if (record->recordType != recordType) {
        return Failure(ErrorCode::RECORD_TYPE_MISMATCH,
            named + " is of type \"" + record->recordType + "\", not \"" + Excerpt(recordType) + "\"", "recordType");
    }
    found = std::move(*record);
    return std::nullopt;
}

} // namespace DriveService
