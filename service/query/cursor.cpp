// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "query/cursor.h"

#include <json/json.h>

#include "util/encoding.h"
#include "util/failure.h"
#include "util/json_util.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

constexpr const char *CHANGE_KIND = "c1";
constexpr const char *QUERY_KIND = "q1";
constexpr size_t CHECK_BYTES = 6;

[[noreturn]] void Refuse(const std::string &cursor, const std::string &why)
{
    throw RequestError(
        ErrorCode::INVALID_CURSOR, "the cursor \"" + Excerpt(cursor) + "\" " + why + "; begin without one", "cursor");
}

std::string CheckOf(const std::string &text)
{
    return Base64UrlEncode(Sha256(text).substr(0, CHECK_BYTES));
}

std::string Seal(const char *kind, const Json::Value &body)
{
    std::string text = std::string(kind) + "." + Base64UrlEncode(WriteJson(body));
    return text + "." + CheckOf(text);
}

// The body of an undamaged cursor of the kind and database.
Json::Value Unseal(const std::string &cursor, const char *kind, const DatabaseInfo &database)
{
    std::string prefix = std::string(kind) + ".";
    if (cursor.compare(0, prefix.size(), prefix) != 0) {
        Refuse(cursor, "is not of the kind that this request takes");
    }
    size_t dot = cursor.rfind('.');
    if (cursor.substr(dot + 1) != CheckOf(cursor.substr(0, dot))) {
        Refuse(cursor, "is damaged");
    }
    std::optional<std::string> text =
        dot < prefix.size() ? std::nullopt : Base64UrlDecode(cursor.substr(prefix.size(), dot - prefix.size()));
    Json::Value body;
    std::string error;
    if (!text || !ParseJson(*text, body, error) || !body.isArray()) {
        Refuse(cursor, "is damaged");
    }
    if (body.empty() || body[0] != Json::Value(database.uid)) {
        Refuse(cursor, "belongs to another database, or to its data before an import");
    }
    return body;
}

std::string FingerprintOf(const std::string &query)
{
    return Base64UrlEncode(Sha256(query).substr(0, CHECK_BYTES));
}

Json::Value ToJson(const std::optional<IndexedValue> &value)
{
    if (!value) {
        return Json::Value();
    }
    if (const auto *integer = std::get_if<int64_t>(&*value)) {
        return Json::Value(Json::Int64(*integer));
    }
    if (const auto *real = std::get_if<double>(&*value)) {
        return Json::Value(*real);
    }
    return Json::Value(std::get<std::string>(*value));
}

std::optional<IndexedValue> FromJson(const Json::Value &json, ValueKind kind)
{
    if (json.isNull()) {
        return std::nullopt;
    }
    switch (kind) {
        case ValueKind::INTEGER:
            return int64_t{json.asInt64()};
        case ValueKind::REAL:
            return json.asDouble();
        case ValueKind::TEXT:
            break;
    }
    return json.asString();
}

} // namespace

std::string WriteChangeCursor(const DatabaseInfo &database, int64_t sequence)
{
    Json::Value body(Json::arrayValue);
    body.append(database.uid);
    body.append(Json::Int64(sequence));
    return Seal(CHANGE_KIND, body);
}

int64_t ReadChangeCursor(const std::string &cursor, const DatabaseInfo &database)
{
    Json::Value body = Unseal(cursor, CHANGE_KIND, database);
    if (body.size() != 2 || !body[1].isInt64() || body[1].asInt64() < 0) {
        Refuse(cursor, "is damaged");
    }
    // A database that was put back from an older copy numbers other changes so.
    if (body[1].asInt64() > database.lastSequence) {
        Refuse(cursor, "is from a later state than the database has");
    }
    return body[1].asInt64();
}

std::string WriteQueryCursor(const DatabaseInfo &database, const std::string &query, const QueryPosition &position)
{
    Json::Value body(Json::arrayValue);
    body.append(database.uid);
    body.append(FingerprintOf(query));
    body.append(position.recordId);
    for (const std::optional<IndexedValue> &key : position.keys) {
        body.append(ToJson(key));
    }
    return Seal(QUERY_KIND, body);
}

QueryPosition ReadQueryCursor(const std::string &cursor, const DatabaseInfo &database, const std::string &query,
    const std::vector<SortKey> &order)
{
    Json::Value body = Unseal(cursor, QUERY_KIND, database);
    if (body.size() < 3 || body[1] != Json::Value(FingerprintOf(query))) {
        Refuse(cursor, "belongs to another query");
    }
    QueryPosition position;
    try {
        position.recordId = body[2].asString();
        for (Json::ArrayIndex i = 0; i < order.size(); ++i) {
            position.keys.push_back(FromJson(body.get(i + 3, Json::Value()), order[i].kind));
        }
    } catch (const Json::Exception &) {
        // The query's text is the same but the schema has given a sorted field another type since.
        Refuse(cursor, "belongs to another query");
    }
    return position;
}

} // namespace DriveService
