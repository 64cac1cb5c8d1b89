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
#include "util/log.h"

namespace DriveService {

namespace {

// Saving a few records takes less time than bringing them to disk; with more, those who share the transaction would
// wait longer than by themselves.
constexpr uint64_t MAX_SHARED_RECORDS = 16;

// One that cannot be read is left out: what became of the request's records is on disk and must be told.
void AddCurrentRecord(Json::Value &json, const StoredRecord &record)
{
    try {
        json["currentRecord"] = RecordToJson(record);
    } catch (const StoreError &failure) {
        LogError(failure.what());
    }
}

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

JsonList ListOutcomes(const std::vector<RecordOutcome> &outcomes, const std::vector<Json::Value> &assets)
{
    JsonList list;
    size_t bytes = 0;
    for (size_t i = 0; i < outcomes.size(); ++i) {
        const RecordOutcome &outcome = outcomes[i];
        bool echoes = false;
        if (outcome.record) {
            bytes += ReplyBytesOf(*outcome.record);
            echoes = bytes <= MAX_ECHOED_BYTES;
        }
        if (outcome.failure) {
            Json::Value json =
                RecordFailureToJson(*outcome.failure, outcome.recordId, outcome.localRecordId, outcome.recordType);
            if (outcome.record && echoes) {
                AddCurrentRecord(json, *outcome.record);
            }
            list.Append(WriteJson(json));
            continue;
        }
        Json::Value json = BookkeepingToJson(*outcome.record);
        json["localRecordId"] = outcome.localRecordId;
        if (!assets.empty()) {
            json["assets"] = assets[i];
        }
        std::vector<WrittenMember> written;
        if (echoes && !outcome.record->deleted) {
            // This request has written or read them itself: they are not damaged.
            written = {{"relations", outcome.record->relations}, {"record", outcome.record->data}};
        }
        list.Append(WriteJson(json, written));
    }
    return list;
}

} // namespace DriveService
