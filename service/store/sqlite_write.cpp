// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "store/sqlite_write.h"

#include "util/encoding.h"
#include "util/json_util.h"
#include "util/log.h"

namespace DriveService {

namespace {

constexpr size_t DATABASE_UID_BYTES = 8;

// Records are read in blocks when a type is indexed anew, so that memory stays bounded however many there are.
constexpr int64_t REINDEX_RECORDS = 1000;
constexpr int64_t REINDEX_BYTES = int64_t{16} * 1024 * 1024;

void BindRecord(SQLite::Statement &statement, int64_t databaseId, const StoredRecord &record)
{
    int index = 0;
    auto text = [&statement, &index](const std::string &value) { statement.bind(++index, value); };
    auto number = [&statement, &index](int64_t value) { statement.bind(++index, value); };
    number(databaseId);
    text(record.recordId);
    text(record.recordType);
    number(record.version);
    number(record.sequence);
    number(record.deleted ? 1 : 0);
    number(record.createdTime);
    number(record.editedTime);
    for (const ChangeStamp *stamp : {&record.created, &record.modified}) {
        number(stamp->time);
        text(stamp->deviceName);
        text(stamp->appId);
    }
    text(record.ownerId);
    number(record.shared ? 1 : 0);
    text(record.relations);
    text(record.data);
}

constexpr const char *PUT_RECORD =
    "INSERT INTO record (database_id, record_id, record_type, version, sequence, deleted, created_time, edited_time,"
    " create_time, create_device, create_app, modify_time, modify_device, modify_app, owner_id, shared, relations, "
    "data)"
    " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"
    " ON CONFLICT (database_id, record_id) DO UPDATE SET record_type = excluded.record_type,"
    " version = excluded.version, sequence = excluded.sequence, deleted = excluded.deleted,"
    " created_time = excluded.created_time, edited_time = excluded.edited_time, create_time = excluded.create_time,"
    " create_device = excluded.create_device, create_app = excluded.create_app, modify_time = excluded.modify_time,"
    " modify_device = excluded.modify_device, modify_app = excluded.modify_app, owner_id = excluded.owner_id,"
    " shared = excluded.shared, relations = excluded.relations, data = excluded.data";

} // namespace

SqliteWrite::SqliteWrite(GroupWriter &writer) : turn_(writer), connection_(turn_.Connection()), view_(connection_)
{}

void SqliteWrite::StandAlone()
{
    GuardStore(connection_.Path(), [&] { turn_.StandAlone(); });
}

ReadSession &SqliteWrite::View()
{
    return view_;
}

DatabaseInfo SqliteWrite::EnsureDatabase(const DatabaseKey &key)
{
    std::optional<DatabaseInfo> found = view_.FindDatabase(key);
    if (found) {
        return *found;
    }
    return GuardStore(connection_.Path(), [&] {
        DatabaseInfo info;
        info.uid = HexEncode(RandomBytes(DATABASE_UID_BYTES));
        SQLite::Statement &next = connection_.Prepare("SELECT COALESCE(MAX(database_id), 0) + 1 FROM cloud_database");
        next.executeStep();
        info.id = next.getColumn(0).getInt64();
        next.reset();
        SQLite::Statement &insert = connection_.Prepare(
            "INSERT INTO cloud_database (database_id, uid, bundle_name, container_name, database_type, last_sequence)"
            " VALUES (?, ?, ?, ?, ?, 0)");
        insert.bind(1, info.id);
        insert.bind(2, info.uid);
        insert.bind(3, key.bundleName);
        insert.bind(4, key.containerName);
        insert.bind(5, key.databaseType);
        insert.exec();
        return info;
    });
}

int64_t SqliteWrite::NextSequence(int64_t databaseId)
{
    auto held = lastSequences_.find(databaseId);
    if (held == lastSequences_.end()) {
        SQLite::Statement &statement =
            connection_.Prepare("SELECT last_sequence FROM cloud_database WHERE database_id = ?");
        statement.bind(1, databaseId);
        if (!statement.executeStep()) {
            throw StoreError("the database has no container database of number " + std::to_string(databaseId));
        }
        held = lastSequences_.emplace(databaseId, statement.getColumn(0).getInt64()).first;
        statement.reset();
    }
    return ++held->second;
}

void SqliteWrite::Put(int64_t databaseId, StoredRecord &record, const std::vector<IndexRow> &values)
{
    GuardStore(connection_.Path(), [&] {
        record.sequence = NextSequence(databaseId);
        changedTypes_[databaseId].insert(record.recordType);
        SQLite::Statement &put = connection_.Prepare(PUT_RECORD);
        BindRecord(put, databaseId, record);
        put.exec();
        ReplaceValues(databaseId, record, values);
        if (record.deleted) {
            ReplaceAssets(databaseId, record.recordId, {});
        }
    });
}

void SqliteWrite::ReplaceValues(int64_t databaseId, const StoredRecord &record, const std::vector<IndexRow> &values)
{
    SQLite::Statement &remove = connection_.Prepare("DELETE FROM record_value WHERE database_id = ? AND record_id = ?");
    remove.bind(1, databaseId);
    remove.bind(2, record.recordId);
    remove.exec();
    if (record.deleted) {
        return;
    }
    for (const IndexRow &row : values) {
        SQLite::Statement &insert = connection_.Prepare(
            "INSERT INTO record_value (database_id, record_type, record_id, field, position, integer_value, real_value,"
            " text_value) VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
        insert.bind(1, databaseId);
        insert.bind(2, record.recordType);
        insert.bind(3, record.recordId);
        insert.bind(4, row.field);
        insert.bind(5, row.position);
        // The alternatives stand in the order of the columns; those not bound are NULL.
        std::visit([&](const auto &value) { insert.bind(6 + static_cast<int>(row.value.index()), value); }, row.value);
        insert.exec();
    }
}

void SqliteWrite::EnsureIndexed(
    int64_t databaseId, const std::string &recordType, const std::vector<IndexedField> &fields)
{
    if (view_.IsIndexed(databaseId, recordType, fields)) {
        return;
    }
    // It may take long.
    StandAlone();
    GuardStore(connection_.Path(), [&] {
        Reindex(databaseId, recordType, fields);
        SQLite::Statement &remember =
            connection_.Prepare("INSERT INTO indexed_type (database_id, record_type, fields) VALUES (?, ?, ?)"
                                " ON CONFLICT (database_id, record_type) DO UPDATE SET fields = excluded.fields");
        remember.bind(1, databaseId);
        remember.bind(2, recordType);
        remember.bind(3, IndexedFieldsText(fields));
        remember.exec();
    });
}

void SqliteWrite::Reindex(int64_t databaseId, const std::string &recordType, const std::vector<IndexedField> &fields)
{
    ChangesQuery query;
    query.databaseId = databaseId;
    query.recordType = recordType;
    query.bounds = {REINDEX_RECORDS, REINDEX_BYTES};
    for (bool more = true; more;) {
        ChangesPage page = view_.Changes(query);
        for (const StoredRecord &record : page.records) {
            Json::Value data;
            std::string error;
            // One that is damaged must not keep all others of its type from being saved and found.
            if (!ParseJson(record.data, data, error)) {
                LogError("record " + record.recordId + " is damaged and not indexed: " + error);
            }
            ReplaceValues(databaseId, record, MakeIndexRows(data, fields));
            query.after = record.sequence;
        }
        more = page.more;
    }
}

void SqliteWrite::SetSetting(const std::string &name, const std::string &value)
{
    GuardStore(connection_.Path(), [&] {
        SQLite::Statement &statement = connection_.Prepare("INSERT INTO setting (name, value) VALUES (?, ?)"
                                                           " ON CONFLICT (name) DO UPDATE SET value = excluded.value");
        statement.bind(1, name);
        statement.bind(2, value);
        statement.exec();
    });
}

void SqliteWrite::Commit()
{
    AddChangeNotices();
    GuardStore(connection_.Path(), [&] {
        DropNoticesOfNobody();
        for (const auto &[databaseId, sequence] : lastSequences_) {
            SQLite::Statement &statement =
                connection_.Prepare("UPDATE cloud_database SET last_sequence = ? WHERE database_id = ?");
            statement.bind(1, sequence);
            statement.bind(2, databaseId);
            statement.exec();
        }
        turn_.Commit(hasNotices_);
    });
}

void SqliteWrite::Undo()
{
    GuardStore(connection_.Path(), [&] { turn_.Undo(); });
}

} // namespace DriveService
