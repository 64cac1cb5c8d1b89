// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_ASSETS_UPLOAD_REQUEST_H
#define NUBIS_SERVICE_ASSETS_UPLOAD_REQUEST_H

#include <vector>

#include "records/record_saver.h"
#include "requests/request.h"

namespace DriveService {

// Asks the client whose request saved these records for the contents of their pending assets, in one call for all of
// them, and waits for its answer:
//
//   {"function": "onUploadRecordAssets", "bundleName", "containerName", "databaseType", "userId", "taskId" (the
//    request's, if it has one), "records": [{"recordId", "recordType", "version", "assets": [{"field", "assetId",
//    "assetName", "status", "revision", "size", "sha256", "uri", "subPath"}]}]}
//
// Assets that the client says it has uploaded become "uploaded"; nothing else of the answer counts, nor does its
// absence. Does nothing when the client sent no object to call, when nothing is pending or when the setting
// "uploadCallback" is 0. Called after the commit and without a session; throws nothing.
void AskForUploads(ServiceContext &context, const Request &request, const Target &target, int64_t databaseId,
    const std::vector<RecordOutcome> &outcomes) noexcept;

} // namespace DriveService

#endif // NUBIS_SERVICE_ASSETS_UPLOAD_REQUEST_H
