// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "store/sqlite_write.h"

namespace DriveService {

std::vector<StoredAsset> SqliteRead::Assets(int64_t databaseId, const std::string &recordId)
{
    return GuardStore(connection_.Path(), [&] {
        SQLite::Statement &statement = connection_.Prepare("SELECT field, asset_id, uploaded, revision, content"
                                                           " FROM asset WHERE database_id = ? AND record_id = ?"
                                                           " ORDER BY field, asset_id");
        ResetAtEnd reset(statement);
        statement.bind(1, databaseId);
        statement.bind(2, recordId);
        std::vector<StoredAsset> assets;
        while (statement.executeStep()) {
            StoredAsset asset;
            asset.field = statement.getColumn(0).getString();
            asset.assetId = statement.getColumn(1).getString();
            asset.uploaded = statement.getColumn(2).getInt64() != 0;
            asset.revision = statement.getColumn(3).getInt64();
            asset.content = statement.getColumn(4).getString();
            assets.push_back(std::move(asset));
        }
        return assets;
    });
}

bool SqliteRead::IsUploaded(int64_t databaseId, const std::string &assetId, const std::string &content)
{
    return GuardStore(connection_.Path(), [&] {
        SQLite::Statement &statement =
            connection_.Prepare("SELECT 1 FROM asset WHERE database_id = ? AND asset_id = ? AND content = ?"
                                " AND uploaded = 1 LIMIT 1");
        ResetAtEnd reset(statement);
        statement.bind(1, databaseId);
        statement.bind(2, assetId);
        statement.bind(3, content);
        return statement.executeStep();
    });
}

void SqliteWrite::ReplaceAssets(int64_t databaseId, const std::string &recordId, const std::vector<StoredAsset> &assets)
{
    GuardStore(connection_.Path(), [&] {
        SQLite::Statement &remove = connection_.Prepare("DELETE FROM asset WHERE database_id = ? AND record_id = ?");
        remove.bind(1, databaseId);
        remove.bind(2, recordId);
        remove.exec();
        for (const StoredAsset &asset : assets) {
            SQLite::Statement &insert = connection_.Prepare(
                "INSERT INTO asset (database_id, record_id, field, asset_id, uploaded, revision, content)"
                " VALUES (?, ?, ?, ?, ?, ?, ?)");
            insert.bind(1, databaseId);
            insert.bind(2, recordId);
            insert.bind(3, asset.field);
            insert.bind(4, asset.assetId);
            insert.bind(5, asset.uploaded ? 1 : 0);
            insert.bind(6, asset.revision);
            insert.bind(7, asset.content);
            insert.exec();
        }
    });
}

} // namespace DriveService
