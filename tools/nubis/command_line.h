// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_COMMAND_LINE_H
#define NUBIS_TOOL_COMMAND_LINE_H

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "CLI/CLI.hpp"

#include "console.h"

namespace NubisTool {

// What a command does once its options have been read; returns the exit status, or throws CommandError.
using Action = std::function<int(const Console &)>;

// Where the command that was named on the command line leaves what is to be done.
struct Chosen {
    Action action;
    // What followed "--" on the command line of an `exec`.
    std::vector<std::string> passedOn;
};

// Adds a command of a family; its options are to be bound to something that the action keeps alive.
CLI::App *AddCommand(
    CLI::App &family, const std::string &name, const std::string &description, const std::string &example);
void SetAction(CLI::App &command, Chosen &chosen, Action action);
// The action is to call this with the options, which it keeps alive.
template <typename Options, typename Act>
void SetAction(CLI::App &command, Chosen &chosen, std::shared_ptr<Options> options, Act act)
{
    SetAction(command, chosen, [options = std::move(options), act = std::move(act)](const Console &console) {
        return act(*options, console);
    });
}

// The families, one source each.
void AddDoctorCommand(CLI::App &app, Chosen &chosen);
void AddServiceCommands(CLI::App &app, Chosen &chosen);
void AddBackupCommands(CLI::App &service, Chosen &chosen);
void AddCatalogueCommands(CLI::App &app, Chosen &chosen);
void AddCatalogueAppCommands(CLI::App &catalogue, Chosen &chosen);
void AddUserCommands(CLI::App &app, Chosen &chosen);
void AddConfigCommands(CLI::App &app, Chosen &chosen);
void AddImportCommand(CLI::App &record, Chosen &chosen);
void AddNewIdsCommand(CLI::App &record, Chosen &chosen);
void AddRecordByIdCommands(CLI::App &record, Chosen &chosen);
void AddModifyCommand(CLI::App &record, Chosen &chosen);
void AddCopyCommand(CLI::App &record, Chosen &chosen);
void AddRecordCommands(CLI::App &app, Chosen &chosen);
void AddShareCommand(CLI::App &app, Chosen &chosen);
void AddKeyCommands(CLI::App &app, Chosen &chosen);
void AddTokenCommand(CLI::App &app, Chosen &chosen);
void AddReportCommands(CLI::App &app, Chosen &chosen);
void AddChangesCommand(CLI::App &app, Chosen &chosen);
void AddLockCommands(CLI::App &app, Chosen &chosen);
void AddSubscriptionCommands(CLI::App &app, Chosen &chosen);
void AddWatchCommand(CLI::App &app, Chosen &chosen);
void AddNotifyCommands(CLI::App &app, Chosen &chosen);
void AddCridCommands(CLI::App &app, Chosen &chosen);
// These two describe what is there when they act, so that they may be added anywhere.
void AddCompletionCommands(CLI::App &app, Chosen &chosen);
void AddManualCommand(CLI::App &app, Chosen &chosen);
void AddDemoCommands(CLI::App &app, Chosen &chosen);

// All of them.
void AddAllCommands(CLI::App &app, Chosen &chosen);

// The whole program behind main: reads the arguments (without the program's name), runs the command, writes errors with
// their advice, and returns the exit status.
int RunTool(std::vector<std::string> arguments, const Console &console);

} // namespace NubisTool

#endif
