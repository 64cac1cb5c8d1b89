// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "query/query_parser.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include "records/limits.h"
#include "util/encoding.h"
#include "util/failure.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

constexpr std::string_view ORDER_BY = "orderBy=";

[[noreturn]] void Refuse(const std::string &description, const std::string &field)
{
    throw RequestError(ErrorCode::INVALID_QUERY, description, field);
}

std::vector<std::string> Split(const std::string &text, char separator)
{
    std::vector<std::string> parts;
    size_t begin = 0;
    for (size_t end = text.find(separator); end != std::string::npos; end = text.find(separator, begin)) {
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    parts.push_back(text.substr(begin));
    return parts;
}

std::string DecodePercent(const std::string &text, const std::string &field)
{
    std::string decoded;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        unsigned code = 0;
        const char *digits = text.data() + i + 1;
        size_t left = text.size() - i - 1;
        if (left < 2 || std::from_chars(digits, digits + 2, code, 16).ptr != digits + 2) {
            Refuse("the value for \"" + field +
                       "\" has a '%' that two hexadecimal digits do not follow; write %25 for '%'",
                field);
        }
        decoded += static_cast<char>(code);
        i += 2;
    }
    if (!IsUtf8(decoded)) {
        Refuse("the value for \"" + field + "\" is not valid UTF-8", field);
    }
    return decoded;
}

template <typename Number>
std::optional<IndexedValue> ToNumber(const std::string &text)
{
    Number number{};
    const char *end = text.data() + text.size();
    auto [stop, failure] = std::from_chars(text.data(), end, number);
    if (failure != std::errc() || stop != end || !std::isfinite(static_cast<double>(number))) {
        return std::nullopt;
    }
    return number;
}

std::optional<IndexedValue> ToValue(const std::string &text, FieldType type)
{
    switch (type) {
        case FieldType::INTEGER:
            return ToNumber<int64_t>(text);
        case FieldType::DOUBLE:
            return ToNumber<double>(text);
        case FieldType::BOOLEAN:
            if (text != "true" && text != "false") {
                return std::nullopt;
            }
            return static_cast<int64_t>(text == "true" ? 1 : 0);
        default:
            return text;
    }
}

const FieldRule &NeedField(const std::string &name, const RecordTypeRule &rule)
{
    const FieldRule *field = rule.FindField(name);
    if (field == nullptr) {
        throw RequestError(ErrorCode::UNKNOWN_FIELD,
            "record type \"" + rule.recordType + "\" has no field \"" + Excerpt(name) + "\" to query", Excerpt(name));
    }
    return *field;
}

// The operator at the beginning of a text; longer ones are tried first.
struct Operator {
    std::string_view text;
    CompareOp op;
};
constexpr Operator OPERATORS[] = {
    {"!=", CompareOp::NOT_EQUAL},
    {"<=", CompareOp::LESS_OR_EQUAL},
    {">=", CompareOp::GREATER_OR_EQUAL},
    {"=", CompareOp::EQUAL},
    {"<", CompareOp::LESS},
    {">", CompareOp::GREATER},
    {"~", CompareOp::CONTAINS_TEXT},
};

bool IsOrdering(CompareOp op)
{
    return op == CompareOp::LESS || op == CompareOp::LESS_OR_EQUAL || op == CompareOp::GREATER ||
           op == CompareOp::GREATER_OR_EQUAL;
}

// The operator as it applies to the field, and the type by which the value is read.
std::pair<CompareOp, FieldType> Judge(const FieldRule &field, const Operator &found)
{
    if (!field.queryable) {
        Refuse("field \"" + field.name + "\" is not queryable", field.name);
    }
    bool list = field.type == FieldType::LIST;
    FieldType type = list ? field.listType : field.type;
    std::string described = std::string(WordOf(field.type)) + (list ? std::string(" of ") + WordOf(type) : "");
    if (!ValueKindOf(type)) {
        Refuse("field \"" + field.name + "\" has the type " + described + ", which cannot be queried", field.name);
    }
    bool contains = found.op == CompareOp::CONTAINS_TEXT;
    bool equality = found.op == CompareOp::EQUAL || found.op == CompareOp::NOT_EQUAL;
    bool ordered = type == FieldType::INTEGER || type == FieldType::DOUBLE || type == FieldType::STRING;
    bool fits =
        list ? contains : equality || (contains && type == FieldType::STRING) || (IsOrdering(found.op) && ordered);
    if (!fits) {
        Refuse("operator \"" + std::string(found.text) + "\" does not apply to field \"" + field.name +
                   "\", whose type is " + described,
            field.name);
    }
    return {list ? CompareOp::CONTAINS_ELEMENT : found.op, type};
}

Condition ParseCondition(const std::string &part, const RecordTypeRule &rule)
{
    size_t nameEnd = part.find_first_of("=!<>~");
    if (nameEnd == std::string::npos || nameEnd == 0) {
        Refuse("expected FIELD OPERATOR VALUE, found \"" + Excerpt(part) + "\"", Excerpt(part));
    }
    std::string name = part.substr(0, nameEnd);
    std::string rest = part.substr(nameEnd);
    const Operator *found = std::find_if(std::begin(OPERATORS), std::end(OPERATORS),
        [&rest](const Operator &known) { return rest.compare(0, known.text.size(), known.text) == 0; });
    if (found == std::end(OPERATORS)) {
        Refuse("after \"" + name + "\" expected one of = != < <= > >= ~", name);
    }
    const FieldRule &field = NeedField(name, rule);
    auto [op, type] = Judge(field, *found);
    std::string text = DecodePercent(rest.substr(found->text.size()), name);
    std::optional<IndexedValue> value = ToValue(text, type);
    if (!value) {
        Refuse(
            "field \"" + name + "\" is compared as " + WordOf(type) + ", which \"" + Excerpt(text) + "\" is not", name);
    }
    return Condition{name, op, std::move(*value)};
}

SortKey ParseOrdering(const std::string &part, const RecordTypeRule &rule)
{
    size_t space = part.find(' ');
    std::string name = part.substr(0, space);
    std::string direction = space == std::string::npos ? "asc" : part.substr(space + 1);
    const FieldRule &field = NeedField(name, rule);
    if (direction != "asc" && direction != "desc") {
        Refuse("after \"" + name + "\" in orderBy expected \"asc\" or \"desc\", found \"" + Excerpt(direction) + "\"",
            name);
    }
    std::optional<ValueKind> kind = ValueKindOf(field.type);
    if (!field.sortable || !kind) {
        Refuse("field \"" + name + "\" is not sortable", name);
    }
    return SortKey{name, *kind, direction == "desc"};
}

void ParseOrder(const std::string &text, const RecordTypeRule &rule, ParsedQuery &query)
{
    if (!query.order.empty()) {
        Refuse("orderBy is there twice", "orderBy");
    }
    for (const std::string &part : Split(text, ',')) {
        SortKey key = ParseOrdering(part, rule);
        bool twice = std::any_of(
            query.order.begin(), query.order.end(), [&key](const SortKey &other) { return other.field == key.field; });
        if (twice) {
            Refuse("orderBy names \"" + key.field + "\" twice", key.field);
        }
        query.order.push_back(std::move(key));
    }
    if (query.order.size() > MAX_ORDERINGS) {
        Refuse("orderBy names more than " + std::to_string(MAX_ORDERINGS) + " fields", "orderBy");
    }
}

} // namespace

ParsedQuery ParseQuery(const std::string &text, const RecordTypeRule &rule)
{
    ParsedQuery query;
    if (text.empty()) {
        return query;
    }
    if (text.size() > MAX_QUERY_BYTES) {
        Refuse("the query has more than " + std::to_string(MAX_QUERY_BYTES) + " bytes", "queryParam");
    }
    for (const std::string &part : Split(text, '&')) {
        if (part.compare(0, ORDER_BY.size(), ORDER_BY) == 0) {
            ParseOrder(part.substr(ORDER_BY.size()), rule, query);
            continue;
        }
        query.conditions.push_back(ParseCondition(part, rule));
        if (query.conditions.size() > MAX_CONDITIONS) {
            Refuse("the query has more than " + std::to_string(MAX_CONDITIONS) + " conditions", "queryParam");
        }
    }
    return query;
}

std::optional<ValueKind> ValueKindOf(FieldType type)
{
    switch (type) {
        case FieldType::INTEGER:
        case FieldType::BOOLEAN:
            return ValueKind::INTEGER;
        case FieldType::DOUBLE:
            return ValueKind::REAL;
        case FieldType::STRING:
        case FieldType::REFERENCE:
            return ValueKind::TEXT;
        default:
            return std::nullopt;
    }
}

IndexedField DupCheckKeyOf(const RecordTypeRule &rule)
{
    // No field can be called so.
    IndexedField key{"=duplicateCheck", ValueKind::TEXT, false, {}};
    for (const std::string &name : rule.dupCheckFields) {
        const FieldRule &field = rule.fields.at(name);
        key.parts.push_back({name, ValueKindOf(field.type).value_or(ValueKind::TEXT), false, {}});
    }
    return key;
}

std::vector<IndexedField> IndexedFieldsOf(const RecordTypeRule &rule)
{
    std::vector<IndexedField> indexed;
    for (const auto &[name, field] : rule.fields) {
        bool list = field.type == FieldType::LIST;
        std::optional<ValueKind> kind = ValueKindOf(list ? field.listType : field.type);
        if (kind && (field.queryable || field.sortable)) {
            indexed.push_back({name, *kind, list, {}});
        }
    }
    if (!rule.dupCheckFields.empty()) {
        indexed.push_back(DupCheckKeyOf(rule));
    }
    return indexed;
}

} // namespace DriveService
