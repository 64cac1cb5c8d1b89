// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "assets/upload_request.h"

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "account/service_setting.h"
#include "account/settings.h"
#include "assets/record_assets.h"
#include "records/limits.h"
#include "records/record_json.h"
#include "requests/client_callback.h"
#include "util/json_util.h"
#include "util/json_writer.h"
#include "util/log.h"

namespace DriveService {

namespace {

bool IsSwitchedOn(ServiceContext &context)
{
    return ReadSetting(*context.store.BeginRead(), *FindSettingRule(SETTING_UPLOAD_CALLBACK)).value != 0;
}

// The record with its pending assets; null when it has none.
Json::Value PendingOf(ReadSession &session, int64_t databaseId, const RecordTypeRule &rule, const StoredRecord &record)
{
    Json::Value data = DataOf(record);
    std::vector<AssetSlot> slots = FindAssets(rule, data);
    std::vector<StoredAsset> known = KnownAssets(session, databaseId, record.recordId, slots);
    Json::Value assets(Json::arrayValue);
    for (size_t i = 0; i < slots.size(); ++i) {
        const Json::Value &asset = *slots[i].asset;
        // Another content means that someone has saved the record meanwhile, who is asked himself.
        if (known[i].uploaded || known[i].content != ContentOf(asset)) {
            continue;
        }
        Json::Value item = AssetStatusToJson(known[i], asset);
        item["uri"] = TextMember(asset, "uri");
        item["subPath"] = TextMember(asset, "subPath");
        assets.append(std::move(item));
    }
    if (assets.empty()) {
        return Json::Value();
    }
    Json::Value json(Json::objectValue);
    json["recordId"] = record.recordId;
    json["recordType"] = record.recordType;
    json["version"] = Json::Int64(record.version);
    json["assets"] = std::move(assets);
    return json;
}

Json::Value PendingRecords(
    ServiceContext &context, const Target &target, int64_t databaseId, const std::vector<RecordOutcome> &outcomes)
{
    // A record that stands in the request more than once is what its last saving has made of it.
    std::map<std::string, const StoredRecord *> saved;
    for (const RecordOutcome &outcome : outcomes) {
        const RecordTypeRule *rule = target.container->FindType(outcome.recordType);
        if (!outcome.failure && outcome.record && rule != nullptr && HoldsAssets(*rule)) {
            saved[outcome.recordId] = &*outcome.record;
        }
    }
    Json::Value records(Json::arrayValue);
    if (saved.empty()) {
        return records;
    }
    std::unique_ptr<ReadSession> session = context.store.BeginRead();
    size_t bytes = 0;
    for (const auto &[recordId, record] : saved) {
        Json::Value json = PendingOf(*session, databaseId, *target.container->FindType(record->recordType), *record);
        bytes += json.isNull() ? 0 : WriteJson(json).size();
        if (bytes > MAX_ECHOED_BYTES) {
            break;
        }
        if (!json.isNull()) {
            records.append(std::move(json));
        }
    }
    return records;
}

using AssetName = std::pair<std::string, std::string>; // field and id

// The revisions that were asked for of those assets of a record whose very content the client says is uploaded.
std::map<AssetName, int64_t> ConfirmedRevisions(const Json::Value &asked, const Json::Value &answer)
{
    if (!answer.isArray()) {
        return {};
    }
    std::set<std::tuple<std::string, std::string, std::string, uint64_t>> uploaded;
    for (const Json::Value &item : answer) {
        std::string sha256 = TextMember(item, "sha256");
        if (!sha256.empty() && item["size"].isUInt64()) {
            uploaded.emplace(
                TextMember(item, "field"), TextMember(item, "assetId"), std::move(sha256), item["size"].asUInt64());
        }
    }
    std::map<AssetName, int64_t> revisions;
    for (const Json::Value &item : asked) {
        AssetName name(item["field"].asString(), item["assetId"].asString());
        if (uploaded.count({name.first, name.second, item["sha256"].asString(), item["size"].asUInt64()}) > 0) {
            revisions[std::move(name)] = item["revision"].asInt64();
        }
    }
    return revisions;
}

void Confirm(WriteSession &session, int64_t databaseId, const Json::Value &asked, const Json::Value &answer)
{
    std::map<AssetName, int64_t> revisions = ConfirmedRevisions(asked["assets"], answer["assets"]);
    if (revisions.empty()) {
        return;
    }
    std::string recordId = asked["recordId"].asString();
    std::vector<StoredAsset> assets = session.View().Assets(databaseId, recordId);
    bool changed = false;
    for (StoredAsset &asset : assets) {
        auto confirmed = revisions.find({asset.field, asset.assetId});
        // Another revision is another content, which is not the one that was asked for.
        if (confirmed != revisions.end() && confirmed->second == asset.revision) {
            changed = changed || !asset.uploaded;
            asset.uploaded = true;
        }
    }
    if (changed) {
        session.ReplaceAssets(databaseId, recordId, assets);
    }
}

void ReadAnswer(ServiceContext &context, int64_t databaseId, const Json::Value &asked, const std::string &text)
{
    Json::Value answer;
    std::string error;
    // Most clients answer with nothing.
    if (!ParseForeignJson(text, answer, error) || !answer.isObject() || answer["code"] != 0 ||
        !answer["records"].isArray()) {
        return;
    }
    std::map<std::string, const Json::Value *> answered;
    for (const Json::Value &record : answer["records"]) {
        if (record.isObject()) {
            answered[TextMember(record, "recordId")] = &record;
        }
    }
    std::unique_ptr<WriteSession> session = context.store.BeginWrite();
    for (const Json::Value &record : asked) {
        if (auto found = answered.find(record["recordId"].asString()); found != answered.end()) {
            Confirm(*session, databaseId, record, *found->second);
        }
    }
    session->Commit();
}

} // namespace

void AskForUploads(ServiceContext &context, const Request &request, const Target &target, int64_t databaseId,
    const std::vector<RecordOutcome> &outcomes) noexcept
{
    const ClientCallback *callback = request.Callback();
    if (callback == nullptr) {
        return;
    }
    // What was saved is saved, whatever happens here.
    try {
        Json::Value call(Json::objectValue);
        Json::Value &records = call["records"] = PendingRecords(context, target, databaseId, outcomes);
        if (records.empty() || !IsSwitchedOn(context)) {
            return;
        }
        call["function"] = "onUploadRecordAssets";
        call["bundleName"] = target.key.bundleName;
        call["containerName"] = target.key.containerName;
        call["databaseType"] = target.key.databaseType;
        call["userId"] = AccountId(context.store);
        if (std::string taskId = request.TextOr("taskId", ""); !taskId.empty()) {
            call["taskId"] = taskId;
        }
        if (std::optional<std::string> answer = callback->Call(WriteJson(call))) {
            ReadAnswer(context, databaseId, records, *answer);
        }
    } catch (const std::exception &failure) {
        LogError(std::string("the assets of a save were not asked for: ") + failure.what());
    }
}

} // namespace DriveService
