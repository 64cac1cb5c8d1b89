// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include "account/record_id_rules.h"
#include "account/settings.h"
#include "records/limits.h"
#include "records/record_deleter.h"
#include "records/record_json.h"
#include "records/record_saver.h"

namespace DriveService {

namespace {

// The array of records of a write, within the container's bound.
const Json::Value &BatchOf(const Request &request, const Target &target)
{
    const Json::Value &records = request.Array("records");
    if (records.size() > target.container->maxBatchNumber) {
        throw RequestError(ErrorCode::BATCH_TOO_LARGE,
            "the request has " + std::to_string(records.size()) + " records, container \"" + target.container->name +
                "\" takes at most " + std::to_string(target.container->maxBatchNumber) + " at once",
            "records");
    }
    return records;
}

SavePolicy PolicyOf(const Request &request)
{
    return static_cast<SavePolicy>(request.Integer(
        "savePolicy", static_cast<int64_t>(SavePolicy::IF_UNCHANGED), static_cast<int64_t>(SavePolicy::OVERWRITE)));
}

ChangeStamp StampOf(const ServiceContext &context, const Request &request, const Target &target)
{
    return {context.nowMs(), request.DeviceName(), target.app->appId};
}

Json::Value OutcomesToJson(const std::vector<RecordOutcome> &outcomes)
{
    Json::Value list(Json::arrayValue);
    size_t bytes = 0;
    for (const RecordOutcome &outcome : outcomes) {
        bool echoes = false;
        if (outcome.record) {
            bytes += ReplyBytesOf(*outcome.record);
            echoes = bytes <= MAX_ECHOED_BYTES;
        }
        Json::Value json;
        if (outcome.failure) {
            json = RecordFailureToJson(*outcome.failure, outcome.recordId, outcome.localRecordId, outcome.recordType);
            if (outcome.record && echoes) {
                json["currentRecord"] = RecordToJson(*outcome.record);
            }
        } else {
            json = RecordToJson(*outcome.record);
            json["localRecordId"] = outcome.localRecordId;
            if (!echoes) {
                json.removeMember("record");
                json.removeMember("relations");
            }
        }
        list.append(std::move(json));
    }
    return list;
}

} // namespace

Json::Value SaveRecords(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    const Json::Value &records = BatchOf(request, target);
    SaveContext save{*target.app, *target.container, 0, PolicyOf(request), StampOf(context, request, target), "", {}};
    // Everything that begins sessions of its own comes before the write session.
    save.ownerId = AccountId(context.store);
    EffectiveIdRule idRule = FindIdRule(context.store, target.key.bundleName, *target.container);
    save.makeRecordId = [&idRule] { return MakeRecordId(idRule); };

    std::unique_ptr<WriteSession> session = context.store.BeginWrite();
    save.databaseId = session->EnsureDatabase(target.key).id;
    std::vector<RecordOutcome> outcomes = RecordSaver(*session, save).Save(records);
    session->Commit();
    session.reset();

    Json::Value reply = Success();
    reply["records"] = OutcomesToJson(outcomes);
    return reply;
}

Json::Value DeleteRecords(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    const Json::Value &records = BatchOf(request, target);
    FindRecordType(target, request);
    DeleteContext deletion{request.Text("recordType"), 0, PolicyOf(request), StampOf(context, request, target)};

    std::unique_ptr<WriteSession> session = context.store.BeginWrite();
    deletion.databaseId = session->EnsureDatabase(target.key).id;
    std::vector<RecordOutcome> outcomes = DeleteRecordsIn(*session, deletion, records);
    session->Commit();
    session.reset();

    Json::Value reply = Success();
    reply["records"] = OutcomesToJson(outcomes);
    return reply;
}

} // namespace DriveService
