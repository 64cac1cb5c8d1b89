// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_ROW_READER_H
#define NUBIS_TOOL_ROW_READER_H

#include <cstddef>
#include <istream>
#include <string>
#include <vector>

#include <json/json.h>

namespace NubisTool {

enum class RowFormat {
    GUESS, // by the file's name, then by its first character
    JSON,  // an array of objects, or one object a line
    CSV    // with a heading
};

// One row of an input file, before anything is known about the fields it ought to have.
struct Row {
    std::string file;
    size_t line = 0; // counted from 1
    // An object. From CSV its values are texts, or null for an empty field without quotes.
    Json::Value values;
    bool isText = false;
};

// All rows of a stream; the name stands for it in messages. Throws CommandError, naming file and line, when the input
// cannot be read as its format.
std::vector<Row> ReadRows(std::istream &input, const std::string &name, RowFormat format);

// The same for a file, or for standardInput when the path is "-".
std::vector<Row> ReadRowsFromFile(const std::string &path, RowFormat format, std::istream &standardInput);

// One JSON value from text, without throwing; the reason of a failure in error.
bool ParseJsonText(const std::string &text, Json::Value &value, std::string &error);

// The JSON object that a text is; throws CommandError with the advice and the exit status when it is anything else.
Json::Value ParseJsonObject(
    const std::string &text, const std::string &name, const std::string &advice, int exitStatus);

} // namespace NubisTool

#endif
