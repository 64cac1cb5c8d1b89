// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <memory>
#include <ostream>

#include <json/json.h>

#include "child_process.h"
#include "command_error.h"
#include "common_options.h"
#include "interrupt.h"
#include "record_json.h"
#include "service_program.h"
#include "session.h"

namespace NubisTool {
namespace {

constexpr std::chrono::seconds STOP_TIME(15);

void PrintStatus(const Console &console, const CommonOptions &options, const ServiceStatus &status)
{
    std::string dataFolder = ServiceDataFolder(options.user);
    if (options.json) {
        Json::Value json(Json::objectValue);
        json["running"] = status.running;
        json["pid"] = status.running ? Json::Value(status.pid) : Json::Value();
        json["socket"] = status.socketPath;
        json["dataFolder"] = dataFolder;
        console.out << PrettyText(json) << '\n';
        return;
    }
    console.out << "service      " << (status.running ? "running" : "not running") << '\n';
    if (status.running) {
        console.out << "process      " << status.pid << '\n';
    }
    console.out << "socket       " << status.socketPath << '\n' << "data folder  " << dataFolder << '\n';
}

int Start(const CommonOptions &options, const Console &console)
{
    Session session(options);
    PrintStatus(console, options, StartService(session.Kit()));
    return EXIT_DONE;
}

int Stop(const CommonOptions &options, const Console &console)
{
    bool stopped = StopService(options.user, STOP_TIME);
    if (options.json) {
        Json::Value json(Json::objectValue);
        json["stopped"] = stopped;
        console.out << PrettyText(json) << '\n';
    } else {
        console.out << (stopped ? "the service has stopped" : "the service was not running") << '\n';
    }
    return EXIT_DONE;
}

struct ExecOptions {
    int user = 100;
    std::vector<std::string> catalogues;
};

// By a process of its own, because the fresh service's folders are those of this one's children.
int ApplyCatalogues(const ExecOptions &options)
{
    std::vector<std::string> arguments = {
        OwnProgram(), "catalogue", "apply", "--user", std::to_string(options.user), "--"};
    arguments.insert(arguments.end(), options.catalogues.begin(), options.catalogues.end());
    ChildProcess apply({std::move(arguments), {}, true, false});
    // What it says of success is not part of the command's output.
    apply.ReadAll();
    return apply.WaitForwardingSignals();
}

int Exec(const ExecOptions &options, const std::vector<std::string> &arguments)
{
    if (arguments.empty()) {
        throw UsageError("there is no command to run", "put it behind --: nubis service exec -- COMMAND ARGUMENT...");
    }
    InterruptGuard guard(SecondSignal::IS_REMEMBERED);
    FreshService service(options.user);
    if (!options.catalogues.empty()) {
        const int status = ApplyCatalogues(options);
        if (status != EXIT_DONE) {
            return status;
        }
    }
    ChildProcess child({arguments, {}, false, false});
    return child.WaitForwardingSignals();
}

} // namespace

void AddServiceCommands(CLI::App &app, Chosen &chosen)
{
    CLI::App *family =
        AddCommand(app, "service", "Start, stop, back up and look at the drive service", "nubis service status");
    family->require_subcommand(1);
    auto options = std::make_shared<CommonOptions>();

    CLI::App *start = AddCommand(*family, "start", "Make sure that the service runs", "nubis service start");
    AddServiceOptions(*start, *options);
    SetAction(*start, chosen, options, Start);

    CLI::App *stop = AddCommand(*family, "stop", "End the service and wait until it has", "nubis service stop");
    AddServiceOptions(*stop, *options);
    SetAction(*stop, chosen, options, Stop);

    CLI::App *status = AddCommand(
        *family, "status", "Say whether the service runs, and where it keeps its data", "nubis service status --json");
    AddServiceOptions(*status, *options);
    SetAction(*status, chosen, [options](const Console &console) {
        PrintStatus(console, *options, FindService(options->user));
        return EXIT_DONE;
    });

    AddBackupCommands(*family, chosen);

    CLI::App *exec =
        AddCommand(*family, "exec", "Run a command against a fresh service of its own, and return its exit status",
            "nubis service exec --catalogue notes.json -- nubis catalogue list");
    auto execOptions = std::make_shared<ExecOptions>();
    AddUserOption(*exec, execOptions->user);
    exec->add_option(
            "--catalogue", execOptions->catalogues, "Catalogue file that the service begins with; may be repeated")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name("FILE");
    SetAction(*exec, chosen, [execOptions, &chosen](const Console &) { return Exec(*execOptions, chosen.passedOn); });
}

} // namespace NubisTool
