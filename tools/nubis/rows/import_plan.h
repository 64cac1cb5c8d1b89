// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_IMPORT_PLAN_H
#define NUBIS_TOOL_IMPORT_PLAN_H

#include <cstddef>
#include <vector>

#include "row_checker.h"

namespace NubisTool {

// How much one save request may carry.
struct BatchLimits {
    size_t maxRecords = 1;
    size_t maxBytes = 1;
};

struct Batch {
    std::vector<size_t> items; // indices into the items of the import
    size_t bytes = 0;
};

// The batches of an import in waves. A record that refers to another of the same import stands in a later wave than
// that one, so the batches of one wave may be sent side by side, and the next wave when all of them are saved.
struct ImportPlan {
    std::vector<std::vector<Batch>> waves;
    size_t bytes = 0;
};

// What a request needs beside its records.
constexpr size_t ENVELOPE_BYTES = 4096;

// Records that could never be sent (too large for a request, or referring to each other in a circle) become problems;
// the plan is of no use then.
ImportPlan PlanImport(
    const std::vector<ImportItem> &items, const BatchLimits &limits, std::vector<RowProblem> &problems);

} // namespace NubisTool

#endif
