// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "assets/record_assets.h"

#include <algorithm>
#include <map>
#include <utility>

#include "util/encoding.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

constexpr size_t ASSET_ID_BYTES = 16;

using KnownById = std::map<std::pair<std::string, std::string>, StoredAsset>; // by field and asset id

KnownById ReadKnown(ReadSession &session, int64_t databaseId, const std::string &recordId)
{
    KnownById known;
    for (StoredAsset &asset : session.Assets(databaseId, recordId)) {
        auto key = std::make_pair(asset.field, asset.assetId);
        known.emplace(std::move(key), std::move(asset));
    }
    return known;
}

uint64_t NaturalOf(const Json::Value &asset, const char *name)
{
    return asset[name].isUInt64() ? asset[name].asUInt64() : 0;
}

} // namespace

bool HoldsAssets(const FieldRule &rule)
{
    return rule.type == FieldType::ASSET || (rule.type == FieldType::LIST && rule.listType == FieldType::ASSET);
}

bool HoldsAssets(const RecordTypeRule &rule)
{
    return std::any_of(
        rule.fields.begin(), rule.fields.end(), [](const auto &field) { return HoldsAssets(field.second); });
}

std::vector<AssetSlot> FindAssets(const RecordTypeRule &rule, Json::Value &data)
{
    std::vector<AssetSlot> slots;
    if (!data.isObject()) {
        return slots;
    }
    // The data may have been written when its fields had other types.
    auto add = [&slots](const FieldRule &field, Json::Value &value) {
        if (value.isObject()) {
            slots.push_back({&field, &value});
        }
    };
    for (const auto &[name, field] : rule.fields) {
        if (!HoldsAssets(field) || !data.isMember(name)) {
            continue;
        }
        Json::Value &value = data[name];
        if (field.type == FieldType::ASSET) {
            add(field, value);
        } else if (value.isArray()) {
            for (Json::Value &element : value) {
                add(field, element);
            }
        }
    }
    return slots;
}

std::string ContentOf(const Json::Value &asset)
{
    return std::to_string(NaturalOf(asset, "size")) + "/" + std::to_string(NaturalOf(asset, "version")) + "/" +
           TextMember(asset, "sha256");
}

std::string MakeAssetId()
{
    return HexEncode(RandomBytes(ASSET_ID_BYTES));
}

void AssignAssetIds(const RecordTypeRule &rule, Json::Value &data)
{
    for (const AssetSlot &slot : FindAssets(rule, data)) {
        if (TextMember(*slot.asset, "assetId").empty()) {
            (*slot.asset)["assetId"] = MakeAssetId();
        }
    }
}

void KeepAssets(WriteSession &session, int64_t databaseId, const RecordTypeRule &rule, const std::string &recordId,
    Json::Value &data)
{
    if (!HoldsAssets(rule)) {
        return;
    }
    KnownById known = ReadKnown(session.View(), databaseId, recordId);
    KnownById kept;
    bool changed = false;
    for (const AssetSlot &slot : FindAssets(rule, data)) {
        auto key = std::make_pair(slot.rule->name, TextMember(*slot.asset, "assetId"));
        if (kept.count(key) > 0) {
            continue;
        }
        StoredAsset asset{key.first, key.second, false, 0, ""};
        if (auto before = known.find(key); before != known.end()) {
            asset = before->second;
        }
        std::string content = ContentOf(*slot.asset);
        if (asset.revision == 0 || asset.content != content) {
            asset.uploaded = !TextMember(*slot.asset, "sha256").empty() &&
                             session.View().IsUploaded(databaseId, key.second, content);
            asset.content = std::move(content);
            ++asset.revision;
            changed = true;
        }
        kept.emplace(std::move(key), std::move(asset));
    }
    if (!changed && kept.size() == known.size()) {
        return;
    }
    std::vector<StoredAsset> assets;
    for (auto &[key, asset] : kept) {
        assets.push_back(std::move(asset));
    }
    session.ReplaceAssets(databaseId, recordId, assets);
}

std::vector<StoredAsset> KnownAssets(
    ReadSession &session, int64_t databaseId, const std::string &recordId, const std::vector<AssetSlot> &slots)
{
    std::vector<StoredAsset> assets;
    if (slots.empty()) {
        return assets;
    }
    KnownById known = ReadKnown(session, databaseId, recordId);
    for (const AssetSlot &slot : slots) {
        StoredAsset asset{slot.rule->name, TextMember(*slot.asset, "assetId"), false, 0, ""};
        if (auto found = known.find({asset.field, asset.assetId}); found != known.end()) {
            asset = found->second;
        }
        assets.push_back(std::move(asset));
    }
    return assets;
}

Json::Value AssetStatusToJson(const StoredAsset &known, const Json::Value &asset)
{
    Json::Value json(Json::objectValue);
    json["field"] = known.field;
    json["assetId"] = known.assetId;
    json["assetName"] = TextMember(asset, "assetName");
    json["status"] = known.uploaded ? "uploaded" : "pending";
    json["revision"] = Json::Int64(known.revision);
    json["size"] = Json::UInt64(NaturalOf(asset, "size"));
    json["sha256"] = TextMember(asset, "sha256");
    return json;
}

} // namespace DriveService
