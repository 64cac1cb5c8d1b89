// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <memory>
#include <ostream>
#include <utility>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "record_json.h"
#include "row_reader.h"
#include "service_request.h"
#include "session.h"
#include "table.h"

namespace NubisTool {
namespace {

constexpr const char *SEE_ALL = "see `nubis config list` for the settings and their values";

struct ConfigOptions {
    CommonOptions common;
    std::string name;
    std::string value;
};

Json::Value AllSettings(const ConfigOptions &options)
{
    Json::Value request(Json::objectValue);
    request["function"] = "getSettings";
    Session session(options.common);
    return AskService(session, {request, "settings", "reading the settings", SEE_ALL});
}

std::string ValueText(const Json::Value &setting)
{
    return setting.isMember("value") ? CompactText(setting["value"]) : "unset";
}

int List(const ConfigOptions &options, const Console &console)
{
    Json::Value settings = AllSettings(options);
    if (options.common.json) {
        console.out << PrettyText(settings) << '\n';
        return EXIT_DONE;
    }
    Table table({{"NAME"}, {"VALUE"}, {"STATE"}, {"DEFAULT"}});
    for (const Json::Value &setting : settings) {
        table.Add({setting["name"].asString(), ValueText(setting), setting["state"].asString(),
            CompactText(setting["default"])});
    }
    table.Print(console.out, console.outWidth);
    return EXIT_DONE;
}

int Get(const ConfigOptions &options, const Console &console)
{
    for (const Json::Value &setting : AllSettings(options)) {
        if (setting["name"].asString() == options.name) {
            console.out << (options.common.json ? PrettyText(setting) : ValueText(setting)) << '\n';
            return EXIT_DONE;
        }
    }
    throw CommandError("there is no setting \"" + options.name + "\"", SEE_ALL);
}

// JSON, or a bare word that needs no quotes in the shell.
Json::Value ReadValue(const std::string &text)
{
    Json::Value value;
    std::string error;
    if (ParseJsonText(text, value, error)) {
        return value;
    }
    if (text.find_first_of("[]{}\"") != std::string::npos) {
        throw UsageError("the value is no JSON: " + error,
            R"(put JSON into single quotes, as in '{"flowSpeedLimit": 100, "flowThreshold": 10}')");
    }
    return Json::Value(text);
}

// Sends a change, of which `member` says what kind it is.
int Change(const ConfigOptions &options, const char *member, const Json::Value &value, const Console &console)
{
    Json::Value request(Json::objectValue);
    request["function"] = "setSetting";
    request["name"] = options.name;
    request[member] = value;
    Session session(options.common);
    Json::Value setting = AskService(session, {request, "setting", "changing the setting", SEE_ALL});
    if (options.common.json) {
        console.out << PrettyText(setting) << '\n';
    } else {
        console.out << options.name << " is now " << ValueText(setting)
                    << (setting["state"].asString() == "default" ? " (the default)" : "") << '\n';
    }
    return EXIT_DONE;
}

} // namespace

void AddConfigCommands(CLI::App &app, Chosen &chosen)
{
    CLI::App *family = AddCommand(app, "config", "Settings of the service, which clients fetch", "nubis config list");
    family->require_subcommand(1);
    auto options = std::make_shared<ConfigOptions>();
    auto add = [&](const char *verb, const char *description, const char *example, bool isForOne,
                   std::function<int(const ConfigOptions &, const Console &)> act) {
        CLI::App *command = AddCommand(*family, verb, description, example);
        AddServiceOptions(*command, options->common);
        if (isForOne) {
            command->add_option("name", options->name, "Setting")->required()->type_name("NAME");
        }
        SetAction(*command, chosen, options, std::move(act));
        return command;
    };
    add("list", "All settings", "nubis config list", false, List);
    add("get", "The value of one setting", "nubis config get flowControl", true, Get);
    CLI::App *set = add("set", "Change a setting; clients have it from their next fetch on",
        "nubis config set ohNubisUseAsyncIPC 0", true, [](const ConfigOptions &chosenOptions, const Console &console) {
            return Change(chosenOptions, "value", ReadValue(chosenOptions.value), console);
        });
    set->add_option("value", options->value, "JSON, or a bare word or number")->required()->type_name("VALUE");
    add("unset", "Keep a setting from clients, which then use a value of their own", "nubis config unset checkAlive",
        true, [](const ConfigOptions &chosenOptions, const Console &console) {
            return Change(chosenOptions, "unset", true, console);
        });
    add("reset", "Give a setting its default again", "nubis config reset flowControl", true,
        [](const ConfigOptions &chosenOptions, const Console &console) {
            return Change(chosenOptions, "reset", true, console);
        });
}

} // namespace NubisTool
