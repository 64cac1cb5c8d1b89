// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <memory>
#include <ostream>
#include <sstream>

#include <json/json.h>

#include "child_process.h"
#include "command_error.h"
#include "common_options.h"
#include "error_text.h"
#include "interrupt.h"
#include "record_json.h"
#include "row_reader.h"
#include "service_program.h"
#include "session.h"
#include "table.h"

namespace NubisTool {
namespace {

using Nubis::NBContainerInfo;
using Nubis::NBSchemaField;

struct CatalogueOptions {
    CommonOptions common;
    std::vector<std::string> files;
    std::string bundle;
};

// The checks live in the service's program, so that a file that passes here is taken there.
int RunProgram(std::vector<std::string> arguments, const std::string &advice, const CatalogueOptions &options,
    const Console &console)
{
    InterruptGuard guard(SecondSignal::IS_REMEMBERED);
    arguments.insert(arguments.end(), options.files.begin(), options.files.end());
    ChildProcess program({std::move(arguments), {}, true, true});
    program.CloseInput();
    std::string said = program.ReadAll();
    int status = program.WaitForwardingSignals();
    if (options.common.json) {
        Json::Value json(Json::objectValue);
        json["ok"] = status == EXIT_DONE;
        json["messages"] = Json::Value(Json::arrayValue);
        std::istringstream lines(said);
        for (std::string line; std::getline(lines, line);) {
            json["messages"].append(line);
        }
        console.out << PrettyText(json) << '\n';
    } else if (status == EXIT_DONE) {
        console.out << said;
    } else {
        throw CommandError(said, advice, status);
    }
    return status;
}

int Check(const CatalogueOptions &options, const Console &console)
{
    return RunProgram({FindServiceProgram(options.common.user), "check-catalogue"},
        "correct the file; docs/service.md says what may stand in it", options, console);
}

int Apply(const CatalogueOptions &options, const Console &console)
{
    int user = options.common.user;
    return RunProgram({FindServiceProgram(user), "apply-catalogue", "--data", ServiceDataFolder(user)},
        "correct what the message names, and apply all of the files again", options, console);
}

std::vector<Nubis::NBAppBriefInfo> AllBriefInfos(Session &session)
{
    std::vector<Nubis::NBAppBriefInfo> infos;
    bool hasMore = true;
    int index = 0;
    while (hasMore) {
        size_t before = infos.size();
        int next = index;
        Nubis::NBUploadSize size;
        ThrowIfError(session.Kit().GetCloudAppBriefInfo(index, infos, hasMore, next, size), "reading the catalogue");
        if (hasMore && (infos.size() == before || next <= index)) {
            throw CommandError("the service says that the catalogue goes on, but gives no more of it",
                "restart the service with `nubis service stop` and try again");
        }
        index = next;
    }
    return infos;
}

// What an app's whole and its brief information have alike.
template <typename AppInfo>
Json::Value BriefJson(const AppInfo &app)
{
    Json::Value json(Json::objectValue);
    json["bundleName"] = app.bundleName;
    json["appId"] = app.appId;
    json["schemaGroupVersion"] = app.schemaGroupVersion;
    json["enableCloud"] = app.enableCloud;
    json["switchStatus"] = app.switchStatus;
    return json;
}

int List(const CatalogueOptions &options, const Console &console)
{
    Session session(options.common);
    std::vector<Nubis::NBAppBriefInfo> infos = AllBriefInfos(session);
    if (options.common.json) {
        Json::Value json(Json::arrayValue);
        for (const Nubis::NBAppBriefInfo &info : infos) {
            json.append(BriefJson(info));
        }
        console.out << PrettyText(json) << '\n';
        return EXIT_DONE;
    }
    if (infos.empty()) {
        console.out << "the catalogue is empty; add a bundle with `nubis catalogue apply FILE`\n";
        return EXIT_DONE;
    }
    Table table(
        {{"BUNDLE"}, {"APP ID"}, {"SCHEMA GROUP", Align::RIGHT}, {"CLOUD", Align::RIGHT}, {"SWITCH", Align::RIGHT}});
    for (const Nubis::NBAppBriefInfo &info : infos) {
        table.Add({info.bundleName, info.appId, std::to_string(info.schemaGroupVersion),
            std::to_string(info.enableCloud), std::to_string(info.switchStatus)});
    }
    table.Print(console.out, console.outWidth);
    return EXIT_DONE;
}

std::string Traits(const NBSchemaField &field, const Nubis::NBSchemaNode &type)
{
    std::string traits;
    auto add = [&traits](bool has, const std::string &name) {
        if (has) {
            traits += (traits.empty() ? "" : ", ") + name;
        }
    };
    add(field.primary, "primary");
    add(field.nullable, "nullable");
    add(field.queryable, "queryable");
    add(field.sortable, "sortable");
    add(field.searchable, "searchable");
    for (const std::string &name : type.dupCheckFields) {
        add(name == field.name, "duplicate check");
    }
    return traits;
}

std::string TypeText(const NBSchemaField &field)
{
    std::string text = FieldTypeName(field.type);
    if (field.type == Nubis::NB_FIELD_LIST) {
        text += " of " + FieldTypeName(field.listType);
    }
    return field.refRecordType.empty() ? text : text + " to " + field.refRecordType;
}

void PrintContainer(const NBContainerInfo &container, const std::string &kind, const Console &console)
{
    console.out << '\n'
                << kind << ' ' << container.containerName << ": schema version " << container.schema.version
                << ", at most " << container.maxBatchNumber << " records in a request\n";
    for (const auto &[name, type] : container.schema.recordTypes) {
        console.out << '\n' << "  " << name << '\n';
        Table table({{"  FIELD"}, {"TYPE"}, {"TRAITS"}});
        for (const auto &[fieldName, field] : type.fields) {
            table.Add({"  " + fieldName, TypeText(field), Traits(field, type)});
        }
        table.Print(console.out, console.outWidth);
    }
}

Json::Value ContainerJson(const NBContainerInfo &container)
{
    Json::Value json(Json::objectValue);
    json["name"] = container.containerName;
    json["databaseName"] = container.databaseName;
    json["maxBatchNumber"] = container.maxBatchNumber;
    std::string error;
    ParseJsonText(container.schema.schemaData, json["schema"], error);
    return json;
}

int Show(const CatalogueOptions &options, const Console &console)
{
    Session session(options.common);
    Nubis::NBAppInfo app = session.App(options.bundle);
    if (options.common.json) {
        Json::Value json = BriefJson(app);
        json["defaultContainer"] = ContainerJson(app.defaultContainer);
        json["sharedContainer"] = Json::Value(Json::arrayValue);
        for (const NBContainerInfo &container : app.sharedContainers) {
            json["sharedContainer"].append(ContainerJson(container));
        }
        console.out << PrettyText(json) << '\n';
        return EXIT_DONE;
    }
    console.out << "bundle " << app.bundleName << ", app " << app.appId << ", schema group version "
                << app.schemaGroupVersion << '\n';
    PrintContainer(app.defaultContainer, "default container", console);
    for (const NBContainerInfo &container : app.sharedContainers) {
        PrintContainer(container, "container", console);
    }
    return EXIT_DONE;
}

} // namespace

void AddCatalogueCommands(CLI::App &app, Chosen &chosen)
{
    CLI::App *family =
        AddCommand(app, "catalogue", "The bundles, containers and schemas of the service", "nubis catalogue list");
    family->require_subcommand(1);
    auto options = std::make_shared<CatalogueOptions>();
    auto addFiles = [&options](CLI::App &command) {
        command.add_option("files", options->files, "Catalogue files, one bundle each")->required()->type_name("FILE");
        AddUserOption(command, options->common.user);
        AddJsonOption(command, options->common.json);
    };

    CLI::App *check =
        AddCommand(*family, "check", "Check catalogue files without applying them", "nubis catalogue check notes.json");
    addFiles(*check);
    SetAction(*check, chosen, options, Check);

    CLI::App *apply = AddCommand(*family, "apply", "Check catalogue files and give them to the service, running or not",
        "nubis catalogue apply notes.json");
    addFiles(*apply);
    SetAction(*apply, chosen, options, Apply);

    CLI::App *list = AddCommand(*family, "list", "List the bundles", "nubis catalogue list");
    AddServiceOptions(*list, options->common);
    SetAction(*list, chosen, options, List);

    CLI::App *show = AddCommand(*family, "show", "Show a bundle's containers, record types and fields",
        "nubis catalogue show com.example.notes");
    AddServiceOptions(*show, options->common);
    show->add_option("bundle", options->bundle, "Bundle name")->required()->type_name("BUNDLE");
    SetAction(*show, chosen, options, Show);

    AddCatalogueAppCommands(*family, chosen);
}

} // namespace NubisTool
