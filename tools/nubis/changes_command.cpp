// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <memory>
#include <ostream>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "database_calls.h"
#include "error_text.h"
#include "interrupt.h"
#include "record_json.h"
#include "session.h"
#include "table.h"

namespace NubisTool {
namespace {

struct ChangesOptions {
    CommonOptions common;
    std::string since;
    std::string type;
    std::vector<std::string> fields;
    int pageSize = 500;
    bool follow = false;
    double interval = 2;
};

constexpr const char *NOW = "now";

const char *StateOf(const Nubis::NBRecord &record)
{
    return record.GetIsDelete() ? "deleted" : record.GetVersion() <= 1 ? "new" : "changed";
}

std::string FieldsText(const Nubis::NBRecord &record)
{
    Nubis::NBFieldMap data;
    record.GetRecordData(data);
    std::string text;
    for (const auto &[name, field] : data) {
        text += (text.empty() ? "" : ", ") + name + "=" + FieldToCell(field);
    }
    return text;
}

void Print(const std::vector<Nubis::NBRecord> &records, const ChangesOptions &options, const Console &console)
{
    if (options.common.json) {
        for (const Nubis::NBRecord &record : records) {
            console.out << CompactText(RecordToJson(record)) << '\n';
        }
    } else if (!records.empty()) {
        Table table({{"CHANGE"}, {"TYPE"}, {"ID"}, {"VERSION", Align::RIGHT}, {"DEVICE"}, {"FIELDS"}});
        for (const Nubis::NBRecord &record : records) {
            table.Add({StateOf(record), record.GetRecordType(), record.GetRecordId(),
                std::to_string(record.GetVersion()), record.GetRecordModifiedInfo().deviceName, FieldsText(record)});
        }
        table.Print(console.out);
    }
    console.out.flush();
}

// From the cursor until nothing is left; returns the cursor to go on from.
std::string PrintUntilUpToDate(
    Nubis::NBDatabase &database, std::string cursor, const ChangesOptions &options, const Console &console)
{
    const std::string start = cursor;
    bool hasMore = true;
    while (hasMore && console.out && !Interrupted()) {
        PageOutcome page = Wait(StartChanges(database, options.type, options.fields, options.pageSize, cursor));
        if (page.error.HasError()) {
            // Whatever was printed is behind this cursor, so nothing need be read twice.
            throw CommandError("reading changes failed: " + ErrorText(page.error),
                ErrorAdvice(page.error) + (cursor == start ? "" : "; go on with --since " + cursor));
        }
        Print(page.records, options, console);
        hasMore = page.hasMore;
        if (hasMore && page.cursor == cursor) {
            throw CommandError("the service says that more changes follow, but its cursor stands still at " + cursor,
                "restart the service with `nubis service stop` and try again");
        }
        cursor = page.cursor;
    }
    return cursor;
}

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
        ThrowIfError(database->GetStartCursor(options.type, cursor), "reading the present cursor");
    }
    InterruptGuard guard;
    cursor = PrintUntilUpToDate(*database, cursor, options, console);
    auto interval = std::chrono::milliseconds(static_cast<int64_t>(options.interval * 1000));
    while (options.follow && console.out && !WaitForInterrupt(interval)) {
        cursor = PrintUntilUpToDate(*database, cursor, options, console);
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
    command->add_option("--type", options->type, "Only records of this type [all types]")->type_name("TYPE");
    command->add_option("--fields", options->fields, "Only these fields [all]")->delimiter(',')->type_name("A,B");
    command->add_option("--page", options->pageSize, "Records in a request")
        ->check(CLI::Range(1, 10000))
        ->type_name("N")
        ->capture_default_str();
    command->add_flag("--follow,-f", options->follow, "Go on until interrupted");
    command->add_option("--interval", options->interval, "Seconds between requests of --follow")
        ->check(CLI::Range(0.01, 86400.0))
        ->type_name("S")
        ->capture_default_str();
    SetAction(*command, chosen, [options](const Console &console) { return Changes(*options, console); });
}

} // namespace NubisTool
