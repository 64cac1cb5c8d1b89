// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_STORE_SQLITE_WRITE_H
#define NUBIS_SERVICE_STORE_SQLITE_WRITE_H

#include <map>
#include <set>
#include <string>

#include "store/commit_group.h"
#include "store/sqlite_read.h"

namespace DriveService {

// A session in its turn at the writing connection.
class SqliteWrite : public WriteSession {
public:
    explicit SqliteWrite(GroupWriter &writer);
    ~SqliteWrite() override = default;

    void StandAlone() override;
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
    void Undo() override;

private:
    int64_t NextSequence(int64_t databaseId);
    void AddChangeNotices();
    void DropNoticesOfNobody();
    void ReplaceValues(int64_t databaseId, const StoredRecord &record, const std::vector<IndexRow> &values);
    void Reindex(int64_t databaseId, const std::string &recordType, const std::vector<IndexedField> &fields);

    WriteTurn turn_;
    SqliteConnection &connection_;
    SqliteRead view_;
    std::map<int64_t, int64_t> lastSequences_;              // by database; written down at the commit
    std::map<int64_t, std::set<std::string>> changedTypes_; // by database
    std::string prepareTraceId_;
    bool hasNotices_ = false;
    int64_t restoreBase_ = 0; // added to a backup's number of a database it is the number here
    bool hasDroppedSubscriptions_ = false;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_STORE_SQLITE_WRITE_H
