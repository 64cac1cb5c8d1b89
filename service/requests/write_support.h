// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_REQUESTS_WRITE_SUPPORT_H
#define NUBIS_SERVICE_REQUESTS_WRITE_SUPPORT_H

#include <initializer_list>
#include <memory>
#include <vector>

#include "records/record_saver.h"
#include "requests/request.h"
#include "store/store.h"
#include "util/json_writer.h"

namespace DriveService {

// What the requests that write records do alike.

// How many records these members, arrays all, hold. Throws RequestError (BATCH_TOO_LARGE) when they are more than the
// container takes at once.
uint64_t CountBatch(const Request &request, const Target &target, std::initializer_list<const char *> names);

// The request's "savePolicy".
SavePolicy PolicyOf(const Request &request);

// The stamp of what the request changes.
ChangeStamp StampOf(const ServiceContext &context, const Request &request, const Target &target);

// A session in which the request may write so many records of the container: its "lockSessionId" is that of the
// container's lock, if there is one. Throws RequestError (LOCK_HELD).
std::unique_ptr<WriteSession> BeginRecordWrite(
    ServiceContext &context, const Request &request, const Target &target, uint64_t records);

// For saving within the session, which must outlive it.
SaveContext MakeSaveContext(const ServiceContext &context, WriteSession &session, const Request &request,
    const Target &target, SavePolicy policy);

// The reply's list of what this request has done. Records that would make it too large come without their data.
// `assets`: what is said of each saved record's; empty: nothing.
JsonList ListOutcomes(const std::vector<RecordOutcome> &outcomes, const std::vector<Json::Value> &assets = {});

} // namespace DriveService

#endif // NUBIS_SERVICE_REQUESTS_WRITE_SUPPORT_H
