// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_STORE_SQLITE_WRITE_H
#define NUBIS_SERVICE_STORE_SQLITE_WRITE_H

#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "store/sqlite_read.h"

namespace DriveService {

// Holds the writer's lock and a transaction on the writing connection for as long as it lives.
class SqliteWrite : public WriteSession {
public:
    // onNotices, which must outlive the session, is called after a commit that added notices.
    SqliteWrite(
        std::unique_lock<std::mutex> lock, SqliteConnection &connection, const std::function<void()> &onNotices);
    ~SqliteWrite() override = default;

    ReadSession &View() override;
    DatabaseInfo EnsureDatabase(const DatabaseKey &key) override;
    void EnsureIndexed(
        int64_t databaseId, const std::string &recordType, const std::vector<IndexedField> &fields) override;
    void Put(int64_t databaseId, StoredRecord &record, const std::vector<IndexRow> &values) override;
    void ReplaceAssets(
        int64_t databaseId, const std::string &recordId, const std::vector<StoredAsset> &assets) override;
    void SetSetting(const std::string &name, const std::string &value) override;
    void PutSubscription(Subscription &subscription, int64_t time) override;
    bool DropSubscription(const std::string &id) override;
    void DropExpiredSubscriptions(int64_t time) override;
    void AddNotice(const std::string &subscriptionId, const NoticeContent &content) override;
    void DropNotices(const std::vector<Notice> &notices) override;
    void SetPrepareTraceId(const std::string &prepareTraceId) override;
    void BeginRestore(const std::string &keptSettings) override;
    void AddRow(BackupTable table, const Json::Value &row) override;
    std::string FindContradiction() override;
    void Commit() override;

private:
    int64_t NextSequence(int64_t databaseId);
    void AddChangeNotices();
    void DropNoticesOfNobody();
    void ReplaceValues(int64_t databaseId, const StoredRecord &record, const std::vector<IndexRow> &values);
    void Reindex(int64_t databaseId, const std::string &recordType, const std::vector<IndexedField> &fields);

    // The lock is released after the transaction has ended.
    std::unique_lock<std::mutex> lock_;
    SqliteConnection &connection_;
    SqliteTransaction transaction_;
    SqliteRead view_;
    std::map<int64_t, int64_t> lastSequences_; // by database; written down at the commit
    const std::function<void()> &onNotices_;
    std::map<int64_t, std::set<std::string>> changedTypes_; // by database
    std::string prepareTraceId_;
    bool hasNotices_ = false;
    int64_t restoreBase_ = 0; // added to a backup's number of a database it is the number here
    bool hasDroppedSubscriptions_ = false;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_STORE_SQLITE_WRITE_H
