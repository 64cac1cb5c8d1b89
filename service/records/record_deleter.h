// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_RECORDS_RECORD_DELETER_H
#define NUBIS_SERVICE_RECORDS_RECORD_DELETER_H

#include <string>
#include <vector>

#include "records/record_saver.h"

namespace DriveService {

struct DeleteContext {
    std::string recordType; // empty: each element names its own
    int64_t databaseId = 0;
    SavePolicy policy = SavePolicy::IF_UNCHANGED; // the other two delete whatever the record has become
    ChangeStamp stamp;
};

// Turns the records into tombstones, each or not each on its own. A record that is deleted already stays as it is and
// counts as deleted, so that a request can be repeated. Each element names its record by "recordId" and, for
// IF_UNCHANGED, the version that it was read with by "baseVersion".
std::vector<RecordOutcome> DeleteRecordsIn(
    WriteSession &session, const DeleteContext &context, const Json::Value &records);

} // namespace DriveService

#endif // NUBIS_SERVICE_RECORDS_RECORD_DELETER_H
