// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_RECORDS_FIND_LIVE_H
#define NUBIS_SERVICE_RECORDS_FIND_LIVE_H

#include <optional>
#include <string>

#include "store/store.h"
#include "util/failure.h"

namespace DriveService {

// Fills `found` with the live record of the type, or returns why there is none. `idMember` is the member that named the
// record.
std::optional<Failure> FindLive(ReadSession &session, int64_t databaseId, const std::string &recordType,
    const std::string &recordId, StoredRecord &found, const char *idMember = "recordId");

} // namespace DriveService

#endif // NUBIS_SERVICE_RECORDS_FIND_LIVE_H
