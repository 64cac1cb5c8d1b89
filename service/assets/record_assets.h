// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_ASSETS_RECORD_ASSETS_H
#define NUBIS_SERVICE_ASSETS_RECORD_ASSETS_H

#include <string>
#include <vector>

#include <json/json.h>

#include "catalogue/catalogue_types.h"
#include "store/store.h"

namespace DriveService {

// The assets that a record's fields hold, and what is known of their contents. The service keeps no contents: it knows
// where a content stands by what clients say, and tells contents apart by digest, size and version.

// An asset within a record's data, which must outlive it unchanged.
struct AssetSlot {
    const FieldRule *rule = nullptr; // of an Asset, or of a List of them
    Json::Value *asset = nullptr;    // an object
};

bool HoldsAssets(const FieldRule &rule);
bool HoldsAssets(const RecordTypeRule &rule);

// By field, within a list in its order.
std::vector<AssetSlot> FindAssets(const RecordTypeRule &rule, Json::Value &data);

// What tells the asset's content from another one.
std::string ContentOf(const Json::Value &asset);

std::string MakeAssetId();

// Gives every asset that has no "assetId" one of its own.
void AssignAssetIds(const RecordTypeRule &rule, Json::Value &data);

// Keeps what is known of the assets of a record that is being saved: what is new, or has another content than before,
// is pending at the next revision. A content that was uploaded for another record, as that of a copy, is there already.
void KeepAssets(WriteSession &session, int64_t databaseId, const RecordTypeRule &rule, const std::string &recordId,
    Json::Value &data);

// What is known of the assets of FindAssets, in their order. Of one that the store does not know, because its record
// was last saved by a program that kept nothing of assets, it is that it is pending at revision 0.
std::vector<StoredAsset> KnownAssets(
    ReadSession &session, int64_t databaseId, const std::string &recordId, const std::vector<AssetSlot> &slots);

// {"field", "assetId", "assetName", "status", "revision", "size", "sha256"}; the status is "pending" or "uploaded".
Json::Value AssetStatusToJson(const StoredAsset &known, const Json::Value &asset);

} // namespace DriveService

#endif // NUBIS_SERVICE_ASSETS_RECORD_ASSETS_H
