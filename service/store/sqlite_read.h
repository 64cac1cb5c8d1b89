// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_STORE_SQLITE_READ_H
#define NUBIS_SERVICE_STORE_SQLITE_READ_H

#include <string>
#include <vector>

#include "store/sqlite_connection.h"
#include "store/store.h"

namespace DriveService {

// The columns of a record in the order in which ReadRecord expects them.
extern const char *const RECORD_COLUMNS;

// The record in the statement's present row, whose first columns are RECORD_COLUMNS.
StoredRecord ReadRecord(SQLite::Statement &row);

// The text under which a type's indexed fields are remembered.
std::string IndexedFieldsText(const std::vector<IndexedField> &fields);

// Reading over a connection that someone else owns and that is within a transaction.
class SqliteRead : public ReadSession {
public:
    explicit SqliteRead(SqliteConnection &connection) : connection_(connection)
    {}

    std::optional<DatabaseInfo> FindDatabase(const DatabaseKey &key) override;
    std::optional<StoredRecord> FindRecord(int64_t databaseId, const std::string &recordId) override;
    std::string FindByValues(int64_t databaseId, const std::string &recordType, const std::vector<IndexRow> &values,
        const std::string &exceptId) override;
    QueryPage Query(const RecordQuery &query) override;
    ChangesPage Changes(const ChangesQuery &query) override;
    bool IsIndexed(int64_t databaseId, const std::string &recordType, const std::vector<IndexedField> &fields) override;
    std::vector<StoredAsset> Assets(int64_t databaseId, const std::string &recordId) override;
    bool IsUploaded(int64_t databaseId, const std::string &assetId, const std::string &content) override;
    std::optional<std::string> Setting(const std::string &name) override;
    int64_t CountSettings(const std::string &beginning) override;
    std::optional<Subscription> FindSubscription(const std::string &id) override;
    std::vector<Subscription> Subscriptions(
        const std::string &bundleName, const std::string &containerName, int64_t time) override;
    std::vector<Notice> Notices(int64_t most) override;
    void VisitRows(BackupTable table, const std::function<void(const Json::Value &row)> &visit) override;
    std::vector<WrittenType> WrittenTypes() override;
    StoreReport Check() override;

private:
    std::vector<QueryPosition> FindPositions(const RecordQuery &query);

    SqliteConnection &connection_;
};

// A finished SELECT must be reset at once: one that stands on a row keeps the transaction from ending.
class ResetAtEnd {
public:
    explicit ResetAtEnd(SQLite::Statement &statement) : statement_(statement)
    {}
    ~ResetAtEnd()
    {
        statement_.tryReset();
    }
    ResetAtEnd(const ResetAtEnd &) = delete;
    ResetAtEnd &operator=(const ResetAtEnd &) = delete;

private:
    SQLite::Statement &statement_;
};

// Turns the exceptions of the database library into StoreError, which names the file.
template <typename Action>
auto GuardStore(const std::string &path, Action &&action)
{
    try {
        return action();
    } catch (const SQLite::Exception &failure) {
        throw StoreError("the database failed: " + path + ": " + failure.what());
    }
}

} // namespace DriveService

#endif // NUBIS_SERVICE_STORE_SQLITE_READ_H
