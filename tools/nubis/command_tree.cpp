// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_tree.h"

#include <utility>

namespace NubisTool {

std::vector<CLI::App *> VisibleCommands(CLI::App &command)
{
    return command.get_subcommands([](const CLI::App *one) { return !one->get_group().empty(); });
}

std::vector<CommandNode> CommandTree(CLI::App &root)
{
    std::vector<CommandNode> nodes = {{&root, ""}};
    for (size_t i = 0; i < nodes.size(); ++i) {
        const CommandNode node = nodes[i];
        for (CLI::App *below : VisibleCommands(*node.command)) {
            nodes.push_back({below, node.path + " " + below->get_name()});
        }
    }
    return nodes;
}

bool RunsCommand(const CLI::App &command)
{
    return command.get_name() == "exec";
}

std::string CommandFormatter::make_usage(const CLI::App *command, std::string name) const
{
    std::string usage = CLI::Formatter::make_usage(command, std::move(name));
    usage.erase(usage.find_last_not_of('\n') + 1);
    return usage + (RunsCommand(*command) ? " -- COMMAND [ARGUMENT ...]\n" : "\n");
}

std::vector<std::string> NamesOf(const CLI::Option &option)
{
    std::vector<std::string> names;
    for (const std::string &name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    for (const std::string &name : option.get_snames()) {
        names.push_back("-" + name);
    }
    return names;
}

} // namespace NubisTool
