// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "records/record_deleter.h"

#include "util/json_util.h"

namespace DriveService {

namespace {

std::optional<Failure> Judge(const DeleteContext &context, const Json::Value &json, const RecordOutcome &outcome)
{
    std::string named = "record \"" + Excerpt(outcome.recordId) + "\"";
    const std::optional<StoredRecord> &record = outcome.record;
    if (!record) {
        return Failure(ErrorCode::RECORD_NOT_FOUND, named + " does not exist", "recordId");
    }
    if (record->recordType != outcome.recordType) {
        return Failure(ErrorCode::RECORD_TYPE_MISMATCH,
            named + " is of type \"" + record->recordType + "\", not \"" + Excerpt(outcome.recordType) + "\"",
            "recordType");
    }
    if (record->deleted || context.policy != SavePolicy::IF_UNCHANGED) {
        return std::nullopt;
    }
    const Json::Value &base = json["baseVersion"];
    if (!base.isNull() && !base.isUInt64()) {
        return Failure(ErrorCode::INVALID_RECORD,
            "record member \"baseVersion\": expected an integer that is not negative, came " + DescribeJson(base),
            "baseVersion");
    }
    uint64_t version = base.isNull() ? 0 : base.asUInt64();
    if (version != static_cast<uint64_t>(record->version)) {
        return Failure(ErrorCode::VERSION_CONFLICT,
            named + " has version " + std::to_string(record->version) + ", the deletion is based on version " +
                std::to_string(version),
            "baseVersion");
    }
    return std::nullopt;
}

RecordOutcome DeleteOne(WriteSession &session, const DeleteContext &context, const Json::Value &json)
{
    RecordOutcome outcome;
    outcome.recordType = context.recordType.empty() ? TextMember(json, "recordType") : context.recordType;
    outcome.recordId = TextMember(json, "recordId");
    outcome.localRecordId = outcome.recordId;
    if (outcome.recordId.empty()) {
        outcome.failure = Failure(ErrorCode::INVALID_RECORD,
            "a record to delete is an object with the text \"recordId\", came " + DescribeJson(json), "recordId");
        return outcome;
    }
    outcome.record = session.View().FindRecord(context.databaseId, outcome.recordId);
    outcome.failure = Judge(context, json, outcome);
    if (outcome.failure || outcome.record->deleted) {
        return outcome;
    }
    StoredRecord &tombstone = *outcome.record;
    tombstone.deleted = true;
    ++tombstone.version;
    tombstone.editedTime = context.stamp.time;
    tombstone.modified = context.stamp;
    tombstone.data = "{}";
    tombstone.relations = "[]";
    session.Put(context.databaseId, tombstone, {});
    return outcome;
}

} // namespace

std::vector<RecordOutcome> DeleteRecordsIn(
    WriteSession &session, const DeleteContext &context, const Json::Value &records)
{
    std::vector<RecordOutcome> outcomes;
    for (const Json::Value &json : records) {
        outcomes.push_back(DeleteOne(session, context, json));
    }
    return outcomes;
}

} // namespace DriveService
