// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <map>
#include <memory>
#include <ostream>
#include <utility>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "error_text.h"
#include "record_json.h"
#include "session.h"
#include "subscription_calls.h"
#include "table.h"
#include "time_text.h"

namespace NubisTool {
namespace {

using Nubis::NBContainerSubscription;
using Nubis::NBContainerSubscriptionResult;

constexpr uint64_t LONGEST_SECONDS = 365UL * 24 * 3600;

struct SubscriptionOptions {
    CommonOptions common;
    std::vector<std::string> containers;
    std::vector<std::string> ids;
    uint64_t seconds = 0;
    std::string traceId;
};

std::string NameOf(const NBContainerSubscriptionResult &result)
{
    return result.bundleName + "/" + result.containerName;
}

// Prints what came of each subscription; the exit status is that of the worst.
int Report(const SubscriptionResults &results, const char *verb, const char *member, const SubscriptionOptions &options,
    const Console &console)
{
    bool isAllDone = true;
    Json::Value list(Json::arrayValue);
    for (const NBContainerSubscriptionResult &result : results) {
        bool isDone = !result.error.HasError();
        isAllDone = isAllDone && isDone;
        Json::Value json(Json::objectValue);
        json["id"] = result.id;
        json["bundleName"] = result.bundleName;
        json["containerName"] = result.containerName;
        json[member] = isDone;
        if (!isDone) {
            json["reason"] = ErrorText(result.error);
            console.err << "nubis: " << NameOf(result) << (result.id.empty() ? "" : " " + result.id) << ": "
                        << ErrorText(result.error) << "\n  next: " << ErrorAdvice(result.error) << '\n';
        } else if (result.expirationTime != 0) {
            json["expirationTime"] = Json::Int64(result.expirationTime);
        }
        list.append(std::move(json));
        if (isDone && !options.common.json) {
            console.out << verb << " " << result.id << " of " << NameOf(result)
                        << (result.expirationTime == 0 ? "" : ", until " + TimeText(result.expirationTime)) << '\n';
        }
    }
    if (options.common.json) {
        console.out << PrettyText(list) << '\n';
    }
    return isAllDone ? EXIT_DONE : EXIT_OPERATION_FAILED;
}

int Add(const SubscriptionOptions &options, const Console &console)
{
    Session session(options.common);
    FetchPushKey(session);
    std::vector<std::string> containers = options.containers;
    if (containers.empty()) {
        containers.push_back(session.ContainerInfo().containerName);
    }
    std::vector<NBContainerSubscription> wanted;
    wanted.reserve(containers.size());
    for (const std::string &container : containers) {
        wanted.push_back({options.common.bundle, container, "", ExpirationIn(options.seconds)});
    }
    return Report(Subscribe(session, wanted), "subscription", "saved", options, console);
}

int List(const SubscriptionOptions &options, const Console &console)
{
    Session session(options.common);
    Json::Value subscriptions = ListSubscriptions(session, options.common.bundle, options.common.container);
    if (options.common.json) {
        console.out << PrettyText(subscriptions) << '\n';
        return EXIT_DONE;
    }
    if (subscriptions.empty()) {
        console.out << "no subscriptions\n";
        return EXIT_DONE;
    }
    Table table({{"ID"}, {"BUNDLE"}, {"CONTAINER"}, {"EVENT"}, {"EXPIRES"}});
    for (const Json::Value &subscription : subscriptions) {
        table.Add({subscription["id"].asString(), subscription["bundleName"].asString(),
            subscription["containerName"].asString(), subscription["saName"].asString(),
            TimeText(subscription["expirationTime"].asInt64())});
    }
    table.Print(console.out, console.outWidth);
    return EXIT_DONE;
}

// The subscriptions of the ids, with the containers that they belong to; throws when one is not there.
std::vector<NBContainerSubscription> FindByIds(Session &session, const std::vector<std::string> &ids)
{
    std::map<std::string, NBContainerSubscription> known;
    for (const Json::Value &subscription : ListSubscriptions(session, "", "")) {
        std::string id = subscription["id"].asString();
        known[id] = {subscription["bundleName"].asString(), subscription["containerName"].asString(), id, 0};
    }
    std::vector<NBContainerSubscription> found;
    for (const std::string &id : ids) {
        auto subscription = known.find(id);
        if (subscription == known.end()) {
            throw CommandError("there is no subscription \"" + id + "\", or it has expired; nothing was done",
                "see `nubis subscription list`");
        }
        found.push_back(subscription->second);
    }
    return found;
}

int Remove(const SubscriptionOptions &options, const Console &console)
{
    RequireDistinct(options.ids, "subscription id", "nubis subscription list");
    Session session(options.common);
    return Report(Unsubscribe(session, FindByIds(session, options.ids)), "removed", "removed", options, console);
}

int NotifyOne(const SubscriptionOptions &options, const Console &console)
{
    Session session(options.common);
    NBContainerSubscription named = FindByIds(session, options.ids).front();
    NBContainerSubscriptionResult result;
    result.error = Notify(session, named, options.traceId);
    result.bundleName = named.bundleName;
    result.containerName = named.containerName;
    result.id = named.id;
    return Report({result}, "notified", "notified", options, console);
}

} // namespace

void AddSubscriptionCommands(CLI::App &app, Chosen &chosen)
{
    CLI::App *family = AddCommand(app, "subscription", "Notifications of changes, which `nubis watch` shows",
        "nubis subscription add --bundle com.example.notes");
    family->require_subcommand(1);
    auto options = std::make_shared<SubscriptionOptions>();
    auto add = [&](const char *verb, const char *description, const char *example, auto act) {
        CLI::App *command = AddCommand(*family, verb, description, example);
        AddServiceOptions(*command, options->common);
        SetAction(*command, chosen, options, act);
        return command;
    };
    CLI::App *save = add("add", "Have changes of containers notified to the demon, or renew it",
        "nubis subscription add --bundle com.example.notes --for 3600", Add);
    AddBundleOption(*save, options->common)->required();
    save->add_option("--container", options->containers,
            "Container of the bundle, for several given several times [its default container]")
        ->allow_extra_args(false)
        ->type_name("NAME");
    save->add_option("--for", options->seconds, "How long it lasts [as long as the service allows]")
        ->check(WholeNumber(1, LONGEST_SECONDS))
        ->type_name("SECONDS");

    CLI::App *list = add("list", "The subscriptions of all containers, or of some, and when they expire",
        "nubis subscription list --bundle com.example.notes", List);
    AddBundleOption(*list, options->common)->description("Only of this bundle [all]");
    list->add_option("--container", options->common.container, "Only of containers of this name [all]")
        ->type_name("NAME");

    CLI::App *remove =
        add("remove", "End subscriptions", "nubis subscription remove 2f0a6c46c2d94f1ebd1f1d4ad9c3a0b7", Remove);
    remove->add_option("ids", options->ids, "Subscriptions")->required()->type_name("ID");
    CLI::App *notify = add("notify", "Send a notification as if the container had changed",
        "nubis subscription notify 2f0a6c46c2d94f1ebd1f1d4ad9c3a0b7", NotifyOne);
    notify->add_option("id", options->ids, "Subscription")->required()->expected(1)->type_name("ID");
    notify->add_option("--trace", options->traceId, "Name of the user action that it is said to come from")
        ->type_name("TEXT");
}

} // namespace NubisTool
