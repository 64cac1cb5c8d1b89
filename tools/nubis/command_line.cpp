// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <poll.h>
#include <sstream>
#include <unistd.h>
#include <utility>

#include "command_error.h"
#include "command_tree.h"
#include "common_options.h"
#include "table.h"

namespace NubisTool {
namespace {

constexpr const char *DESCRIPTION = "Works with the records, the catalogue and the service of a cloud record database.";

// What follows "--" belongs to the command to be run, whatever it looks like.
void TakePassedOn(std::vector<std::string> &arguments, Chosen &chosen)
{
    if (arguments.size() < 2 || (arguments[0] != "service" && arguments[0] != "lock") || arguments[1] != "exec") {
        return;
    }
    auto dashes = std::find(arguments.begin(), arguments.end(), "--");
    if (dashes != arguments.end()) {
        chosen.passedOn.assign(dashes + 1, arguments.end());
        arguments.erase(dashes, arguments.end());
    }
}

void WriteError(const Console &console, const std::string &what, const std::string &advice)
{
    // Names and messages may come from other devices, and must not move the cursor.
    std::istringstream lines("nubis: " + what);
    for (std::string line; std::getline(lines, line);) {
        console.err << Printable(line) << '\n';
    }
    if (!advice.empty()) {
        console.err << "  next: " << advice << '\n';
    }
}

// What is wrong with the arguments of a command, the last one that they name.
std::string ParseProblem(const CLI::App &app, CLI::App &command, const CLI::ParseError &error)
{
    const std::vector<std::string> unknown = app.remaining(true);
    std::string surplus;
    for (const std::string &argument : unknown) {
        surplus += (surplus.empty() ? "" : " ") + argument;
    }
    std::string families;
    for (const CLI::App *family : VisibleCommands(command)) {
        families += (families.empty() ? "" : ", ") + family->get_name();
    }
    if (!families.empty()) {
        // What follows a mistyped command may be all right.
        return (unknown.empty() ? "expected a command: " : "\"" + unknown.front() + "\" is no command; expected: ") +
               families;
    }
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError)) {
        return "not expected: " + surplus +
               (surplus[0] == '-' ? " (options stand behind the command that has them)" : "");
    }
    return error.what();
}

int ReadArguments(CLI::App &app, std::vector<std::string> arguments, const Console &console)
{
    try {
        // CLI11 takes them from the end.
        std::reverse(arguments.begin(), arguments.end());
        app.parse(std::move(arguments));
        return EXIT_DONE;
    } catch (const CLI::Success &asked) {
        app.exit(asked, console.out, console.err);
        return EXIT_DONE;
    } catch (const CLI::ParseError &error) {
        std::string where = "nubis";
        CLI::App *command = &app;
        while (!command->get_subcommands().empty()) {
            command = command->get_subcommands().front();
            where += " " + command->get_name();
        }
        WriteError(console, ParseProblem(app, *command, error), "see `" + where + " --help`");
        return EXIT_USAGE;
    }
}

// A reader such as `head` that has seen enough is no failure to tell people about.
bool ReaderIsGone()
{
    struct pollfd entry = {STDOUT_FILENO, POLLOUT, 0};
    return poll(&entry, 1, 0) == 1 && (entry.revents & POLLERR) != 0;
}

int Perform(const Action &action, const Console &console)
{
    try {
        return action(console);
    } catch (const CommandError &error) {
        WriteError(console, error.what(), error.Advice());
        return error.ExitStatus();
    } catch (const std::exception &error) {
        WriteError(console, std::string("failed: ") + error.what(),
            "run the command with NUBIS_LOG_LEVEL=info to see the library's log");
        return EXIT_OPERATION_FAILED;
    }
}

} // namespace

CLI::App *AddCommand(
    CLI::App &family, const std::string &name, const std::string &description, const std::string &example)
{
    CLI::App *command = family.add_subcommand(name, description);
    command->footer(Example(example));
    return command;
}

void SetAction(CLI::App &command, Chosen &chosen, Action action)
{
    command.callback([&chosen, action = std::move(action)] { chosen.action = action; });
}

void AddAllCommands(CLI::App &app, Chosen &chosen)
{
    app.footer("Every command has its own help: nubis record import --help\n" + Example("nubis demo"));
    // Commands take it on from the one above when they are added.
    app.formatter(std::make_shared<CommandFormatter>());
    AddDemoCommands(app, chosen);
    AddDoctorCommand(app, chosen);
    AddServiceCommands(app, chosen);
    AddCatalogueCommands(app, chosen);
    AddUserCommands(app, chosen);
    AddConfigCommands(app, chosen);
    AddRecordCommands(app, chosen);
    AddShareCommand(app, chosen);
    AddKeyCommands(app, chosen);
    AddTokenCommand(app, chosen);
    AddReportCommands(app, chosen);
    AddChangesCommand(app, chosen);
    AddLockCommands(app, chosen);
    AddSubscriptionCommands(app, chosen);
    AddWatchCommand(app, chosen);
    AddNotifyCommands(app, chosen);
    AddCridCommands(app, chosen);
    AddCompletionCommands(app, chosen);
    AddManualCommand(app, chosen);
}

int RunTool(std::vector<std::string> arguments, const Console &console)
{
    CLI::App app(DESCRIPTION, "nubis");
    Chosen chosen;
    app.set_version_flag("--version", "nubis " NUBIS_TOOL_VERSION);
    app.require_subcommand(1);
    AddAllCommands(app, chosen);
    TakePassedOn(arguments, chosen);
    int status = ReadArguments(app, std::move(arguments), console);
    if (status == EXIT_DONE && chosen.action) {
        status = Perform(chosen.action, console);
    }
    console.out.flush();
    console.err.flush();
    if (!console.out && ReaderIsGone()) {
        return EXIT_READER_GONE;
    }
    if (status == EXIT_DONE && !console.out) {
        WriteError(console, "the output could not be written", "check the disk or the program that reads it");
        status = EXIT_OPERATION_FAILED;
    }
    return status;
}

} // namespace NubisTool
