// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include <map>
#include <utility>

#include "assets/record_assets.h"
#include "records/find_live.h"
#include "records/limits.h"
#include "records/record_json.h"
#include "requests/fetch_fields.h"
#include "requests/write_support.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

std::string PositionOf(const char *array, Json::ArrayIndex index)
{
    return std::string(array) + "[" + std::to_string(index) + "]";
}

// {"recordId", "recordType", "version", "assets"}; `fields` are the wanted ones, none: all.
Json::Value AssetsReply(ReadSession &session, int64_t databaseId, const RecordTypeRule &rule,
    const StoredRecord &record, const std::set<std::string> &fields)
{
    Json::Value data = DataOf(record);
    std::vector<AssetSlot> slots = FindAssets(rule, data);
    std::vector<StoredAsset> known = KnownAssets(session, databaseId, record.recordId, slots);
    Json::Value reply = Success();
    reply["recordId"] = record.recordId;
    reply["recordType"] = record.recordType;
    reply["version"] = Json::Int64(record.version);
    Json::Value &list = reply["assets"] = Json::Value(Json::arrayValue);
    for (size_t i = 0; i < slots.size(); ++i) {
        if (fields.empty() || fields.count(known[i].field) > 0) {
            list.append(AssetStatusToJson(known[i], *slots[i].asset));
        }
    }
    return reply;
}

// One record of a request that adds assets to it.
class AssetCreation {
public:
    AssetCreation(WriteSession &session, const Target &target, const SaveContext &context)
        : session_(session), target_(target), context_(context)
    {}

    // What became of the record; fills `created` with the assets' states when it was saved.
    RecordOutcome Create(const Json::Value &item, Json::Value &created)
    {
        RecordOutcome outcome;
        outcome.recordId = outcome.localRecordId = TextMember(item, "recordId");
        outcome.recordType = TextMember(item, "recordType");
        Json::Value change(Json::objectValue);
        outcome.failure = MakeChange(item, change, created);
        if (outcome.failure) {
            return outcome;
        }
        Json::Value records(Json::arrayValue);
        records.append(std::move(change));
        return RecordSaver(session_, context_).Save(std::move(records))[0];
    }

private:
    std::optional<Failure> MakeChange(const Json::Value &item, Json::Value &change, Json::Value &created)
    {
        std::string recordId = TextMember(item, "recordId");
        if (recordId.empty() || !item["assets"].isArray()) {
            return Failure(ErrorCode::INVALID_RECORD,
                "a record to add assets to is an object with the texts \"recordId\" and \"recordType\" and the array "
                "\"assets\", came " +
                    DescribeJson(item),
                "records");
        }
        const RecordTypeRule *rule = target_.container->FindType(TextMember(item, "recordType"));
        if (rule == nullptr) {
            return UnknownRecordType(target_, TextMember(item, "recordType"));
        }
        StoredRecord record;
        std::optional<Failure> failure =
            FindLive(session_.View(), context_.databaseId, rule->recordType, recordId, record);
        if (failure) {
            return failure;
        }
        change["recordId"] = recordId;
        change["recordType"] = rule->recordType;
        change["baseVersion"] = item["baseVersion"];
        const Json::Value data = DataOf(record);
        const Json::Value &assets = item["assets"];
        for (Json::ArrayIndex i = 0; i < assets.size() && !failure; ++i) {
            failure = AddAsset(*rule, data, assets[i], PositionOf("assets", i), change, created);
        }
        return failure;
    }

    std::optional<Failure> AddAsset(const RecordTypeRule &rule, const Json::Value &data, const Json::Value &item,
        const std::string &position, Json::Value &change, Json::Value &created)
    {
        std::string name = TextMember(item, "field");
        if (name.empty() || !item["asset"].isObject()) {
            return Failure(ErrorCode::INVALID_RECORD,
                position + ": expected an object with the text \"field\" and the object \"asset\", came " +
                    DescribeJson(item),
                position);
        }
        const FieldRule *field = rule.FindField(name);
        if (field == nullptr || !HoldsAssets(*field)) {
            return Failure(ErrorCode::INVALID_FIELD,
                "record type \"" + rule.recordType + "\" has no field \"" + Excerpt(name) + "\" that holds assets",
                position);
        }
        if (!TextMember(item["asset"], "assetId").empty()) {
            return Failure(
                ErrorCode::INVALID_FIELD, position + ": a new asset has no assetId; the service makes it", position);
        }
        Json::Value asset = item["asset"];
        StoredAsset state{name, MakeAssetId(), false, 1, ""};
        asset["assetId"] = state.assetId;
        created.append(AssetStatusToJson(state, asset));
        if (field->type == FieldType::LIST) {
            Json::Value &list = change[name];
            if (list.isNull()) {
                // The data may have been written when the field had another type.
                list = data[name].isArray() ? data[name] : Json::Value(Json::arrayValue);
            }
            list.append(std::move(asset));
        } else if (change.isMember(name)) {
            return Failure(
                ErrorCode::INVALID_RECORD, position + ": field \"" + name + "\" holds one asset only", position);
        } else {
            change[name] = std::move(asset);
        }
        return std::nullopt;
    }

    WriteSession &session_;
    const Target &target_;
    const SaveContext &context_;
};

using AssetName = std::pair<std::string, std::string>; // field and id

// The assets of a record and where its data holds them.
struct RecordAssets {
    RecordAssets(ReadSession &session, int64_t databaseId, const std::string &recordId, const RecordTypeRule &rule,
        Json::Value &data)
        : slots(FindAssets(rule, data)), known(KnownAssets(session, databaseId, recordId, slots))
    {
        for (size_t i = 0; i < known.size(); ++i) {
            byName.emplace(AssetName(known[i].field, known[i].assetId), i);
        }
    }

    std::vector<AssetSlot> slots;
    std::vector<StoredAsset> known;          // of each slot
    std::multimap<AssetName, size_t> byName; // the slots' numbers
};

// Where the content of an asset is confirmed: checks one element and writes what it says into the record's data.
StoredAsset ConfirmAsset(
    const Json::Value &item, const std::string &position, const RecordAssets &assets, Json::Value &change)
{
    std::string name = TextMember(item, "field");
    std::string assetId = TextMember(item, "assetId");
    std::string sha256 = TextMember(item, "sha256");
    if (name.empty() || assetId.empty() || sha256.empty() || !item["size"].isUInt64()) {
        throw RequestError(ErrorCode::INVALID_ARGUMENT,
            position +
                ": expected an object with the texts \"field\", \"assetId\" and \"sha256\" and the integer "
                "\"size\", came " +
                DescribeJson(item),
            position);
    }
    std::optional<StoredAsset> confirmed;
    auto [slot, end] = assets.byName.equal_range({name, assetId});
    for (; slot != end; ++slot) {
        confirmed = assets.known[slot->second];
        Json::Value &asset = *assets.slots[slot->second].asset;
        asset["sha256"] = sha256;
        asset["size"] = item["size"];
        if (item.isMember("version")) {
            asset["version"] = item["version"];
        }
    }
    if (!confirmed) {
        throw RequestError(ErrorCode::ASSET_NOT_FOUND,
            position + ": field \"" + Excerpt(name) + "\" has no asset \"" + Excerpt(assetId) + "\"", position);
    }
    const Json::Value &revision = item["revision"];
    if (!revision.isNull() && !(revision.isInt64() && revision.asInt64() == confirmed->revision)) {
        throw RequestError(ErrorCode::VERSION_CONFLICT,
            position + ": the asset has revision " + std::to_string(confirmed->revision) +
                ", its content is confirmed at " + DescribeJson(revision),
            position);
    }
    change[name] = Json::Value();
    return *confirmed;
}

// The confirmed assets are those that the change set; all else stays as the saver has left it.
void MarkUploaded(
    WriteSession &session, int64_t databaseId, const std::string &recordId, const std::vector<StoredAsset> &confirmed)
{
    std::map<AssetName, int64_t> revisions;
    for (const StoredAsset &before : confirmed) {
        revisions[{before.field, before.assetId}] = before.revision;
    }
    std::vector<StoredAsset> assets = session.View().Assets(databaseId, recordId);
    for (StoredAsset &asset : assets) {
        if (auto before = revisions.find({asset.field, asset.assetId}); before != revisions.end()) {
            asset.uploaded = true;
            asset.revision = before->second + 1;
        }
    }
    session.ReplaceAssets(databaseId, recordId, assets);
}

} // namespace

Json::Value FetchAssetStatusWithId(ServiceContext &context, const Request &request)
{
    WantedRecord wanted = FetchWanted(context, request);
    return AssetsReply(*wanted.session, wanted.databaseId, wanted.rule, wanted.record, wanted.fields);
}

Reply BatchCreateAsset(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    uint64_t count = CountBatch(request, target, {"records"});
    constexpr auto ANY_VERSION = static_cast<int64_t>(SavePolicy::CHANGED_FIELDS);
    SavePolicy policy =
        request.IntegerOr("savePolicy", ANY_VERSION) == ANY_VERSION ? SavePolicy::CHANGED_FIELDS : PolicyOf(request);
    if (policy == SavePolicy::OVERWRITE) {
        throw RequestError(ErrorCode::INVALID_ARGUMENT,
            "request member \"savePolicy\": expected 0 or 1, because 2 would empty the records of all else",
            "savePolicy");
    }

    std::unique_ptr<WriteSession> session = BeginRecordWrite(context, request, target, count);
    SaveContext save = MakeSaveContext(context, *session, request, target, policy);
    AssetCreation creation(*session, target, save);
    std::vector<RecordOutcome> outcomes;
    std::vector<Json::Value> created;
    for (const Json::Value &item : request.Array("records")) {
        outcomes.push_back(creation.Create(item, created.emplace_back(Json::arrayValue)));
    }
    session->Commit();
    session.reset();

    Reply reply = Success();
    reply.Add("records", ListOutcomes(outcomes, created));
    return reply;
}

Json::Value UpdateAssetRevision(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    const RecordTypeRule &rule = FindRecordType(target, request);
    std::string recordId = request.NonEmptyText("recordId");
    const Json::Value &items = request.Array("assets");
    if (items.size() > MAX_CONFIRMED_ASSETS) {
        throw RequestError(ErrorCode::BATCH_TOO_LARGE,
            "the request has " + std::to_string(items.size()) + " assets, at most " +
                std::to_string(MAX_CONFIRMED_ASSETS) + " are confirmed at once",
            "assets");
    }

    std::unique_ptr<WriteSession> session = BeginRecordWrite(context, request, target, 1);
    SaveContext save = MakeSaveContext(context, *session, request, target, SavePolicy::CHANGED_FIELDS);
    StoredRecord record;
    if (std::optional<Failure> failure =
            FindLive(session->View(), save.databaseId, rule.recordType, recordId, record)) {
        throw RequestError(std::move(*failure));
    }
    Json::Value data = DataOf(record);
    RecordAssets assets(session->View(), save.databaseId, recordId, rule, data);
    Json::Value change(Json::objectValue);
    std::vector<StoredAsset> confirmed;
    for (Json::ArrayIndex i = 0; i < items.size(); ++i) {
        confirmed.push_back(ConfirmAsset(items[i], PositionOf("assets", i), assets, change));
    }
    for (const std::string &name : change.getMemberNames()) {
        change[name] = data[name];
    }
    change["recordId"] = recordId;
    change["recordType"] = rule.recordType;
    Json::Value records(Json::arrayValue);
    records.append(std::move(change));
    RecordOutcome outcome = std::move(RecordSaver(*session, save).Save(std::move(records))[0]);
    if (outcome.failure) {
        throw RequestError(std::move(*outcome.failure));
    }
    MarkUploaded(*session, save.databaseId, recordId, confirmed);
    Json::Value reply = AssetsReply(session->View(), save.databaseId, rule, *outcome.record, {});
    session->Commit();
    return reply;
}

} // namespace DriveService
