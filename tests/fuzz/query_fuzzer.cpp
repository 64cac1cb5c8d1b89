// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "catalogue/catalogue_parser.h"
#include "fuzz_target.h"
#include "query/cursor.h"
#include "query/query_parser.h"
#include "service_fixture.h"
#include "util/failure.h"

namespace {
using namespace DriveService;

const RecordTypeRule &Person()
{
    static const auto *entry = new AppEntry(ParseCatalogueEntry(PeopleEntry()).entry);
    return *entry->defaultContainer.FindType("person");
}

std::string Escape(const std::string &text)
{
    std::string escaped;
    for (const char c : text) {
        char code[4] = {};
        std::snprintf(code, sizeof(code), "%%%02x", static_cast<unsigned char>(c));
        escaped += code;
    }
    return escaped;
}

std::string WriteValue(const Condition &condition)
{
    const FieldRule &field = *Person().FindField(condition.field);
    if (const auto *text = std::get_if<std::string>(&condition.value)) {
        return *text;
    }
    if (field.type == FieldType::BOOLEAN) {
        return std::get<int64_t>(condition.value) != 0 ? "true" : "false";
    }
    char number[64] = {};
    if (const auto *real = std::get_if<double>(&condition.value)) {
        std::snprintf(number, sizeof(number), "%.17g", *real);
        return number;
    }
    return std::to_string(std::get<int64_t>(condition.value));
}

std::string Write(const ParsedQuery &query)
{
    static constexpr const char *OPERATORS[] = {"=", "!=", "<", "<=", ">", ">=", "~", "~"};
    std::string text;
    for (const Condition &condition : query.conditions) {
        text += (text.empty() ? "" : "&") + condition.field + OPERATORS[static_cast<size_t>(condition.op)] +
                Escape(WriteValue(condition));
    }
    std::string order;
    for (const SortKey &key : query.order) {
        order += (order.empty() ? "orderBy=" : ",") + key.field + (key.descending ? " desc" : "");
    }
    return text + (text.empty() || order.empty() ? "" : "&") + order;
}

// What is read is the same when it is written and read again.
void CheckQuery(const std::string &text)
{
    ParsedQuery query;
    try {
        query = ParseQuery(text, Person());
    } catch (const RequestError &refusal) {
        const ErrorCode code = refusal.GetFailure().code;
        FUZZ_CHECK(code == ErrorCode::INVALID_QUERY || code == ErrorCode::UNKNOWN_FIELD);
        return;
    }
    const std::string written = Write(query);
    FUZZ_CHECK(Write(ParseQuery(written, Person())) == written);
}

// Nobody makes up a cursor.
void CheckCursors(const std::string &text)
{
    const DatabaseInfo database{1, "uid", 9};
    try {
        FUZZ_CHECK(WriteChangeCursor(database, ReadChangeCursor(text, database)) == text);
    } catch (const RequestError &refusal) {
        FUZZ_CHECK(refusal.GetFailure().code == ErrorCode::INVALID_CURSOR);
    }
    const std::vector<SortKey> order = {{"name", ValueKind::TEXT, false}, {"age", ValueKind::INTEGER, true}};
    try {
        FUZZ_CHECK(WriteQueryCursor(database, "q", ReadQueryCursor(text, database, "q", order)) == text);
    } catch (const RequestError &refusal) {
        FUZZ_CHECK(refusal.GetFailure().code == ErrorCode::INVALID_CURSOR);
    }
}
} // namespace

void Fuzz::TestOne(const std::string &input)
{
    CheckQuery(input);
    CheckCursors(input);
}
