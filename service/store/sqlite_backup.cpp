// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <limits>

#include <json/json.h>

#include "store/sqlite_write.h"
#include "util/encoding.h"
#include "util/json_util.h"
#include "util/json_writer.h"

// The rows of a backup: what leaves the database and comes back. Indexes are not among them, they are made anew.
namespace DriveService {

namespace {

enum class ColumnKind {
    INTEGER,
    FLAG,
    TEXT,
    OBJECT, // a JSON text of an object
    ARRAY,  // a JSON text of an array
};

struct Column {
    const char *member;
    const char *name;
    ColumnKind kind;
};

struct TableRule {
    const char *name;
    bool isOfDatabase; // its rows begin with "database", the number of theirs
    bool mayBeThere;   // a row whose key is taken is left out
    std::vector<Column> columns;
    const char *key;
};

constexpr const char *DATABASE_MEMBER = "database";
constexpr size_t DATABASE_UID_BYTES = 8;

const TableRule &RuleOf(BackupTable table)
{
    constexpr ColumnKind integer = ColumnKind::INTEGER;
    constexpr ColumnKind flag = ColumnKind::FLAG;
    constexpr ColumnKind text = ColumnKind::TEXT;
    static const auto *rules = new std::vector<TableRule>{
        {"cloud_database", true, false,
            {{"bundleName", "bundle_name", text}, {"containerName", "container_name", text},
                {"databaseType", "database_type", integer}, {"lastSequence", "last_sequence", integer}},
            "database_id"},
        {"record", true, false,
            {{"recordId", "record_id", text}, {"recordType", "record_type", text}, {"version", "version", integer},
                {"sequence", "sequence", integer}, {"deleted", "deleted", flag},
                {"createdTime", "created_time", integer}, {"editedTime", "edited_time", integer},
                {"createTime", "create_time", integer}, {"createDevice", "create_device", text},
                {"createApp", "create_app", text}, {"modifyTime", "modify_time", integer},
                {"modifyDevice", "modify_device", text}, {"modifyApp", "modify_app", text},
                {"ownerId", "owner_id", text}, {"shared", "shared", flag},
                {"relations", "relations", ColumnKind::ARRAY}, {"data", "data", ColumnKind::OBJECT}},
            "record_id"},
        {"asset", true, false,
            {{"recordId", "record_id", text}, {"field", "field", text}, {"assetId", "asset_id", text},
                {"uploaded", "uploaded", flag}, {"revision", "revision", integer}, {"content", "content", text}},
            "record_id, field, asset_id"},
        {"setting", false, false, {{"name", "name", text}, {"value", "value", text}}, "name"},
        {"subscription", false, true,
            {{"subscriptionId", "subscription_id", text}, {"bundleName", "bundle_name", text},
                {"containerName", "container_name", text}, {"eventName", "event_name", text},
                {"expirationTime", "expiration_time", integer}},
            "subscription_id"},
    };
    return rules->at(static_cast<size_t>(table));
}

std::string ColumnList(const TableRule &rule)
{
    std::string list;
    for (const Column &column : rule.columns) {
        list += (list.empty() ? "" : ", ") + std::string(column.name);
    }
    return list;
}

Json::Value ReadColumn(const SQLite::Column &value, const Column &column, const Json::Value &row)
{
    switch (column.kind) {
        case ColumnKind::INTEGER:
            return Json::Int64(value.getInt64());
        case ColumnKind::FLAG:
            return value.getInt64() != 0;
        case ColumnKind::TEXT:
            return value.getString();
        case ColumnKind::OBJECT:
        case ColumnKind::ARRAY:
            break;
    }
    Json::Value json;
    std::string error;
    if (!ParseJson(value.getString(), json, error)) {
        throw StoreError("the " + std::string(column.name) + " of record \"" + TextMember(row, "recordId") +
                         "\" is damaged in the database: " + error);
    }
    return json;
}

bool Fits(const Json::Value &value, ColumnKind kind)
{
    switch (kind) {
        case ColumnKind::INTEGER:
            return (value.type() == Json::intValue || value.type() == Json::uintValue) && value.isInt64();
        case ColumnKind::FLAG:
            return value.isBool();
        case ColumnKind::TEXT:
            return value.isString();
        case ColumnKind::OBJECT:
            return value.isObject();
        case ColumnKind::ARRAY:
            return value.isArray();
    }
    return false;
}

void BindColumn(SQLite::Statement &statement, int index, const Json::Value &value, ColumnKind kind)
{
    switch (kind) {
        case ColumnKind::INTEGER:
            statement.bind(index, int64_t{value.asInt64()});
            return;
        case ColumnKind::FLAG:
            statement.bind(index, value.asBool() ? 1 : 0);
            return;
        case ColumnKind::TEXT:
            statement.bind(index, value.asString());
            return;
        case ColumnKind::OBJECT:
        case ColumnKind::ARRAY:
            statement.bind(index, WriteJson(value));
            return;
    }
}

void CheckMembers(const TableRule &rule, const Json::Value &row)
{
    for (const Column &column : rule.columns) {
        if (!row.isMember(column.member) || !Fits(row[column.member], column.kind)) {
            throw BackupRowError(std::string("member \"") + column.member + "\" is missing or of a wrong type");
        }
    }
    if (row.size() != rule.columns.size() + (rule.isOfDatabase ? 1 : 0)) {
        throw BackupRowError("there are members that nobody knows");
    }
    const Json::Value &number = row.get(DATABASE_MEMBER, 1);
    if (!Fits(number, ColumnKind::INTEGER) || number < 1 || number > std::numeric_limits<int32_t>::max()) {
        throw BackupRowError("member \"database\" is no number of a database");
    }
}

std::string InsertText(const TableRule &rule, bool isDatabase)
{
    std::string places = isDatabase ? "?, ?" : rule.isOfDatabase ? "?" : "";
    for (size_t i = 0; i < rule.columns.size(); ++i) {
        places += places.empty() ? "?" : ", ?";
    }
    return std::string("INSERT ") + (rule.mayBeThere ? "OR IGNORE " : "") + "INTO " + rule.name + " (" +
           (isDatabase ? "uid, " : "") + (rule.isOfDatabase ? "database_id, " : "") + ColumnList(rule) + ") VALUES (" +
           places + ")";
}

} // namespace

void SqliteRead::VisitRows(BackupTable table, const std::function<void(const Json::Value &row)> &visit)
{
    const TableRule &rule = RuleOf(table);
    GuardStore(connection_.Path(), [&] {
        std::vector<int64_t> databases;
        if (rule.isOfDatabase) {
            SQLite::Statement &find = connection_.Prepare(
                "SELECT database_id FROM cloud_database ORDER BY bundle_name, container_name, database_type");
            ResetAtEnd reset(find);
            while (find.executeStep()) {
                databases.push_back(find.getColumn(0).getInt64());
            }
        } else {
            databases.push_back(0);
        }
        for (size_t i = 0; i < databases.size(); ++i) {
            SQLite::Statement &rows =
                connection_.Prepare("SELECT " + ColumnList(rule) + " FROM " + rule.name +
                                    (rule.isOfDatabase ? " WHERE database_id = ?" : "") + " ORDER BY " + rule.key);
            ResetAtEnd reset(rows);
            if (rule.isOfDatabase) {
                rows.bind(1, databases[i]);
            }
            while (rows.executeStep()) {
                Json::Value row(Json::objectValue);
                if (rule.isOfDatabase) {
                    row[DATABASE_MEMBER] = Json::UInt64(i + 1);
                }
                for (size_t column = 0; column < rule.columns.size(); ++column) {
                    row[rule.columns[column].member] =
                        ReadColumn(rows.getColumn(static_cast<int>(column)), rule.columns[column], row);
                }
                visit(row);
            }
        }
    });
}

std::vector<WrittenType> SqliteRead::WrittenTypes()
{
    return GuardStore(connection_.Path(), [&] {
        SQLite::Statement &find = connection_.Prepare(
            "SELECT DISTINCT d.bundle_name, d.container_name, d.database_type, r.record_type"
            " FROM cloud_database d JOIN record r ON r.database_id = d.database_id ORDER BY 1, 2, 3, 4");
        ResetAtEnd reset(find);
        std::vector<WrittenType> types;
        while (find.executeStep()) {
            types.push_back({{find.getColumn(0).getString(), find.getColumn(1).getString(), find.getColumn(2).getInt()},
                find.getColumn(3).getString()});
        }
        return types;
    });
}

void SqliteWrite::BeginRestore(const std::string &keptSettings)
{
    GuardStore(connection_.Path(), [&] {
        SQLite::Statement &last = connection_.Prepare("SELECT COALESCE(MAX(database_id), 0) FROM cloud_database");
        last.executeStep();
        // A request that began before still has the number of a database, which must not be that of another one now.
        restoreBase_ = last.getColumn(0).getInt64();
        last.reset();
        for (const char *table : {"record_value", "indexed_type", "asset", "record", "cloud_database"}) {
            connection_.Execute(std::string("DELETE FROM ") + table);
        }
        SQLite::Statement &drop = connection_.Prepare("DELETE FROM setting WHERE substr(name, 1, length(?)) <> ?");
        drop.bind(1, keptSettings);
        drop.bind(2, keptSettings);
        drop.exec();
    });
}

void SqliteWrite::AddRow(BackupTable table, const Json::Value &row)
{
    const TableRule &rule = RuleOf(table);
    bool isDatabase = table == BackupTable::DATABASES;
    CheckMembers(rule, row);
    try {
        SQLite::Statement &insert = connection_.Prepare(InsertText(rule, isDatabase));
        int index = 0;
        if (isDatabase) {
            // Cursors are bound to it: those of the time before the import must not fit what is here now.
            insert.bind(++index, HexEncode(RandomBytes(DATABASE_UID_BYTES)));
        }
        if (rule.isOfDatabase) {
            insert.bind(++index, restoreBase_ + int64_t{row[DATABASE_MEMBER].asInt64()});
        }
        for (const Column &column : rule.columns) {
            BindColumn(insert, ++index, row[column.member], column.kind);
        }
        insert.exec();
    } catch (const SQLite::Exception &failure) {
        constexpr int constraint = 19;
        if (failure.getErrorCode() == constraint) {
            throw BackupRowError("it has a key of a row before it");
        }
        throw StoreError("the database failed: " + connection_.Path() + ": " + failure.what());
    }
}

std::string SqliteWrite::FindContradiction()
{
    struct Rule {
        const char *find;
        const char *text;
    };
    static constexpr Rule RULES[] = {
        {"SELECT container_name FROM cloud_database WHERE database_type NOT BETWEEN 0 AND 2 "
         " OR last_sequence NOT BETWEEN 0 AND 9007199254740991",
            "container has an impossible type or sequence"},
        {"SELECT r.record_id FROM record r LEFT JOIN cloud_database d ON d.database_id = r.database_id"
         " WHERE d.database_id IS NULL OR r.version NOT BETWEEN 1 AND 9007199254740991 OR r.sequence NOT BETWEEN 1 AND "
         "d.last_sequence",
            "record has no database, or an impossible version or sequence"},
        {"SELECT a.record_id FROM asset a LEFT JOIN record r ON r.database_id = a.database_id"
         " AND r.record_id = a.record_id WHERE r.record_id IS NULL OR r.deleted <> 0",
            "record of an asset is not there"},
    };
    return GuardStore(connection_.Path(), [&]() -> std::string {
        for (const Rule &rule : RULES) {
            SQLite::Statement &find = connection_.Prepare(std::string(rule.find) + " LIMIT 1");
            ResetAtEnd reset(find);
            if (find.executeStep()) {
                return std::string("the ") + rule.text + ": \"" + Excerpt(find.getColumn(0).getString()) + "\"";
            }
        }
        return "";
    });
}

} // namespace DriveService
