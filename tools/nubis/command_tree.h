// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_COMMAND_TREE_H
#define NUBIS_TOOL_COMMAND_TREE_H

#include <string>
#include <vector>

#include "CLI/CLI.hpp"

namespace NubisTool {

struct CommandNode {
    CLI::App *command;
    // The names that lead to it, each after a space; empty for the program itself.
    std::string path;
};

// The commands below this one that help shows.
std::vector<CLI::App *> VisibleCommands(CLI::App &command);

// A command and all below it that help shows, each level after the one above.
std::vector<CommandNode> CommandTree(CLI::App &root);

// Whether a command line of anyone's may follow it after "--".
bool RunsCommand(const CLI::App &command);

// Help that also shows what stands behind "--".
class CommandFormatter : public CLI::Formatter {
public:
    std::string make_usage(const CLI::App *command, std::string name) const override;
};

// As they are typed, the long ones first.
std::vector<std::string> NamesOf(const CLI::Option &option);

} // namespace NubisTool

#endif
