// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_WRITER_H
#define NUBIS_TOOL_DEMO_WRITER_H

#include <string>
#include <vector>

#include <json/json.h>

#include "console.h"
#include "demo_data.h"
#include "demo_edits.h"
#include "demo_records.h"
#include "import_plan.h"
#include "importer.h"
#include "session.h"

namespace NubisTool {

// Writes many records, as a device that makes changes of its own: what the service has saved is what the device holds.
// Everything belongs to the user action that is named. Throws CommandError when anything is not saved. One thread.
//
// Answers: {"added", "changed", "removed": [ids], "types": [record types], "transactions"}, and of an import
// "records" by record type, "bytes", "waves" and "saveSeconds".
class DemoWriter {
public:
    DemoWriter(Session &session, DemoRecords &records, const Console &console);

    Json::Value Import(const std::string &folder, const std::string &action);
    Json::Value Edit(const EditCounts &counts, const std::string &action);

private:
    std::vector<ImportItem> CheckedItems(const std::vector<DemoTable> &tables);
    ImportReport Save(const std::vector<ImportItem> &items, ImportPlan &plan, const std::string &action);
    size_t Remove(const std::vector<std::string> &ids, const std::string &action, Json::Value &answer);

    Session &session_;
    DemoRecords &records_;
    const Console &console_;
};

// Of rows that have to fit the catalogue.
void ThrowIfProblems(const std::vector<RowProblem> &problems);

} // namespace NubisTool

#endif
