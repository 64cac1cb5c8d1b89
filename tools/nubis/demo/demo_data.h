// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_DATA_H
#define NUBIS_TOOL_DEMO_DATA_H

#include <string>
#include <vector>

#include "row_reader.h"

namespace NubisTool {

constexpr const char *DEMO_BUNDLE = "org.example.atlas";
constexpr const char *ISO_CODES_FOLDER = "/usr/share/iso-codes/json";

// The rows of one record type, in the form in which a file of them would be read.
struct DemoTable {
    std::string recordType;
    std::string idField;
    std::vector<Row> rows;
};

// Countries, their subdivisions and the languages of the world, out of Debian's iso-codes package. A subdivision refers
// to its country and, where it lies in another subdivision, to that. Throws CommandError when the package is not there.
std::vector<DemoTable> LoadDemoData(const std::string &folder);

// The catalogue entry of the demo's bundle, as text of a catalogue file.
std::string DemoCatalogue();

} // namespace NubisTool

#endif
