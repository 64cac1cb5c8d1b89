// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_COMMON_OPTIONS_H
#define NUBIS_TOOL_COMMON_OPTIONS_H

#include <string>

#include "CLI/CLI.hpp"

#include "nb_types.h"

namespace NubisTool {

// What most commands need to know of where to work.
struct CommonOptions {
    int user = 100;
    std::string bundle;
    std::string container; // empty: the bundle's default container
    Nubis::NBDatabaseScope scope = Nubis::NB_DATABASE_PRIVATE;
    Nubis::NBCloudSyncDemon demon = Nubis::NB_SYNC_DEMON_DATA;
    bool json = false;
};

// --user alone: for commands that deal with the service's process.
void AddUserOption(CLI::App &command, int &user);

// --user, --demon, --json: for commands that talk to the service.
void AddServiceOptions(CLI::App &command, CommonOptions &options);

// Those and --bundle, --container, --scope: for commands that work in a database.
void AddDatabaseOptions(CLI::App &command, CommonOptions &options);

// The text under a command's help that shows how it is used.
std::string Example(const std::string &commandLine);

} // namespace NubisTool

#endif
