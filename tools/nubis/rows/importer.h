// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_IMPORTER_H
#define NUBIS_TOOL_IMPORTER_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "console.h"
#include "database_calls.h"
#include "import_plan.h"
#include "row_checker.h"

namespace NubisTool {

struct Refusal {
    std::string file;
    size_t line = 0;
    std::string recordId;
    Nubis::NBError error;
};

struct ImportReport {
    size_t saved = 0;
    size_t notSent = 0; // the work ended before their turn
    size_t requests = 0;
    size_t bytes = 0; // of record JSON
    std::chrono::duration<double> time{};
    bool interrupted = false;
    std::vector<Refusal> refusals;
    std::vector<Refusal> unanswered; // sent, but the service went away: saved or not
    const ImportItem *firstNotSent = nullptr;
};

// Sends the batches of a plan; a double stands for the database in tests.
using SendBatch = std::function<std::future<Async::RecordsResult>(std::vector<Nubis::NBRecord> records)>;
// Told of every record that was saved: the record as it was sent, and as the service answered it.
using SavedRecord = std::function<void(const Nubis::NBRecord &sent, const Nubis::NBRecord &answered)>;

struct ImportOptions {
    size_t requestsInFlight = 4;
    SavedRecord onSaved;
};

// Gives an id to every item that has none, so that each answer can be matched to its row.
void GiveIds(Nubis::NBDatabase &database, std::vector<ImportItem> &items);

// Sends everything, several batches at a time, each wave after the one before. Ends early, with what is under way
// brought to its end, after an interrupt and when the service cannot be reached any more. A record whose reference was
// refused is refused by the service in its turn.
ImportReport RunImport(const std::vector<ImportItem> &items, const ImportPlan &plan, const SendBatch &send,
    const ImportOptions &options, const Console &console);

} // namespace NubisTool

#endif
