// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_EDITS_H
#define NUBIS_TOOL_DEMO_EDITS_H

#include <cstddef>
#include <string>
#include <vector>

#include "demo_data.h"
#include "local_store.h"

namespace NubisTool {

struct EditCounts {
    size_t changes = 0;
    size_t removals = 0;
    size_t additions = 0;
};

struct DemoEdits {
    std::vector<DemoTable> changes;    // the records as they are to be, one table for each type
    std::vector<std::string> removals; // ids of records that no other refers to
    std::vector<DemoTable> additions;
};

// What the demo's first device does to its records: the same for the same records, spread over all of them, no record in
// two lists. Throws CommandError when there are too few records for that.
DemoEdits ChooseEdits(const LocalStore &store, const EditCounts &counts);

} // namespace NubisTool

#endif
