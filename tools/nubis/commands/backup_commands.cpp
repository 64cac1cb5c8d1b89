// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <filesystem>
#include <memory>
#include <ostream>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "record_json.h"
#include "service_request.h"
#include "session.h"

namespace NubisTool {
namespace {

struct BackupOptions {
    CommonOptions common;
    std::string folder;
    bool replace = false;
};

// The service's own folder is another one, so it is told the whole path.
Json::Value RequestFor(const char *function, const BackupOptions &options)
{
    Json::Value request(Json::objectValue);
    request["function"] = function;
    request["folder"] = std::filesystem::absolute(options.folder).string();
    return request;
}

int Export(const BackupOptions &options, const Console &console)
{
    Session session(options.common);
    Json::Value backup =
        AskService(session, {RequestFor("exportData", options), "backup", "the export",
                                "the backup that was there, if there was one, is as it was; mend what the message "
                                "names, and export again"});
    if (options.common.json) {
        console.out << PrettyText(backup) << '\n';
        return EXIT_DONE;
    }
    for (const Json::Value &file : backup["files"]) {
        console.out << file["entries"].asString() << '\t' << file["name"].asString() << '\n';
    }
    console.out << "exported to " << backup["folder"].asString()
                << "; it holds keys and records in plain text, keep it as safe as the data itself\n";
    return EXIT_DONE;
}

int Import(const BackupOptions &options, const Console &console)
{
    Session session(options.common);
    Json::Value request = RequestFor("importData", options);
    request["replace"] = options.replace;
    Json::Value backup = AskService(session, {request, "backup", "the import",
                                                 "nothing was changed unless the message says so; --replace puts the "
                                                 "backup in the place of data that is there"});
    if (options.common.json) {
        console.out << PrettyText(backup) << '\n';
    } else {
        console.out << "imported from " << backup["folder"].asString()
                    << "; whoever follows changes must begin without a cursor\n";
    }
    return EXIT_DONE;
}

} // namespace

void AddBackupCommands(CLI::App &service, Chosen &chosen)
{
    auto options = std::make_shared<BackupOptions>();
    auto add = [&](const char *verb, const char *description, const char *example, const char *folder,
                   int (*act)(const BackupOptions &, const Console &)) {
        CLI::App *command = AddCommand(service, verb, description, example);
        AddServiceOptions(*command, options->common);
        command->add_option("folder", options->folder, folder)->required()->type_name("DIR");
        SetAction(*command, chosen, options, act);
        return command;
    };
    add("export", "Write all data of the account into a folder, as it is at one moment", "nubis service export backup",
        "Folder for it: a new one, or one of an earlier export, which is replaced", Export);
    add("import", "Put all data of an exported folder into the service, or change nothing",
        "nubis service import backup --replace", "Folder that was exported to", Import)
        ->add_flag("--replace", options->replace, "Drop the data that is there for that of the folder");
}

} // namespace NubisTool
