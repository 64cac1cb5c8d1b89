// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include <algorithm>
#include <utility>

#include "assets/upload_request.h"
#include "records/record_deleter.h"
#include "requests/write_support.h"

namespace DriveService {

namespace {

bool AnyRefused(const std::vector<RecordOutcome> &outcomes)
{
    return std::any_of(
        outcomes.begin(), outcomes.end(), [](const RecordOutcome &outcome) { return outcome.failure.has_value(); });
}

// Nothing of the request was done: no outcome may show what would have become of its record.
void MarkNotApplied(std::vector<RecordOutcome> &outcomes)
{
    for (RecordOutcome &outcome : outcomes) {
        outcome.record.reset();
        if (!outcome.failure) {
            outcome.failure = Failure(ErrorCode::NOT_APPLIED,
                "another record of the request was refused, and the request is to be done as a whole or not at all",
                "atomic");
        }
    }
}

} // namespace

Reply SaveRecords(ServiceContext &context, Request &request)
{
    Target target = FindTarget(context, request);
    uint64_t count = CountBatch(request, target, {"records"});
    SavePolicy policy = PolicyOf(request);

    std::unique_ptr<WriteSession> session = BeginRecordWrite(context, request, target, count);
    SaveContext save = MakeSaveContext(context, *session, request, target, policy);
    std::vector<RecordOutcome> outcomes = RecordSaver(*session, save).Save(request.TakeArray("records"));
    session->Commit();
    session.reset();
    AskForUploads(context, request, target, save.databaseId, outcomes);

    Reply reply = Success();
    reply.Add("records", ListOutcomes(outcomes));
    return reply;
}

Reply DeleteRecords(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    uint64_t count = CountBatch(request, target, {"records"});
    FindRecordType(target, request);
    DeleteContext deletion{request.Text("recordType"), 0, PolicyOf(request), StampOf(context, request, target)};

    std::unique_ptr<WriteSession> session = BeginRecordWrite(context, request, target, count);
    deletion.databaseId = session->EnsureDatabase(target.key).id;
    std::vector<RecordOutcome> outcomes = DeleteRecordsIn(*session, deletion, request.Array("records"));
    session->Commit();
    session.reset();

    Reply reply = Success();
    reply.Add("records", ListOutcomes(outcomes));
    return reply;
}

// Deletions come first, so that a record may take over what a deleted one had to itself.
Reply ModifyRecords(ServiceContext &context, Request &request)
{
    Target target = FindTarget(context, request);
    uint64_t count = CountBatch(request, target, {"recordsToSave", "recordsToDelete"});
    bool atomic = request.BooleanOr("atomic", false);
    SavePolicy policy = PolicyOf(request);

    std::unique_ptr<WriteSession> session = BeginRecordWrite(context, request, target, count);
    SaveContext save = MakeSaveContext(context, *session, request, target, policy);
    DeleteContext deletion{"", save.databaseId, policy, save.stamp};
    std::vector<RecordOutcome> deleted = DeleteRecordsIn(*session, deletion, request.Array("recordsToDelete"));
    std::vector<RecordOutcome> saved = RecordSaver(*session, save).Save(request.TakeArray("recordsToSave"));
    if (atomic && (AnyRefused(deleted) || AnyRefused(saved))) {
        MarkNotApplied(deleted);
        MarkNotApplied(saved);
        session->Undo();
    } else {
        session->Commit();
    }
    session.reset();
    AskForUploads(context, request, target, save.databaseId, saved);

    Reply reply = Success();
    reply.Add("recordsToSave", ListOutcomes(saved));
    reply.Add("recordsToDelete", ListOutcomes(deleted));
    return reply;
}

} // namespace DriveService
