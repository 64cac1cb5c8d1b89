// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <memory>

#include "command_error.h"
#include "common_options.h"
#include "interrupt.h"
#include "watcher.h"

namespace NubisTool {
namespace {

int Watch(const WatchOptions &options, const Console &console)
{
    if (options.common.bundle.empty() && (options.fetch || options.subscribe || !options.common.container.empty())) {
        throw UsageError("--fetch, --subscribe and --container need to know the bundle", "name it with --bundle");
    }
    InterruptGuard guard;
    Watcher watcher(options, console);
    watcher.Run();
    return Interrupted() && options.count != 0 && !watcher.HasCounted() ? EXIT_INTERRUPTED : EXIT_DONE;
}

} // namespace

void AddWatchCommand(CLI::App &app, Chosen &chosen)
{
    auto options = std::make_shared<WatchOptions>();
    CLI::App *command = AddCommand(app, "watch", "Show the notifications of changes as they come, until interrupted",
        "nubis watch --bundle com.example.notes --subscribe --fetch");
    AddServiceOptions(*command, options->common);
    AddBundleOption(*command, options->common)->description("Only of this bundle [all]");
    command->add_option("--container", options->common.container, "Only of this container of the bundle")
        ->type_name("NAME");
    command->add_flag("--raw", options->raw, "Print each as it came, for `nubis notify verify`")->excludes("--json");
    command->add_flag("--fetch", options->fetch, "Print the changes that they announce, too");
    command->add_flag("--subscribe", options->subscribe,
        "Subscribe the container, or the bundle's default one, for as long as this runs, unless it is subscribed");
    CLI::Option *count = command->add_option("--count", options->count, "End after so many notifications")
                             ->check(WholeNumber(1))
                             ->type_name("N");
    command
        ->add_flag(
            "--once", [options](int64_t) { options->count = 1; }, "End after the first notification")
        ->excludes(count);
    SetAction(*command, chosen, options, Watch);
}

} // namespace NubisTool
