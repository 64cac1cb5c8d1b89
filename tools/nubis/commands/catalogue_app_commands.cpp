// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "error_text.h"
#include "record_json.h"
#include "session.h"
#include "table.h"

namespace NubisTool {
namespace {

struct AppOptions {
    CommonOptions common;
    std::vector<std::string> bundles;
};

int Switches(const AppOptions &options, const Console &console)
{
    Session session(options.common);
    std::map<std::string, Nubis::NBAppSwitchStatus> switches;
    const bool isFileKind = options.common.demon == Nubis::NB_SYNC_DEMON_FILE;
    ThrowIfError(isFileKind ? session.Kit().GetCloudFileAppSwitches(options.bundles, switches)
                            : session.Kit().GetCloudAppSwitches(options.bundles, switches),
        "reading the switches");
    Json::Value json(Json::objectValue);
    Table table({{"BUNDLE"}, {"SWITCH", Align::RIGHT}});
    for (const std::string &bundle : options.bundles) {
        auto found = switches.find(bundle);
        if (found == switches.end()) {
            throw CommandError("the catalogue has no bundle " + bundle,
                "see `nubis catalogue list`, or add it with `nubis catalogue apply FILE`");
        }
        json[bundle] = found->second;
        table.Add({bundle, std::to_string(found->second)});
    }
    if (options.common.json) {
        console.out << PrettyText(json) << '\n';
    } else {
        table.Print(console.out, console.outWidth);
    }
    return EXIT_DONE;
}

int Params(const AppOptions &options, const Console &console)
{
    Session session(options.common);
    const std::string &bundle = options.bundles.front();
    std::map<std::string, std::string> params;
    ThrowIfError(session.Kit().GetAppConfigParams(bundle, params), "reading the parameters of " + bundle);
    // The library hands out every text of the answer; this one is of the request.
    params.erase("traceId");
    Json::Value json(Json::objectValue);
    Table table({{"PARAMETER"}, {"VALUE"}});
    for (const auto &[name, value] : params) {
        json[name] = value;
        table.Add({name, value});
    }
    if (options.common.json) {
        console.out << PrettyText(json) << '\n';
    } else if (params.empty()) {
        console.out << bundle << " has no parameters; they are \"configParams\" in its catalogue file\n";
    } else {
        table.Print(console.out, console.outWidth);
    }
    return EXIT_DONE;
}

} // namespace

void AddCatalogueAppCommands(CLI::App &catalogue, Chosen &chosen)
{
    auto options = std::make_shared<AppOptions>();
    CLI::App *switches = AddCommand(catalogue, "switches", "Show whether bundles are switched on for the cloud",
        "nubis catalogue switches com.example.notes");
    AddServiceOptions(*switches, options->common);
    switches->add_option("bundles", options->bundles, "Bundle names")->required()->type_name("BUNDLE");
    SetAction(*switches, chosen, options, Switches);

    CLI::App *params = AddCommand(catalogue, "params", "Show the configuration parameters of a bundle",
        "nubis catalogue params com.example.notes");
    AddServiceOptions(*params, options->common);
    params->add_option("bundle", options->bundles, "Bundle name")->required()->expected(1)->type_name("BUNDLE");
    SetAction(*params, chosen, options, Params);
}

} // namespace NubisTool
