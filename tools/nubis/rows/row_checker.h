// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_ROW_CHECKER_H
#define NUBIS_TOOL_ROW_CHECKER_H

#include <cstddef>
#include <string>
#include <vector>

#include "nb_record.h"
#include "nb_schema.h"
#include "row_reader.h"

namespace NubisTool {

// One thing that is wrong with an input.
struct RowProblem {
    std::string file;
    size_t line = 0;
    std::string field; // empty when the row as a whole is meant
    std::string expected;
    std::string found;
};

// "people.csv:3: field age: expected a whole number ..., found \"x\""
std::string ProblemText(const RowProblem &problem);

// Throws CommandError, which names the first of them, when there are problems in the input for a bundle.
void ThrowIfAny(const std::vector<RowProblem> &problems, const std::string &bundle);

// A record that is ready to be sent, and where it came from.
struct ImportItem {
    Nubis::NBRecord record;
    std::string file;
    size_t line = 0;
};

// Whether fields that must have a value may be left out: they may when a record that is there is changed.
enum class Completeness {
    WHOLE,
    PARTIAL
};

// Whether a member of a record's JSON describes the record, unless its type has a field of this name.
bool DescribesRecord(const std::string &member);

// Checks rows against a record type and turns them into records. A row is an object of field names and values, or has
// them in a member "fields", as RecordToJson writes it. Its record id comes from the named id field or from its member
// "recordId"; a row without one becomes a record for which the library makes an id.
class RowChecker {
public:
    // Throws UsageError when the id field is not in the schema and so could never be there.
    RowChecker(const Nubis::NBSchemaNode &schemaNode, std::string idField, Completeness completeness);

    // True when nothing was wrong; problems are appended otherwise.
    bool Check(const Row &row, ImportItem &item, std::vector<RowProblem> &problems) const;

private:
    class Pass;

    const Nubis::NBSchemaNode &schemaNode_;
    std::string idField_;
    Completeness completeness_;
};

// All rows; problems also for ids that two rows share, since one would silently replace the other.
std::vector<ImportItem> CheckRows(
    const RowChecker &checker, const std::vector<Row> &rows, std::vector<RowProblem> &problems);

} // namespace NubisTool

#endif
