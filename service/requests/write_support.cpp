// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/write_support.h"

#include <optional>
#include <utility>

#include "account/container_lock.h"
#include "account/record_id_rules.h"
#include "account/settings.h"
#include "records/limits.h"
#include "records/record_json.h"

namespace DriveService {

namespace {

// Saving a few records takes less time than bringing them to disk; with more, those who share the transaction would
// wait longer than by themselves.
constexpr uint64_t MAX_SHARED_RECORDS = 16;

} // namespace

uint64_t CountBatch(const Request &request, const Target &target, std::initializer_list<const char *> names)
{
    uint64_t count = 0;
    const char *largest = "";
    Json::ArrayIndex most = 0;
    for (const char *name : names) {
        Json::ArrayIndex size = request.Array(name).size();
        count += size;
        if (size >= most) {
            most = size;
            largest = name;
        }
    }
    if (count > target.container->maxBatchNumber) {
        throw RequestError(ErrorCode::BATCH_TOO_LARGE,
            "the request has " + std::to_string(count) + " records, container \"" + target.container->name +
                "\" takes at most " + std::to_string(target.container->maxBatchNumber) + " at once",
            largest);
    }
    return count;
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

std::unique_ptr<WriteSession> BeginRecordWrite(
    ServiceContext &context, const Request &request, const Target &target, uint64_t records)
{
    std::string lockSessionId = request.TextOr("lockSessionId", "");
    std::string prepareTraceId = request.PrepareTraceId();
    std::unique_ptr<WriteSession> session = context.store.BeginWrite();
    if (records > MAX_SHARED_RECORDS) {
        session->StandAlone();
    }
    session->SetPrepareTraceId(prepareTraceId);
    ContainerLock(*session, target.key, context.nowMs()).RequireFree(lockSessionId);
    return session;
}

SaveContext MakeSaveContext(const ServiceContext &context, WriteSession &session, const Request &request,
    const Target &target, SavePolicy policy)
{
    SaveContext save{*target.app, *target.container, 0, policy, StampOf(context, request, target), "", {}};
    save.databaseId = session.EnsureDatabase(target.key).id;
    save.ownerId = AccountId(session);
    // Most records come with an id.
    save.makeRecordId = [&session, &target, rule = std::optional<EffectiveIdRule>()]() mutable {
        if (!rule) {
            rule = FindIdRule(session, target.key.bundleName, *target.container);
        }
        return MakeRecordId(*rule);
    };
    return save;
}

Json::Value OutcomesToJson(std::vector<RecordOutcome> &&outcomes)
{
    Json::Value list(Json::arrayValue);
    size_t bytes = 0;
    for (RecordOutcome &outcome : outcomes) {
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
            json = outcome.data.isNull() ? RecordToJson(*outcome.record)
                                         : RecordToJson(*outcome.record, std::move(outcome.data));
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

} // namespace DriveService
