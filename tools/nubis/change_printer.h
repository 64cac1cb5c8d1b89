// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_CHANGE_PRINTER_H
#define NUBIS_TOOL_CHANGE_PRINTER_H

#include <string>
#include <vector>

#include "console.h"
#include "nb_database.h"

namespace NubisTool {

struct ChangesWanted {
    std::string type;                // empty: all
    std::vector<std::string> fields; // empty: all
    int pageSize = 500;
};

// Prints the changes from the cursor until nothing is left or the work is interrupted, as a table for each page or as a
// JSON line for each record; returns the cursor to go on from. Throws CommandError, which names the cursor.
std::string PrintChanges(const std::shared_ptr<Nubis::NBDatabase> &database, std::string cursor,
    const ChangesWanted &wanted, bool json, const Console &console);

} // namespace NubisTool

#endif
