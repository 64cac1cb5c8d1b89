// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <sstream>

#include "command_error.h"
#include "fuzz_target.h"
#include "record_json.h"
#include "row_checker.h"
#include "row_reader.h"

namespace {
using namespace NubisTool;

std::string Quoted(const std::string &text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    }
    return quoted + "\"";
}

// A line in the order of the heading; a missing value is an empty field without quotes.
std::string CsvLine(const std::vector<std::string> &heading, const Json::Value &values)
{
    std::string line;
    for (const std::string &column : heading) {
        line += column == heading.front() ? "" : ",";
        line += values[column].isNull() ? "" : Quoted(values[column].asString());
    }
    return line + "\n";
}

std::string Write(const std::vector<Row> &rows, RowFormat format)
{
    std::string text;
    const auto heading = rows.front().values.getMemberNames();
    for (size_t i = 0; format == RowFormat::CSV && i < heading.size(); ++i) {
        text += (i == 0 ? "" : ",") + Quoted(heading[i]) + (i + 1 == heading.size() ? "\n" : "");
    }
    for (const Row &row : rows) {
        text += format == RowFormat::CSV ? CsvLine(heading, row.values) : CompactText(row.values) + "\n";
    }
    return text;
}

// Rows that are read are the same when they are written and read again.
void CheckRows(const std::vector<Row> &rows, RowFormat format)
{
    size_t line = 0;
    for (const Row &row : rows) {
        FUZZ_CHECK(row.values.isObject() && row.line >= line);
        line = row.line;
    }
    if (rows.empty()) {
        return;
    }
    std::istringstream written(Write(rows, format));
    const std::vector<Row> again = ReadRows(written, "again", format);
    FUZZ_CHECK(again.size() == rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        FUZZ_CHECK(again[i].values == rows[i].values);
    }
}

const Nubis::NBSchemaNode &Schema()
{
    static const auto *schema = [] {
        auto *node = new Nubis::NBSchemaNode;
        node->recordType = "everything";
        for (uint32_t type = Nubis::NB_FIELD_NULL; type <= Nubis::NB_FIELD_REFERENCE; ++type) {
            Nubis::NBSchemaField field;
            field.name = std::string(1, static_cast<char>('a' + type));
            field.type = static_cast<Nubis::NBRecordFieldType>(type);
            field.listType = Nubis::NB_FIELD_STRING;
            field.nullable = true;
            node->fields[field.name] = field;
        }
        return node;
    }();
    return *schema;
}

void CheckAgainstSchema(const std::vector<Row> &rows)
{
    std::vector<RowProblem> problems;
    const auto items = NubisTool::CheckRows(RowChecker(Schema(), "d", Completeness::PARTIAL), rows, problems);
    FUZZ_CHECK(items.size() == rows.size() || !problems.empty());
    for (const ImportItem &item : items) {
        // What is ready to be sent can be sent.
        CompactText(item.record.ToJsonValue());
    }
    for (const RowProblem &problem : problems) {
        FUZZ_CHECK(!ProblemText(problem).empty());
    }
}
} // namespace

void Fuzz::TestOne(const std::string &input)
{
    for (const RowFormat format : {RowFormat::GUESS, RowFormat::JSON, RowFormat::CSV}) {
        std::istringstream stream(input);
        try {
            const std::vector<Row> rows = ReadRows(stream, "input", format);
            const bool isText = !rows.empty() && rows.front().isText;
            ::CheckRows(rows, isText ? RowFormat::CSV : RowFormat::JSON);
            CheckAgainstSchema(rows);
        } catch (const CommandError &refusal) {
            FUZZ_CHECK(refusal.ExitStatus() == EXIT_OPERATION_FAILED && !refusal.Advice().empty());
        }
    }
}
