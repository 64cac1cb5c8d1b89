// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_STORE_SQLITE_WRITE_H
#define NUBIS_SERVICE_STORE_SQLITE_WRITE_H

#include <map>
#include <mutex>

#include "store/sqlite_read.h"

namespace DriveService {

// Holds the writer's lock and a transaction on the writing connection for as long as it lives.
class SqliteWrite : public WriteSession {
public:
    SqliteWrite(std::unique_lock<std::mutex> lock, SqliteConnection &connection);
    ~SqliteWrite() override = default;

    ReadSession &View() override;
    DatabaseInfo EnsureDatabase(const DatabaseKey &key) override;
    void EnsureIndexed(
        int64_t databaseId, const std::string &recordType, const std::vector<IndexedField> &fields) override;
    void Put(int64_t databaseId, StoredRecord &record, const std::vector<IndexRow> &values) override;
    void ReplaceAssets(
        int64_t databaseId, const std::string &recordId, const std::vector<StoredAsset> &assets) override;
    void SetSetting(const std::string &name, const std::string &value) override;
    void Commit() override;

private:
    int64_t NextSequence(int64_t databaseId);
    void ReplaceValues(int64_t databaseId, const StoredRecord &record, const std::vector<IndexRow> &values);
    void Reindex(int64_t databaseId, const std::string &recordType, const std::vector<IndexedField> &fields);

    // The lock is released after the transaction has ended.
    std::unique_lock<std::mutex> lock_;
    SqliteConnection &connection_;
    SqliteTransaction transaction_;
    SqliteRead view_;
    std::map<int64_t, int64_t> lastSequences_; // by database; written down at the commit
};

} // namespace DriveService

#endif // NUBIS_SERVICE_STORE_SQLITE_WRITE_H
