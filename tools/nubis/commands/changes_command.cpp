// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <memory>
#include <ostream>

#include <json/json.h>

#include "change_printer.h"
#include "command_error.h"
#include "common_options.h"
#include "error_text.h"
#include "interrupt.h"
#include "record_json.h"
#include "session.h"

namespace NubisTool {
namespace {

struct ChangesOptions {
    CommonOptions common;
    std::string since;
    ChangesWanted wanted;
    bool follow = false;
    double interval = 2;
};

constexpr const char *NOW = "now";

void PrintCursor(const std::string &cursor, const ChangesOptions &options, const Console &console)
{
    if (options.common.json) {
        Json::Value json(Json::objectValue);
        json["cursor"] = cursor;
        console.out << CompactText(json) << '\n';
    } else {
        console.out << "cursor " << cursor << '\n';
    }
    console.out.flush();
}

int Changes(const ChangesOptions &options, const Console &console)
{
    Session session(options.common);
    auto database = session.Database();
    std::string cursor = options.since;
    if (cursor == NOW) {
        ThrowIfError(database->GetStartCursor(options.wanted.type, cursor), "reading the present cursor");
    }
    InterruptGuard guard;
    cursor = PrintChanges(database, cursor, options.wanted, options.common.json, console);
    auto interval = std::chrono::milliseconds(static_cast<int64_t>(options.interval * 1000));
    while (options.follow && console.out && !WaitForInterrupt(interval)) {
        cursor = PrintChanges(database, cursor, options.wanted, options.common.json, console);
    }
    PrintCursor(cursor, options, console);
    return Interrupted() && !options.follow ? EXIT_INTERRUPTED : EXIT_DONE;
}

} // namespace

void AddChangesCommand(CLI::App &app, Chosen &chosen)
{
    auto options = std::make_shared<ChangesOptions>();
    CLI::App *command = AddCommand(app, "changes", "Show what changed in a database since a cursor",
        "nubis changes --bundle com.example.notes --since now --follow");
    AddDatabaseOptions(*command, options->common);
    command->add_option("--since", options->since, "Cursor of an earlier call, or \"now\" [the beginning]")
        ->type_name("CURSOR");
    command->add_option("--type", options->wanted.type, "Only records of this type [all types]")->type_name("TYPE");
    command->add_option("--fields", options->wanted.fields, "Only these fields [all]")
        ->delimiter(',')
        ->type_name("A,B");
    command->add_option("--page", options->wanted.pageSize, "Records in a request")
        ->check(WholeNumber(1, 10000))
        ->type_name("N")
        ->capture_default_str();
    command->add_flag("--follow,-f", options->follow, "Go on until interrupted");
    command->add_option("--interval", options->interval, "Seconds between requests of --follow")
        ->check(Seconds(0.01, 86400))
        ->type_name("SECONDS")
        ->capture_default_str();
    SetAction(*command, chosen, options, Changes);
}

} // namespace NubisTool
