// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_RECORD_OPTIONS_H
#define NUBIS_TOOL_RECORD_OPTIONS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "CLI/CLI.hpp"

#include "common_options.h"
#include "console.h"
#include "nb_record.h"
#include "nb_schema.h"
#include "nb_types.h"

namespace NubisTool {

// What the commands on records take; each uses a part of it.
struct RecordOptions {
    CommonOptions common;
    std::string type;
    std::vector<std::string> ids;
    std::vector<std::string> fields;
    std::string where;
    std::vector<std::string> order;
    size_t limit = 100;
    bool all = false;
    std::string json;
    std::string id;
    bool isNew = false;
    uint64_t ifVersion = 0; // 0: whatever the version
    Nubis::NBSavePolicy policy = Nubis::NB_SAVE_CHANGED_FIELDS;
};

// The options of the database, and --type.
void AddTypeOption(CLI::App &command, RecordOptions &options);

// --policy, for commands that save.
void AddPolicyOption(CLI::App &command, Nubis::NBSavePolicy &policy);

// Throws UsageError for ids with which results could not be told apart: an empty one, or one that is given twice.
void RequireIds(const std::vector<std::string> &ids);

// As a JSON array or as a table.
void PrintRecords(const std::vector<Nubis::NBRecord> &records, const Nubis::NBSchemaNode &schemaNode,
    const RecordOptions &options, const Console &console);

} // namespace NubisTool

#endif
