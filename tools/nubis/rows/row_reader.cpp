// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "row_reader.h"

#include <algorithm>
#include <memory>
#include <set>
#include <sstream>
#include <utility>

#include "command_error.h"
#include "csv_reader.h"
#include "input_text.h"

namespace NubisTool {
namespace {

constexpr const char *FORMATS_ADVICE =
    "give a JSON array of objects, one JSON object a line, or CSV with a heading line (--format json|csv)";

[[noreturn]] void FailAt(const std::string &name, size_t line, const std::string &what)
{
    throw CommandError(name + ":" + std::to_string(line) + ": " + what, FORMATS_ADVICE);
}

Row MakeJsonRow(const std::string &name, size_t line, Json::Value value)
{
    if (!value.isObject()) {
        FailAt(name, line, "a row must be a JSON object");
    }
    return {name, line, std::move(value), false};
}

std::vector<Row> ReadJsonArray(const std::string &text, const std::string &name)
{
    Json::Value root;
    std::string error;
    if (!ParseJsonText(text, root, error)) {
        throw CommandError(name + ": not valid JSON: " + error, FORMATS_ADVICE);
    }
    std::vector<Row> rows;
    rows.reserve(root.size());
    LineCounter lines(text);
    for (auto &element : root) {
        size_t line = lines.LineAt(static_cast<size_t>(element.getOffsetStart()));
        rows.push_back(MakeJsonRow(name, line, std::move(element)));
    }
    return rows;
}

std::vector<Row> ReadJsonLines(const std::string &text, const std::string &name)
{
    std::vector<Row> rows;
    std::istringstream lines(text);
    std::string oneLine;
    for (size_t line = 1; std::getline(lines, oneLine); ++line) {
        if (oneLine.find_first_not_of(" \t\r") == std::string::npos) {
            continue;
        }
        Json::Value value;
        std::string error;
        if (!ParseJsonText(oneLine, value, error)) {
            FailAt(name, line, "not a JSON object on one line: " + error);
        }
        rows.push_back(MakeJsonRow(name, line, std::move(value)));
    }
    return rows;
}

std::vector<std::string> ReadHeading(CsvReader &reader, const std::string &name)
{
    std::vector<CsvField> fields;
    size_t line = 1;
    if (!reader.Next(fields, line)) {
        FailAt(name, 1, "there is no heading line");
    }
    std::vector<std::string> heading;
    std::set<std::string> seen;
    for (const CsvField &field : fields) {
        if (field.text.empty()) {
            FailAt(name, line, "a column of the heading has no name");
        }
        if (!seen.insert(field.text).second) {
            FailAt(name, line, "the heading has the column \"" + field.text + "\" twice");
        }
        heading.push_back(field.text);
    }
    return heading;
}

std::vector<Row> ReadCsv(std::istream &input, const std::string &name)
{
    std::vector<Row> rows;
    try {
        CsvReader reader(input);
        std::vector<std::string> heading = ReadHeading(reader, name);
        std::vector<CsvField> fields;
        size_t line = 0;
        while (reader.Next(fields, line)) {
            if (fields.size() != heading.size()) {
                FailAt(name, line,
                    "this line has " + std::to_string(fields.size()) + " fields, the heading has " +
                        std::to_string(heading.size()));
            }
            Row row{name, line, Json::Value(Json::objectValue), true};
            for (size_t i = 0; i < fields.size(); ++i) {
                bool missing = fields[i].text.empty() && !fields[i].quoted;
                row.values[heading[i]] = missing ? Json::Value() : Json::Value(fields[i].text);
            }
            rows.push_back(std::move(row));
        }
    } catch (const CsvError &error) {
        FailAt(name, error.Line(), error.what());
    }
    return rows;
}

bool EndsIn(const std::string &text, const std::string &ending)
{
    return text.size() >= ending.size() && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

RowFormat Guess(const std::string &name, const std::string &text)
{
    if (EndsIn(name, ".csv")) {
        return RowFormat::CSV;
    }
    if (EndsIn(name, ".json") || EndsIn(name, ".jsonl") || EndsIn(name, ".ndjson")) {
        return RowFormat::JSON;
    }
    size_t first = text.find_first_not_of(" \t\r\n");
    bool looksLikeJson = first != std::string::npos && (text[first] == '[' || text[first] == '{');
    return looksLikeJson ? RowFormat::JSON : RowFormat::CSV;
}

} // namespace

bool ParseJsonText(const std::string &text, Json::Value &value, std::string &error)
{
    Json::CharReaderBuilder builder;
    builder["failIfExtra"] = true;
    builder["allowComments"] = false;
    builder["allowTrailingCommas"] = false;
    builder["rejectDupKeys"] = true;
    try {
        std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
        if (reader->parse(text.data(), text.data() + text.size(), &value, &error)) {
            return true;
        }
        // The reader's message is several lines, each a place and a reason; the first is the cause of the others.
        error.erase(0, error.find_first_not_of("* \n"));
        std::replace(error.begin(), error.end(), '\n', ' ');
        error.erase(error.find_last_not_of(' ') + 1);
    } catch (const Json::Exception &) {
        error = "nested too deeply";
    }
    return false;
}

Json::Value ParseJsonObject(const std::string &text, const std::string &name, const std::string &advice, int exitStatus)
{
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
        throw CommandError(name + " is empty", advice, exitStatus);
    }
    Json::Value value;
    std::string error;
    if (!ParseJsonText(text, value, error) || !value.isObject()) {
        throw CommandError(name + " is no JSON object" + (error.empty() ? "" : ": " + error), advice, exitStatus);
    }
    return value;
}

std::vector<Row> ReadRows(std::istream &input, const std::string &name, RowFormat format)
{
    if (format == RowFormat::CSV) {
        return ReadCsv(input, name);
    }
    std::string text = ReadAll(input, name);
    if (format == RowFormat::GUESS && Guess(name, text) == RowFormat::CSV) {
        std::istringstream copy(text);
        return ReadCsv(copy, name);
    }
    size_t first = text.find_first_not_of(" \t\r\n");
    if (first != std::string::npos && text[first] == '[') {
        return ReadJsonArray(text, name);
    }
    return ReadJsonLines(text, name);
}

std::vector<Row> ReadRowsFromFile(const std::string &path, RowFormat format, std::istream &standardInput)
{
    Input input(path, standardInput);
    return ReadRows(input.Stream(), input.Name(), format);
}

} // namespace NubisTool
