// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <memory>
#include <ostream>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "error_text.h"
#include "record_json.h"
#include "session.h"

namespace NubisTool {
namespace {

int Info(const CommonOptions &options, const Console &console)
{
    Session session(options);
    Nubis::NBUserInfo info;
    ThrowIfError(session.Kit().GetCloudUserInfo(info, true), "reading the user's information");
    if (options.json) {
        Json::Value json(Json::objectValue);
        json["userId"] = info.userId;
        json["cloudStatus"] = info.cloudStatus;
        json["totalSpace"] = Json::UInt64(info.totalSpace);
        json["remainSpace"] = Json::UInt64(info.remainSpace);
        json["isSpaceFull"] = info.isSpaceFull;
        json["pushKeyId"] = info.pushKeyId;
        console.out << PrettyText(json) << '\n';
        return EXIT_DONE;
    }
    console.out << "cloud user       " << info.userId << '\n'
                << "cloud status     " << info.cloudStatus << '\n'
                << "total space      " << info.totalSpace << " bytes\n"
                << "remaining space  " << info.remainSpace << " bytes" << (info.isSpaceFull ? " (full)" : "") << '\n'
                << "push key         " << (info.pushKeyId.empty() ? "none" : info.pushKeyId) << '\n';
    return EXIT_DONE;
}

} // namespace

void AddUserCommands(CLI::App &app, Chosen &chosen)
{
    CLI::App *family = AddCommand(app, "user", "The signed-in cloud user", "nubis user info");
    family->require_subcommand(1);
    auto options = std::make_shared<CommonOptions>();
    CLI::App *info = AddCommand(*family, "info", "Who is signed in, and how much space is left", "nubis user info");
    AddServiceOptions(*info, *options);
    SetAction(*info, chosen, options, Info);
}

} // namespace NubisTool
