// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <memory>
#include <ostream>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "input_text.h"
#include "notification.h"
#include "record_json.h"
#include "session.h"
#include "subscription_calls.h"
#include "table.h"

namespace NubisTool {
namespace {

struct NotifyOptions {
    CommonOptions common;
    std::string file;
};

int Verify(const NotifyOptions &options, const Console &console)
{
    Input input(options.file, console.in);
    std::string text = ReadAll(input.Stream(), input.Name());
    Session session(options.common);
    FetchPushKey(session);
    Notification notification = ReadNotification(session.Kit(), text);
    const Nubis::NBRecordChangeEvent &event = notification.event;
    if (options.common.json) {
        console.out << PrettyText(NotificationToJson(notification)) << '\n';
    } else if (notification.IsVerified()) {
        console.out << "valid\n"
                    << "account    " << Printable(event.accountId) << '\n'
                    << "bundle     " << Printable(event.bundleName) << '\n'
                    << "container  " << Printable(event.containerName) << '\n'
                    << "databases  " << Printable(ScopesText(notification)) << '\n'
                    << "types      " << Printable(TypesText(notification)) << '\n'
                    << "trace id   " << Printable(event.prepareTraceId) << '\n';
    } else {
        console.out << "not valid: " << Printable(notification.refusal) << '\n';
    }
    return notification.IsVerified() ? EXIT_DONE : EXIT_OPERATION_FAILED;
}

} // namespace

void AddNotifyCommands(CLI::App &app, Chosen &chosen)
{
    CLI::App *family = AddCommand(app, "notify", "Notifications of changes", "nubis notify verify notification.json");
    family->require_subcommand(1);
    auto options = std::make_shared<NotifyOptions>();
    CLI::App *verify = AddCommand(*family, "verify",
        "Say whether a notification comes unchanged from the service, and what it announces",
        "nubis notify verify notification.json");
    AddServiceOptions(*verify, options->common);
    verify->add_option("file", options->file, "File with the notification's JSON, - for standard input")
        ->required()
        ->type_name("FILE");
    SetAction(*verify, chosen, options, Verify);
}

} // namespace NubisTool
