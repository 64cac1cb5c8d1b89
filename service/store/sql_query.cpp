// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "store/sql_query.h"

namespace DriveService {

namespace {

const char *ColumnOf(ValueKind kind)
{
    switch (kind) {
        case ValueKind::INTEGER:
            return "integer_value";
        case ValueKind::REAL:
            return "real_value";
        case ValueKind::TEXT:
            break;
    }
    return "text_value";
}

const char *ColumnOf(const IndexedValue &value)
{
    return ColumnOf(std::holds_alternative<int64_t>(value)  ? ValueKind::INTEGER
                    : std::holds_alternative<double>(value) ? ValueKind::REAL
                                                            : ValueKind::TEXT);
}

const char *OperatorOf(CompareOp op)
{
    switch (op) {
        case CompareOp::LESS:
            return " < ?";
        case CompareOp::LESS_OR_EQUAL:
            return " <= ?";
        case CompareOp::GREATER:
            return " > ?";
        case CompareOp::GREATER_OR_EQUAL:
            return " >= ?";
        default:
            return " = ?";
    }
}

void AddCondition(SqlText &sql, int64_t databaseId, const std::string &recordType, const Condition &condition)
{
    sql.Add(condition.op == CompareOp::NOT_EQUAL ? "r.record_id NOT IN" : "r.record_id IN");
    sql.Add(" (SELECT v.record_id FROM record_value v WHERE v.database_id = ?", databaseId);
    sql.Add(" AND v.record_type = ?", recordType);
    sql.Add(" AND v.field = ?", condition.field);
    if (condition.op != CompareOp::CONTAINS_TEXT) {
        sql.Add(std::string(" AND v.") + ColumnOf(condition.value) + OperatorOf(condition.op), condition.value);
    } else if (condition.value != IndexedValue(std::string())) {
        // Every SQL database has replace(), and it alone compares cases exactly everywhere.
        sql.Add(" AND replace(v.text_value, ?, '') <> v.text_value", condition.value);
    }
    sql.Add(")");
}

std::string SortColumn(size_t index, const SortKey &key)
{
    return "s" + std::to_string(index) + "." + ColumnOf(key.kind);
}

// "The key's value stands after the given one", with absent values less than all others.
void AddAfter(SqlText &sql, const std::string &column, bool descending, const std::optional<IndexedValue> &value)
{
    if (!value) {
        sql.Add(descending ? "1 = 0" : column + " IS NOT NULL");
    } else if (descending) {
        sql.Add("(" + column + " IS NULL OR " + column + " < ?)", *value);
    } else {
        sql.Add(column + " > ?", *value);
    }
}

void AddSame(SqlText &sql, const std::string &column, const std::optional<IndexedValue> &value)
{
    if (value) {
        sql.Add(column + " = ?", *value);
    } else {
        sql.Add(column + " IS NULL");
    }
}

// Lexicographic "after": for some key the earlier ones are the same and this one is after; the id comes last.
void AddPosition(SqlText &sql, const RecordQuery &query)
{
    const QueryPosition &position = *query.after;
    sql.Add(" AND (");
    for (size_t i = 0; i <= query.order.size(); ++i) {
        sql.Add(i == 0 ? "(" : " OR (");
        for (size_t earlier = 0; earlier < i; ++earlier) {
            AddSame(sql, SortColumn(earlier, query.order[earlier]), position.keys[earlier]);
            sql.Add(" AND ");
        }
        if (i < query.order.size()) {
            AddAfter(sql, SortColumn(i, query.order[i]), query.order[i].descending, position.keys[i]);
        } else {
            sql.Add("r.record_id > ?", position.recordId);
        }
        sql.Add(")");
    }
    sql.Add(")");
}

} // namespace

SqlText MakePositionsSql(const RecordQuery &query)
{
    SqlText sql;
    sql.Add("SELECT r.record_id");
    for (size_t i = 0; i < query.order.size(); ++i) {
        sql.Add(", " + SortColumn(i, query.order[i]));
    }
    sql.Add(" FROM record r");
    for (size_t i = 0; i < query.order.size(); ++i) {
        std::string alias = "s" + std::to_string(i);
        sql.Add(" LEFT JOIN record_value " + alias + " ON " + alias + ".database_id = r.database_id AND " + alias +
                    ".record_id = r.record_id AND " + alias + ".position = 0 AND " + alias + ".field = ?",
            query.order[i].field);
    }
    sql.Add(" WHERE r.database_id = ?", query.databaseId);
    sql.Add(" AND r.record_type = ? AND r.deleted = 0", query.recordType);
    for (const Condition &condition : query.conditions) {
        sql.Add(" AND ");
        AddCondition(sql, query.databaseId, query.recordType, condition);
    }
    if (query.after) {
        AddPosition(sql, query);
    }
    sql.Add(" ORDER BY ");
    for (size_t i = 0; i < query.order.size(); ++i) {
        sql.Add(
            SortColumn(i, query.order[i]) + (query.order[i].descending ? " DESC NULLS LAST, " : " ASC NULLS FIRST, "));
    }
    // One more than the page, to know whether there is more.
    sql.Add("r.record_id ASC LIMIT ?", query.bounds.records + 1);
    return sql;
}

SqlText MakeChangesSql(const ChangesQuery &query, const std::string &columns)
{
    SqlText sql;
    sql.Add("SELECT " + columns + " FROM record r WHERE r.database_id = ?", query.databaseId);
    sql.Add(" AND r.sequence > ?", query.after);
    if (!query.recordType.empty()) {
        sql.Add(" AND r.record_type = ?", query.recordType);
    }
    if (!query.conditions.empty()) {
        sql.Add(" AND (r.deleted = 1 OR (");
        for (size_t i = 0; i < query.conditions.size(); ++i) {
            sql.Add(i == 0 ? "" : " AND ");
            AddCondition(sql, query.databaseId, query.recordType, query.conditions[i]);
        }
        sql.Add("))");
    }
    sql.Add(" ORDER BY r.sequence LIMIT ?", query.bounds.records + 1);
    return sql;
}

SqlText MakeFindByValuesSql(
    int64_t databaseId, const std::string &recordType, const std::vector<IndexRow> &values, const std::string &exceptId)
{
    SqlText sql;
    sql.Add("SELECT r.record_id FROM record r WHERE r.database_id = ?", databaseId);
    sql.Add(" AND r.record_type = ? AND r.deleted = 0", recordType);
    sql.Add(" AND r.record_id <> ?", exceptId);
    for (const IndexRow &row : values) {
        sql.Add(" AND ");
        AddCondition(sql, databaseId, recordType, Condition{row.field, CompareOp::EQUAL, row.value});
    }
    sql.Add(" ORDER BY r.record_id LIMIT 1");
    return sql;
}

} // namespace DriveService
