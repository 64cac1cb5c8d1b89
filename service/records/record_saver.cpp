// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "records/record_saver.h"

#include <algorithm>

#include "assets/record_assets.h"
#include "query/query_parser.h"
#include "records/limits.h"
#include "records/record_json.h"
#include "util/json_util.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

std::string Quoted(const std::string &text)
{
    return "\"" + Excerpt(text) + "\"";
}

bool IsLive(const std::optional<StoredRecord> &record)
{
    return record && !record->deleted;
}

// Nulls take fields away.
void LayOver(Json::Value &data, Json::Value &&fields)
{
    for (auto field = fields.begin(); field != fields.end(); ++field) {
        if (field->isNull()) {
            data.removeMember(field.name());
        } else {
            data[field.name()] = std::move(*field);
        }
    }
}

void DropNulls(Json::Value &data)
{
    std::vector<std::string> names;
    for (auto field = data.begin(); field != data.end(); ++field) {
        if (field->isNull()) {
            names.push_back(field.name());
        }
    }
    for (const std::string &name : names) {
        data.removeMember(name);
    }
}

} // namespace

RecordSaver::RecordSaver(WriteSession &session, SaveContext context) : session_(session), context_(std::move(context))
{}

std::vector<RecordOutcome> RecordSaver::Save(Json::Value &&records)
{
    std::vector<RecordOutcome> outcomes(records.size());
    std::vector<Candidate> candidates(records.size());
    // An id that stands in the request more than once is saved that often, in rounds of different ids.
    std::vector<std::vector<Candidate *>> rounds;
    std::map<std::string, size_t> occurrences;
    for (Json::ArrayIndex i = 0; i < records.size(); ++i) {
        Candidate &candidate = candidates[i];
        RecordOutcome &outcome = outcomes[i];
        candidate.outcome = &outcome;
        outcome.localRecordId = TextMember(records[i], "recordId");
        outcome.failure = ReadIncomingRecord(std::move(records[i]), context_.container, candidate.incoming);
        outcome.recordType = candidate.incoming.recordType;
        if (!outcome.failure && candidate.incoming.recordId.empty()) {
            if (candidate.incoming.isNew) {
                candidate.incoming.recordId = context_.makeRecordId();
            } else {
                outcome.failure = Failure(ErrorCode::INVALID_RECORD,
                    "the record has no recordId; only a new record (isNew) may come without", "recordId");
            }
        }
        outcome.recordId = candidate.incoming.recordId;
        if (outcome.failure) {
            continue;
        }
        size_t round = occurrences[outcome.recordId]++;
        if (round == rounds.size()) {
            rounds.emplace_back();
        }
        rounds[round].push_back(&candidate);
    }
    for (std::vector<Candidate *> &round : rounds) {
        for (Candidate *candidate : round) {
            Prepare(*candidate);
        }
        Settle(round);
        for (Candidate *candidate : round) {
            Write(*candidate);
        }
    }
    return outcomes;
}

void RecordSaver::Prepare(Candidate &candidate)
{
    const RecordTypeRule &rule = *candidate.incoming.rule;
    if (indexedFields_.count(rule.recordType) == 0) {
        std::vector<IndexedField> fields = IndexedFieldsOf(rule);
        session_.EnsureIndexed(context_.databaseId, rule.recordType, fields);
        indexedFields_[rule.recordType] = std::move(fields);
    }
    std::optional<StoredRecord> existing = session_.View().FindRecord(context_.databaseId, candidate.incoming.recordId);
    std::optional<Failure> &failure = candidate.outcome->failure;
    failure = Judge(candidate, existing);
    if (failure) {
        candidate.outcome->record = existing;
        return;
    }
    candidate.creates = !IsLive(existing);
    failure = Merge(candidate, existing);
    if (!failure) {
        FillNext(candidate, existing);
    }
}

// Whether the policy lets the record be saved over what is there.
std::optional<Failure> RecordSaver::Judge(Candidate &candidate, const std::optional<StoredRecord> &existing)
{
    const IncomingRecord &incoming = candidate.incoming;
    std::string named = "record " + Quoted(incoming.recordId);
    // Of a deleted one too: who follows the changes of its type only would never learn of the deletion otherwise.
    if (existing && existing->recordType != incoming.recordType) {
        return Failure(ErrorCode::RECORD_TYPE_MISMATCH,
            named + " is of type " + Quoted(existing->recordType) + ", not " + Quoted(incoming.recordType),
            "recordType");
    }
    if (!IsLive(existing)) {
        if (incoming.isNew) {
            return std::nullopt;
        }
        if (existing) {
            return Failure(ErrorCode::RECORD_DELETED,
                named + " was deleted (version " + std::to_string(existing->version) +
                    "); set isNew to create it again",
                "recordId");
        }
        return Failure(ErrorCode::RECORD_NOT_FOUND, named + " does not exist; set isNew to create it", "recordId");
    }
    if (context_.policy != SavePolicy::IF_UNCHANGED) {
        return std::nullopt;
    }
    if (incoming.isNew) {
        return Failure(ErrorCode::RECORD_EXISTS,
            named + " exists already, with version " + std::to_string(existing->version), "recordId");
    }
    int64_t base = incoming.baseVersion.value_or(0);
    if (base != existing->version) {
        return Failure(ErrorCode::VERSION_CONFLICT,
            named + " has version " + std::to_string(existing->version) + ", the change is based on version " +
                std::to_string(base),
            "baseVersion");
    }
    return std::nullopt;
}

std::optional<Failure> RecordSaver::Merge(Candidate &candidate, const std::optional<StoredRecord> &existing)
{
    // What was sent is not looked at again.
    if (IsLive(existing) && context_.policy != SavePolicy::OVERWRITE) {
        candidate.data = DataOf(*existing);
        LayOver(candidate.data, std::move(candidate.incoming.fields));
    } else {
        candidate.data = std::move(candidate.incoming.fields);
        DropNulls(candidate.data);
    }
    std::vector<FailureDetail> problems;
    for (const auto &[name, rule] : candidate.incoming.rule->fields) {
        if ((rule.primary || !rule.nullable) && !candidate.data.isMember(name)) {
            problems.push_back({"field \"" + name + "\": expected " + WordOf(rule.type) + " because the field is " +
                                    (rule.primary ? "primary" : "not nullable") + ", came no value",
                name});
        }
        if (problems.size() >= MAX_FAILURE_DETAILS) {
            break;
        }
    }
    if (!problems.empty()) {
        return Failure(ErrorCode::INVALID_FIELD, std::move(problems));
    }
    return std::nullopt;
}

void RecordSaver::FillNext(Candidate &candidate, const std::optional<StoredRecord> &existing)
{
    const IncomingRecord &incoming = candidate.incoming;
    StoredRecord &next = candidate.next;
    if (existing) {
        next = *existing;
    }
    next.recordId = incoming.recordId;
    next.recordType = incoming.recordType;
    next.version = existing ? existing->version + 1 : 1;
    next.deleted = false;
    next.editedTime = context_.stamp.time;
    next.modified = context_.stamp;
    if (candidate.creates) {
        next.createdTime = incoming.createdTime > 0 ? incoming.createdTime : context_.stamp.time;
        next.created = context_.stamp;
        next.relations = "[]";
        next.ownerId = context_.ownerId;
        next.shared = false;
    }
    if (!incoming.ownerId.empty()) {
        next.ownerId = incoming.ownerId;
    }
    next.shared = next.shared || incoming.isShared;
    if (incoming.relations) {
        next.relations = WriteJson(*incoming.relations);
    } else if (context_.policy == SavePolicy::OVERWRITE) {
        next.relations = "[]";
    } else {
        // What is damaged is found before anything is saved, not when it is on disk and to be answered.
        RelationsOf(next);
    }
    AssignAssetIds(*incoming.rule, candidate.data);
    next.data = WriteJson(candidate.data);
    if (next.data.size() + next.relations.size() > MAX_RECORD_BYTES) {
        candidate.outcome->failure = Failure(ErrorCode::INVALID_RECORD,
            "the record has " + std::to_string(next.data.size() + next.relations.size()) + " bytes, at most " +
                std::to_string(MAX_RECORD_BYTES) + " are allowed",
            "records");
        return;
    }
    candidate.dupCheckKey = MakeIndexRows(candidate.data, {DupCheckKeyOf(*incoming.rule)});
}

// Refusing one record can leave another's reference dangling, and the other way round leave a name free; so both
// checks are repeated until nothing changes; every turn but the last refuses a record, so there is an end.
void RecordSaver::Settle(std::vector<Candidate *> &candidates)
{
    storedTypes_.clear();
    Round round;
    for (Candidate *candidate : candidates) {
        round[candidate->incoming.recordId] = candidate;
    }
    while (RefuseDangling(candidates, round) || RefuseDuplicates(candidates, round)) {
    }
}

bool RecordSaver::RefuseDuplicates(const std::vector<Candidate *> &candidates, const Round &round)
{
    bool refused = false;
    std::map<std::pair<std::string, IndexedValue>, std::string> seen;
    for (Candidate *candidate : candidates) {
        if (candidate->outcome->failure || candidate->dupCheckKey.empty()) {
            continue;
        }
        const std::string &id = candidate->incoming.recordId;
        auto [same, fresh] =
            seen.emplace(std::make_pair(candidate->incoming.recordType, candidate->dupCheckKey[0].value), id);
        std::string other = fresh ? StoredDuplicateOf(*candidate, round) : same->second;
        if (!candidate->creates || other.empty()) {
            continue;
        }
        std::string names;
        for (const std::string &name : candidate->incoming.rule->dupCheckFields) {
            names += (names.empty() ? "" : ",") + name;
        }
        candidate->outcome->failure = Failure(ErrorCode::DUPLICATE_RECORD,
            "record " + Quoted(other) + " has the same values in the duplicate-check fields " + names, names);
        candidate->outcome->record = session_.View().FindRecord(context_.databaseId, other);
        if (fresh) {
            seen.erase(same);
        }
        refused = true;
    }
    return refused;
}

// A stored record with the candidate's key, unless the request is giving that record another one.
std::string RecordSaver::StoredDuplicateOf(const Candidate &candidate, const Round &round)
{
    std::string other = session_.View().FindByValues(
        context_.databaseId, candidate.incoming.recordType, candidate.dupCheckKey, candidate.incoming.recordId);
    auto changing = round.find(other);
    if (changing == round.end() || changing->second->outcome->failure) {
        return other;
    }
    const std::vector<IndexRow> &key = changing->second->dupCheckKey;
    return !key.empty() && key[0].value == candidate.dupCheckKey[0].value ? other : "";
}

bool RecordSaver::IsThere(const RecordReference &reference, const Round &round)
{
    auto sent = round.find(reference.recordId);
    if (sent != round.end() && !sent->second->outcome->failure) {
        return sent->second->incoming.recordType == reference.recordType;
    }
    auto [known, fresh] = storedTypes_.emplace(reference.recordId, "");
    if (fresh) {
        std::optional<StoredRecord> record = session_.View().FindRecord(context_.databaseId, reference.recordId);
        known->second = IsLive(record) ? record->recordType : "";
    }
    return known->second == reference.recordType;
}

// Why one of the candidate's references points to nothing.
std::optional<Failure> RecordSaver::FindDangling(const Candidate &candidate, const Round &round)
{
    auto find = [&](const std::vector<RecordReference> &references, ErrorCode code) -> std::optional<Failure> {
        for (const RecordReference &reference : references) {
            if (!IsThere(reference, round)) {
                return Failure(code,
                    "\"" + reference.position + "\" points to record " + Quoted(reference.recordId) + " of type " +
                        Quoted(reference.recordType) + ", which does not exist",
                    reference.position);
            }
        }
        return std::nullopt;
    };
    std::optional<Failure> failure = find(candidate.incoming.fieldReferences, ErrorCode::UNKNOWN_REFERENCE);
    return failure ? failure : find(candidate.incoming.relationReferences, ErrorCode::UNKNOWN_RELATION);
}

// Whoever points to a refused record is looked at again, so that long chains cost no more than their length.
bool RecordSaver::RefuseDangling(const std::vector<Candidate *> &candidates, const Round &round)
{
    std::map<std::string, std::vector<Candidate *>> pointing;
    for (Candidate *candidate : candidates) {
        for (const auto *references : {&candidate->incoming.fieldReferences, &candidate->incoming.relationReferences}) {
            for (const RecordReference &reference : *references) {
                pointing[reference.recordId].push_back(candidate);
            }
        }
    }
    bool refused = false;
    std::vector<Candidate *> open = candidates;
    for (size_t i = 0; i < open.size(); ++i) {
        if (open[i]->outcome->failure) {
            continue;
        }
        open[i]->outcome->failure = FindDangling(*open[i], round);
        if (open[i]->outcome->failure) {
            refused = true;
            const std::vector<Candidate *> &again = pointing[open[i]->incoming.recordId];
            open.insert(open.end(), again.begin(), again.end());
        }
    }
    return refused;
}

void RecordSaver::Write(Candidate &candidate)
{
    if (candidate.outcome->failure) {
        return;
    }
    session_.Put(context_.databaseId, candidate.next,
        MakeIndexRows(candidate.data, indexedFields_[candidate.incoming.recordType]));
    KeepAssets(session_, context_.databaseId, *candidate.incoming.rule, candidate.incoming.recordId, candidate.data);
    candidate.outcome->record = std::move(candidate.next);
}

} // namespace DriveService
