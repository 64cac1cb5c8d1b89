// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_STORE_STORE_H
#define NUBIS_SERVICE_STORE_STORE_H

#include <functional>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>

#include <json/json.h>

#include "store/store_types.h"

namespace DriveService {

// The database could not be opened, read or written. The session it came from is of no further use.
class StoreError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A row of a backup does not fit into the store; the text says what is wrong with it.
class BackupRowError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// One consistent view of everything that was committed when it began. Used by one thread at a time; lets others read
// and write meanwhile. Every operation may throw StoreError.
class ReadSession {
public:
    virtual ~ReadSession() = default;

    virtual std::optional<DatabaseInfo> FindDatabase(const DatabaseKey &key) = 0;

    // Also finds deleted records (as tombstones).
    virtual std::optional<StoredRecord> FindRecord(int64_t databaseId, const std::string &recordId) = 0;

    // The id of a live record, other than `exceptId`, that has all of these values; empty when there is none. Fields
    // must be indexed.
    virtual std::string FindByValues(int64_t databaseId, const std::string &recordType,
        const std::vector<IndexRow> &values, const std::string &exceptId) = 0;

    // Conditions and order may name indexed fields only.
    virtual QueryPage Query(const RecordQuery &query) = 0;

    virtual ChangesPage Changes(const ChangesQuery &query) = 0;

    // Whether the values of exactly these fields are indexed for the type.
    virtual bool IsIndexed(
        int64_t databaseId, const std::string &recordType, const std::vector<IndexedField> &fields) = 0;

    // By field and id.
    virtual std::vector<StoredAsset> Assets(int64_t databaseId, const std::string &recordId) = 0;

    // Whether the asset with this content was uploaded for any record of the database.
    virtual bool IsUploaded(int64_t databaseId, const std::string &assetId, const std::string &content) = 0;

    virtual std::optional<std::string> Setting(const std::string &name) = 0;

    // How many there are whose names begin so.
    virtual int64_t CountSettings(const std::string &beginning) = 0;

    // Also finds expired ones.
    virtual std::optional<Subscription> FindSubscription(const std::string &id) = 0;

    // Those that expire after this time, by bundle, container and event name; an empty name stands for all.
    virtual std::vector<Subscription> Subscriptions(
        const std::string &bundleName, const std::string &containerName, int64_t time) = 0;

    // The oldest, in the order in which they came.
    virtual std::vector<Notice> Notices(int64_t most) = 0;

    // Each row of the table as an object, in the order of its key. Databases are numbered by their names from 1 on, and
    // other rows name them by these numbers. `visit` must not use the session.
    virtual void VisitRows(BackupTable table, const std::function<void(const Json::Value &row)> &visit) = 0;

    virtual std::vector<WrittenType> WrittenTypes() = 0;

    // Reads everything once.
    virtual StoreReport Check() = 0;
};

// The one writer. Sees what it has written itself, and what sessions before it have that wait to be brought to disk
// together with it. What was not committed when it ends is undone, without touching what those have written.
class WriteSession {
public:
    // Waits until all that it has seen is on disk, or lost.
    virtual ~WriteSession() = default;

    // For a session that takes long: nobody waits for it to be brought to disk with it. To be called before it writes.
    virtual void StandAlone() = 0;

    // The view that includes the session's own writes; lives as long as the session.
    virtual ReadSession &View() = 0;

    // Finds the database, or makes it.
    virtual DatabaseInfo EnsureDatabase(const DatabaseKey &key) = 0;

    // Makes IsIndexed true, at the cost of going through all records of the type when it was not.
    virtual void EnsureIndexed(
        int64_t databaseId, const std::string &recordType, const std::vector<IndexedField> &fields) = 0;

    // Inserts or replaces the record and its indexed values, and gives it the next number of the change sequence. What
    // is known of the assets of a record that is deleted goes with it.
    virtual void Put(int64_t databaseId, StoredRecord &record, const std::vector<IndexRow> &values) = 0;

    // What is known of the record's assets is this and nothing else.
    virtual void ReplaceAssets(
        int64_t databaseId, const std::string &recordId, const std::vector<StoredAsset> &assets) = 0;

    virtual void SetSetting(const std::string &name, const std::string &value) = 0;

    // Adds the subscription. There is one for a container and an event name: if it exists and expires after this time,
    // it gets the new expiry, and its id replaces the given one. One that has expired is dropped for the new one.
    virtual void PutSubscription(Subscription &subscription, int64_t time) = 0;

    // With the notices for it. False when there was none.
    virtual bool DropSubscription(const std::string &id) = 0;

    // Those that expire at this time or before.
    virtual void DropExpiredSubscriptions(int64_t time) = 0;

    virtual void AddNotice(const std::string &subscriptionId, const NoticeContent &content) = 0;

    // These and no others: a number may have been given anew to a later notice.
    virtual void DropNotices(const std::vector<Notice> &notices) = 0;

    // For the notices about what the session changes.
    virtual void SetPrepareTraceId(const std::string &prepareTraceId) = 0;

    // Drops all records, databases and settings, but neither subscriptions nor the settings whose names begin so. What is
    // added from then on belongs to new databases: no cursor and no number of an old one fits them.
    virtual void BeginRestore(const std::string &keptSettings) = 0;

    // A row as VisitRows gave it; a subscription only if there is no other of its id, or of its container and event name.
    // Throws BackupRowError.
    virtual void AddRow(BackupTable table, const Json::Value &row) = 0;

    // What in the rows that were added contradicts itself, as a text for people; empty when nothing does.
    virtual std::string FindContradiction() = 0;

    // Adds a notice about each database with changed records for each subscription of its container. When it returns, all
    // that the session has written and seen is on disk. Throws StoreError when any of it was lost: then the disk has
    // nothing of what the session wrote. The session is of no further use.
    virtual void Commit() = 0;

    // Undoes what the session has written. Throws StoreError when what it has seen of others was lost: then nobody may be
    // told of it. The session is of no further use.
    virtual void Undo() = 0;
};

// All data of one user. Any thread may begin sessions; BeginWrite waits for those before that have not called Commit,
// in their order, BeginRead only when very many readers are busy. A thread must not begin a write session while it has
// one. Sessions must end before the store does.
class Store {
public:
    virtual ~Store() = default;
    virtual std::unique_ptr<ReadSession> BeginRead() = 0;
    virtual std::unique_ptr<WriteSession> BeginWrite() = 0;

    // Called when notices have come to disk, once for all that came together, by one of the sessions that added them or
    // a later one, while no other writes: it must begin none. Empty: nobody is called.
    virtual void SetNoticeListener(std::function<void()> listener) = 0;
};

// The name of a database type in notices.
const char *ScopeName(int64_t databaseType);

// A JSON text of the list.
std::string ListText(const std::set<std::string> &texts);

// The indexed values of a record's data, a JSON object. Values that do not fit a field's kind are left out.
std::vector<IndexRow> MakeIndexRows(const Json::Value &data, const std::vector<IndexedField> &fields);

} // namespace DriveService

#endif // NUBIS_SERVICE_STORE_STORE_H
