// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include "query/query_parser.h"
#include "records/find_live.h"
#include "records/record_json.h"
#include "requests/write_support.h"

namespace DriveService {

// Not a matter of the container's lock: the request names no session, so its holder could not share either.
Json::Value SetPreShared(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    const RecordTypeRule &rule = FindRecordType(target, request);
    std::string recordId = request.NonEmptyText("recordId");
    std::string prepareTraceId = request.PrepareTraceId();

    std::unique_ptr<WriteSession> session = context.store.BeginWrite();
    session->SetPrepareTraceId(prepareTraceId);
    int64_t databaseId = session->EnsureDatabase(target.key).id;
    StoredRecord record;
    std::optional<Failure> failure = FindLive(session->View(), databaseId, rule.recordType, recordId, record);
    if (failure) {
        throw RequestError(std::move(*failure));
    }
    if (!record.shared) {
        record.shared = true;
        ++record.version;
        record.modified = StampOf(context, request, target);
        record.editedTime = record.modified.time;
        std::vector<IndexedField> fields = IndexedFieldsOf(rule);
        session->EnsureIndexed(databaseId, rule.recordType, fields);
        session->Put(databaseId, record, MakeIndexRows(DataOf(record), fields));
    }
    session->Commit();
    session.reset();
    return RecordToJson(record);
}

} // namespace DriveService
