// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "store/sqlite_read.h"

#include "store/sql_query.h"
#include "store/sqlite_check.h"

namespace DriveService {

namespace {

SQLite::Statement &Bind(SqliteConnection &connection, const SqlText &sql)
{
    SQLite::Statement &statement = connection.Prepare(sql.text);
    int index = 0;
    for (const IndexedValue &value : sql.values) {
        ++index;
        std::visit([&statement, index](const auto &held) { statement.bind(index, held); }, value);
    }
    return statement;
}

std::optional<IndexedValue> ReadValue(const SQLite::Column &column, ValueKind kind)
{
    if (column.isNull()) {
        return std::nullopt;
    }
    switch (kind) {
        case ValueKind::INTEGER:
            return int64_t{column.getInt64()};
        case ValueKind::REAL:
            return column.getDouble();
        case ValueKind::TEXT:
            break;
    }
    return column.getString();
}

int64_t BytesOf(const StoredRecord &record)
{
    return static_cast<int64_t>(record.data.size() + record.relations.size());
}

} // namespace

const char *const RECORD_COLUMNS =
    "r.record_id, r.record_type, r.version, r.sequence, r.deleted, r.created_time, r.edited_time, r.create_time,"
    " r.create_device, r.create_app, r.modify_time, r.modify_device, r.modify_app, r.owner_id, r.shared, r.relations,"
    " r.data";

StoredRecord ReadRecord(SQLite::Statement &row)
{
    int index = 0;
    auto text = [&row, &index] { return row.getColumn(index++).getString(); };
    auto number = [&row, &index] { return int64_t{row.getColumn(index++).getInt64()}; };
    StoredRecord record;
    record.recordId = text();
    record.recordType = text();
    record.version = number();
    record.sequence = number();
    record.deleted = number() != 0;
    record.createdTime = number();
    record.editedTime = number();
    for (ChangeStamp *stamp : {&record.created, &record.modified}) {
        stamp->time = number();
        stamp->deviceName = text();
        stamp->appId = text();
    }
    record.ownerId = text();
    record.shared = number() != 0;
    record.relations = text();
    record.data = text();
    return record;
}

std::string IndexedFieldsText(const std::vector<IndexedField> &fields)
{
    // Keys are indexed by texts; the number changes with their form, so that older ones are made anew.
    constexpr const char *keyForm = ")2,";
    std::string text;
    for (const IndexedField &field : fields) {
        text += field.name + ":" + std::to_string(static_cast<int>(field.kind)) + (field.list ? "[]" : "") +
                (field.parts.empty() ? "," : "(" + IndexedFieldsText(field.parts) + keyForm);
    }
    return text;
}

std::optional<DatabaseInfo> SqliteRead::FindDatabase(const DatabaseKey &key)
{
    return GuardStore(connection_.Path(), [&]() -> std::optional<DatabaseInfo> {
        SQLite::Statement &statement =
            connection_.Prepare("SELECT database_id, uid, last_sequence FROM cloud_database"
                                " WHERE bundle_name = ? AND container_name = ? AND database_type = ?");
        ResetAtEnd reset(statement);
        statement.bind(1, key.bundleName);
        statement.bind(2, key.containerName);
        statement.bind(3, key.databaseType);
        if (!statement.executeStep()) {
            return std::nullopt;
        }
        DatabaseInfo info;
        info.id = statement.getColumn(0).getInt64();
        info.uid = statement.getColumn(1).getString();
        info.lastSequence = statement.getColumn(2).getInt64();
        return info;
    });
}

std::optional<StoredRecord> SqliteRead::FindRecord(int64_t databaseId, const std::string &recordId)
{
    static const auto *sql = new std::string(
        std::string("SELECT ") + RECORD_COLUMNS + " FROM record r WHERE r.database_id = ? AND r.record_id = ?");
    return GuardStore(connection_.Path(), [&]() -> std::optional<StoredRecord> {
        SQLite::Statement &statement = connection_.Prepare(*sql);
        ResetAtEnd reset(statement);
        statement.bind(1, databaseId);
        statement.bind(2, recordId);
        if (!statement.executeStep()) {
            return std::nullopt;
        }
        return ReadRecord(statement);
    });
}

std::string SqliteRead::FindByValues(
    int64_t databaseId, const std::string &recordType, const std::vector<IndexRow> &values, const std::string &exceptId)
{
    return GuardStore(connection_.Path(), [&] {
        SQLite::Statement &statement = Bind(connection_, MakeFindByValuesSql(databaseId, recordType, values, exceptId));
        ResetAtEnd reset(statement);
        return statement.executeStep() ? statement.getColumn(0).getString() : std::string();
    });
}

std::vector<QueryPosition> SqliteRead::FindPositions(const RecordQuery &query)
{
    SQLite::Statement &statement = Bind(connection_, MakePositionsSql(query));
    ResetAtEnd reset(statement);
    std::vector<QueryPosition> positions;
    while (statement.executeStep()) {
        QueryPosition position;
        position.recordId = statement.getColumn(0).getString();
        for (size_t i = 0; i < query.order.size(); ++i) {
            position.keys.push_back(ReadValue(statement.getColumn(static_cast<int>(i) + 1), query.order[i].kind));
        }
        positions.push_back(std::move(position));
    }
    return positions;
}

// The places are found first and the records read one by one: sorting then moves ids around, not whole records, and no
// record is read that does not fit into the page.
QueryPage SqliteRead::Query(const RecordQuery &query)
{
    return GuardStore(connection_.Path(), [&] {
        std::vector<QueryPosition> positions = FindPositions(query);
        QueryPage page;
        int64_t bytes = 0;
        for (size_t i = 0; i < positions.size(); ++i) {
            std::optional<StoredRecord> record;
            bool full = static_cast<int64_t>(i) >= query.bounds.records;
            if (!full) {
                record = FindRecord(query.databaseId, positions[i].recordId);
                bytes += record ? BytesOf(*record) : 0;
                full = i > 0 && bytes > query.bounds.bytes;
            }
            if (full) {
                page.next = std::move(positions[i - 1]);
                break;
            }
            if (record) {
                page.records.push_back(std::move(*record));
            }
        }
        return page;
    });
}

ChangesPage SqliteRead::Changes(const ChangesQuery &query)
{
    return GuardStore(connection_.Path(), [&] {
        SQLite::Statement &statement = Bind(connection_, MakeChangesSql(query, RECORD_COLUMNS));
        ResetAtEnd reset(statement);
        ChangesPage page;
        int64_t bytes = 0;
        while (statement.executeStep()) {
            StoredRecord record = ReadRecord(statement);
            bytes += BytesOf(record);
            bool full = static_cast<int64_t>(page.records.size()) >= query.bounds.records;
            if (full || (!page.records.empty() && bytes > query.bounds.bytes)) {
                page.more = true;
                break;
            }
            page.records.push_back(std::move(record));
        }
        return page;
    });
}

bool SqliteRead::IsIndexed(int64_t databaseId, const std::string &recordType, const std::vector<IndexedField> &fields)
{
    return GuardStore(connection_.Path(), [&] {
        SQLite::Statement &statement =
            connection_.Prepare("SELECT fields FROM indexed_type WHERE database_id = ? AND record_type = ?");
        ResetAtEnd reset(statement);
        statement.bind(1, databaseId);
        statement.bind(2, recordType);
        return statement.executeStep() && statement.getColumn(0).getString() == IndexedFieldsText(fields);
    });
}

int64_t SqliteRead::CountSettings(const std::string &beginning)
{
    return GuardStore(connection_.Path(), [&] {
        SQLite::Statement &count =
            connection_.Prepare("SELECT COUNT(*) FROM setting WHERE substr(name, 1, length(?)) = ?");
        ResetAtEnd reset(count);
        count.bind(1, beginning);
        count.bind(2, beginning);
        count.executeStep();
        return count.getColumn(0).getInt64();
    });
}

std::optional<std::string> SqliteRead::Setting(const std::string &name)
{
    return GuardStore(connection_.Path(), [&]() -> std::optional<std::string> {
        SQLite::Statement &statement = connection_.Prepare("SELECT value FROM setting WHERE name = ?");
        ResetAtEnd reset(statement);
        statement.bind(1, name);
        if (!statement.executeStep()) {
            return std::nullopt;
        }
        return statement.getColumn(0).getString();
    });
}

StoreReport SqliteRead::Check()
{
    return GuardStore(connection_.Path(),
        [&] { return CheckTables(connection_.Prepare(SQL_QUICK_CHECK), connection_.Prepare(SQL_SCHEMA_VERSION)); });
}

} // namespace DriveService
