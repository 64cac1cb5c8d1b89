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

namespace DriveService {

// What the requests that write records do alike.

// Throws RequestError (BATCH_TOO_LARGE) when these members, arrays all, hold more records than the container takes at
// once.
void CheckBatch(const Request &request, const Target &target, std::initializer_list<const char *> names);

// The request's "savePolicy".
SavePolicy PolicyOf(const Request &request);

// The stamp of what the request changes.
ChangeStamp StampOf(const ServiceContext &context, const Request &request, const Target &target);

// All but the database. May begin sessions of its own, so it comes before the write session.
SaveContext MakeSaveContext(ServiceContext &context, const Request &request, const Target &target, SavePolicy policy);

// A session in which the request may write records of the container: its "lockSessionId" is that of the container's
// lock, if there is one. Throws RequestError (LOCK_HELD).
std::unique_ptr<WriteSession> BeginRecordWrite(ServiceContext &context, const Request &request, const Target &target);

// The elements of the reply, made of the outcomes' own data. Those that would make it too large come without their data.
Json::Value OutcomesToJson(std::vector<RecordOutcome> &&outcomes);

} // namespace DriveService

#endif // NUBIS_SERVICE_REQUESTS_WRITE_SUPPORT_H
