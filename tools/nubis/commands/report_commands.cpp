// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <deque>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <utility>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "error_text.h"
#include "kept_events.h"
#include "nb_report.h"
#include "record_json.h"
#include "session.h"
#include "table.h"
#include "time_text.h"

namespace NubisTool {
namespace {

constexpr int OPERATION_EVENT = 2;
// A milestone is reported as an O&M event and as an operation event.
constexpr size_t EVENTS_OF_MILESTONE = 2;

struct ReportOptions {
    CommonOptions common;
    Nubis::SyncStatusFlag milestone = Nubis::SYNC_STATUS_PREPARE;
    std::string trace;
    std::string errorCode;
    std::string errorMessage;
    std::vector<std::string> fields;
    size_t limit = 50;
    bool all = false;
};

const std::map<std::string, Nubis::SyncStatusFlag> &Milestones()
{
    static const std::map<std::string, Nubis::SyncStatusFlag> MILESTONES = {
        {"prepare", Nubis::SYNC_STATUS_PREPARE}, {"start", Nubis::SYNC_STATUS_START}, {"end", Nubis::SYNC_STATUS_END}};
    return MILESTONES;
}

std::map<std::string, std::string> ReadParams(const ReportOptions &options)
{
    std::map<std::string, std::string> params;
    for (const std::string &field : options.fields) {
        size_t equals = field.find('=');
        std::string name = field.substr(0, equals);
        if (equals == std::string::npos || name.empty()) {
            throw UsageError("\"" + field + "\" is no field", "give fields as NAME=VALUE");
        }
        if (name == "errorCode" || name == "errorMsg") {
            throw UsageError(name + " is no field of its own", "use --error-code and --error-message");
        }
        if (!params.emplace(std::move(name), field.substr(equals + 1)).second) {
            throw UsageError("a field is given twice: " + field, "give every field once");
        }
    }
    if (!options.errorCode.empty()) {
        params["errorCode"] = options.errorCode;
    }
    if (!options.errorMessage.empty()) {
        params["errorMsg"] = options.errorMessage;
    }
    return params;
}

// How many events of a trace there are; the last one's fields.
size_t CountEvents(int user, const std::string &trace, Json::Value &lastFields)
{
    size_t count = 0;
    VisitKeptEvents(user, [&](Json::Value &&event) {
        if (event["fields"]["traceID"] == Json::Value(trace)) {
            ++count;
            lastFields = std::move(event["fields"]);
        }
    });
    return count;
}

// A field that every event has keeps its own value.
void TellIgnored(const std::map<std::string, std::string> &params, const Json::Value &reported, const Console &console)
{
    for (const auto &[name, value] : params) {
        if (name != "errorCode" && name != "errorMsg" && reported[name] != Json::Value(value)) {
            console.err << "nubis: every event has a field \"" << name << "\" of its own; yours was left out\n";
        }
    }
}

int Send(const ReportOptions &options, const Console &console)
{
    std::map<std::string, std::string> params = ReadParams(options);
    Session session(options.common);
    // Events are reported in the name of the cloud user, whom the library knows once it has asked.
    Nubis::NBUserInfo info;
    ThrowIfError(session.Kit().GetCloudUserInfo(info, false), "asking who is signed in");
    auto report = session.Kit().GetReport();
    const std::string trace = options.trace.empty() ? report->GetPrepareTarceId() : options.trace;
    Json::Value reported;
    size_t before = CountEvents(options.common.user, trace, reported);
    // What cannot be reported is dropped without a word, so whether it arrived is looked up.
    if (!report->Report(options.milestone, trace, options.common.bundle, params) ||
        CountEvents(options.common.user, trace, reported) < before + EVENTS_OF_MILESTONE) {
        throw CommandError("the event client did not keep the report",
            "check that the state folder can be written, or run the command with NUBIS_LOG_LEVEL=info to see why");
    }
    TellIgnored(params, reported, console);
    if (options.common.json) {
        Json::Value json(Json::objectValue);
        json["event"] = reported["business_id"];
        json["traceId"] = trace;
        console.out << PrettyText(json) << '\n';
    } else {
        console.out << "reported " << reported["business_id"].asString() << ", trace " << trace << '\n';
    }
    return EXIT_DONE;
}

std::string FieldText(const Json::Value &fields, const char *name, const char *otherName)
{
    const Json::Value &field = fields.isMember(name) ? fields[name] : fields[otherName];
    return field.isString() ? field.asString() : "";
}

// What an event tells beyond what every event does.
std::string ExtraText(const Json::Value &fields)
{
    static const std::set<std::string> COMMON = {"pn", "operationType", "business_id", "traceID", "prepareTraceId",
        "userID", "extraInfo", "returnCode", "errorReason", "error_code", "error_msg", "galleryVersion"};
    std::string text;
    for (const std::string &name : fields.getMemberNames()) {
        if (COMMON.count(name) == 0) {
            text += (text.empty() ? "" : ", ") + name + "=" + FieldText(fields, name.c_str(), "");
        }
    }
    return text;
}

void PrintEvents(const std::deque<Json::Value> &events, const Console &console)
{
    Table table({{"TIME"}, {"KIND"}, {"EVENT"}, {"PRODUCT"}, {"TRACE"}, {"CODE"}, {"REASON"}, {"MORE"}});
    for (const Json::Value &event : events) {
        const Json::Value &fields = event["fields"];
        const Json::Value &time = event["time"];
        const Json::Value &type = event["eventType"];
        table.Add(
            {time.isInt64() ? TimeText(time.asInt64()) : "", type == Json::Value(OPERATION_EVENT) ? "operation" : "O&M",
                FieldText(fields, "business_id", ""), FieldText(fields, "pn", ""), FieldText(fields, "traceID", ""),
                FieldText(fields, "returnCode", "error_code"), FieldText(fields, "errorReason", "error_msg"),
                ExtraText(fields)});
    }
    table.Print(console.out, console.outWidth);
}

int List(const ReportOptions &options, const Console &console)
{
    std::deque<Json::Value> events;
    size_t found = 0;
    size_t unreadable = VisitKeptEvents(options.common.user, [&](Json::Value &&event) {
        if (!options.trace.empty() && event["fields"]["traceID"] != Json::Value(options.trace)) {
            return;
        }
        ++found;
        events.push_back(std::move(event));
        if (!options.all && events.size() > options.limit) {
            events.pop_front();
        }
    });
    if (options.common.json) {
        Json::Value json(Json::arrayValue);
        for (Json::Value &event : events) {
            json.append(std::move(event));
        }
        console.out << PrettyText(json) << '\n';
    } else if (events.empty()) {
        console.out << "no events\n";
    } else {
        PrintEvents(events, console);
    }
    if (found > options.limit && !options.all) {
        console.err << "nubis: there are " << (found - options.limit)
                    << " older ones; --limit N shows more of them, --all every one\n";
    }
    if (unreadable > 0) {
        console.err << "nubis: left out what is no event: " << CountText(unreadable, "line") << '\n';
    }
    return EXIT_DONE;
}

void AddSend(CLI::App &family, Chosen &chosen)
{
    auto options = std::make_shared<ReportOptions>();
    CLI::App *command = AddCommand(family, "send", "Report a milestone of a sync run",
        "nubis report send end --bundle com.example.notes --error-code 0 records=12");
    AddServiceOptions(*command, options->common);
    command->add_option("--bundle", options->common.bundle, "Application bundle that is synchronised")
        ->required()
        ->type_name("NAME");
    command->add_option("--trace", options->trace, "Trace id of the run [a new one, as of a run that begins]")
        ->type_name("ID");
    command->add_option("--error-code", options->errorCode, "The run's outcome")->type_name("CODE");
    command->add_option("--error-message", options->errorMessage, "The outcome in words")->type_name("TEXT");
    command->add_option("milestone", options->milestone, "prepare, start or end")
        ->required()
        ->transform(OneOf(Milestones()))
        ->type_name("MILESTONE");
    command->add_option("fields", options->fields, "Further fields of the events")->type_name("NAME=VALUE");
    SetAction(*command, chosen, options, Send);
}

} // namespace

void AddReportCommands(CLI::App &app, Chosen &chosen)
{
    CLI::App *family =
        AddCommand(app, "report", "Events for those who operate sync services", "nubis report list --limit 10");
    family->require_subcommand(1);
    AddSend(*family, chosen);
    auto options = std::make_shared<ReportOptions>();
    CLI::App *list = AddCommand(*family, "list",
        "The events that were kept, newest last: milestones of sync runs, and failures that the library met",
        "nubis report list --limit 10");
    AddUserOption(*list, options->common.user);
    AddJsonOption(*list, options->common.json);
    list->add_option("--trace", options->trace, "Only events of this trace id [all]")->type_name("ID");
    list->add_option("--limit", options->limit, "At most so many, the newest")
        ->check(WholeNumber(1))
        ->type_name("N")
        ->capture_default_str();
    list->add_flag("--all", options->all, "All events, however many");
    SetAction(*list, chosen, options, List);
}

} // namespace NubisTool
