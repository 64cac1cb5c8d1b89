// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "watcher.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <ostream>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

#include "change_printer.h"
#include "command_error.h"
#include "error_text.h"
#include "host/event_channel.h"
#include "interrupt.h"
#include "record_json.h"
#include "row_reader.h"
#include "subscription_calls.h"
#include "table.h"
#include "time_text.h"

namespace NubisTool {
namespace {

// A watcher that is killed leaves its subscription for no longer than this.
constexpr uint64_t SUBSCRIPTION_SECONDS = 3600;
constexpr std::chrono::minutes RENEWAL_TIME(20);

int64_t NowMs()
{
    auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

std::string OrDash(const std::string &text)
{
    return text.empty() ? "-" : Printable(text);
}

} // namespace

Watcher::Watcher(const WatchOptions &options, const Console &console)
    : options_(options), console_(console), session_(options.common), finished_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (finished_ < 0) {
        throw CommandError("cannot make another file descriptor", "close other programs");
    }
}

Watcher::~Watcher()
{
    EndSubscription();
    close(finished_);
}

void Watcher::Run()
{
    FetchPushKey(session_);
    Prepare();
    std::string eventName = session_.Kit().GetCloudSyncSaName();
    {
        Host::EventListener listener(
            options_.common.user, eventName, [this](const std::string &text) { OnEvent(text); }, [this] { OnGap(); });
        std::string error;
        if (!listener.Start(error)) {
            throw CommandError("cannot listen to " + eventName + ": " + error,
                "check NUBIS_RUNTIME_DIR, whose folder must be this user's own");
        }
        // Only now, so that nothing that is notified is missed.
        SubscribeIfNeeded();
        if (console_.errIsTerminal) {
            console_.err << "nubis: listening, until Ctrl-C" << std::endl;
        }
        Wait();
    }
    if (failure_ != nullptr) {
        std::rethrow_exception(failure_);
    }
}

// Where the changes begin that --fetch prints. Taken before anything is heard: what changes in between is fetched with
// the next notification of its type.
void Watcher::Prepare()
{
    if (!options_.fetch) {
        return;
    }
    for (Nubis::NBDatabaseScope scope : {Nubis::NB_DATABASE_PRIVATE, Nubis::NB_DATABASE_SHARED}) {
        auto database = session_.Container().GetDatabaseWithdatabaseScope(scope);
        for (const auto &type : session_.ContainerInfo().schema.recordTypes) {
            ThrowIfError(
                database->GetStartCursor(type.first, cursors_[{scope, type.first}]), "reading the present cursor");
        }
    }
}

// Another's subscription is left as it is: saving it again would change when it ends.
void Watcher::SubscribeIfNeeded()
{
    std::string containerName = options_.common.container;
    if (options_.subscribe) {
        containerName = session_.ContainerInfo().containerName;
    }
    for (const Json::Value &other : ListSubscriptions(session_, options_.common.bundle, containerName)) {
        if (other["saName"].asString() == session_.Kit().GetCloudSyncSaName()) {
            return;
        }
    }
    if (options_.subscribe) {
        RenewSubscription();
    } else {
        console_.err << "nubis: nothing that is watched has a subscription, so nothing will be heard\n"
                     << "  next: add one with `nubis subscription add`, or watch with --subscribe" << std::endl;
    }
}

void Watcher::RenewSubscription()
{
    Nubis::NBContainerSubscriptionResult result = Subscribe(session_,
        {{options_.common.bundle, session_.ContainerInfo().containerName, "",
            ExpirationIn(SUBSCRIPTION_SECONDS)}}).front();
    ThrowIfError(result.error, "subscribing");
    subscriptionId_ = result.id;
}

void Watcher::EndSubscription()
{
    if (subscriptionId_.empty()) {
        return;
    }
    std::string problem;
    try {
        Nubis::NBError error = Unsubscribe(
            session_, {{options_.common.bundle, session_.ContainerInfo().containerName, subscriptionId_, 0}})
                                   .front()
                                   .error;
        problem = error.HasError() ? ErrorText(error) : "";
    } catch (const CommandError &error) {
        problem = error.what();
    }
    if (!problem.empty()) {
        console_.err << "nubis: the subscription could not be removed and ends within an hour: " << problem
                     << "\n  next: remove it with `nubis subscription remove " << subscriptionId_ << "`" << std::endl;
    }
}

void Watcher::Wait()
{
    auto time = std::chrono::duration_cast<std::chrono::milliseconds>(RENEWAL_TIME);
    while (true) {
        std::array<struct pollfd, 2> entries = {{{finished_, POLLIN, 0}, {InterruptDescriptor(), POLLIN, 0}}};
        int ready = poll(entries.data(), entries.size(), static_cast<int>(time.count()));
        if (ready > 0 || Interrupted()) {
            return;
        }
        if (ready == 0 && !subscriptionId_.empty()) {
            RenewSubscription();
        }
    }
}

void Watcher::Finish()
{
    isOver_ = true;
    uint64_t one = 1;
    if (write(finished_, &one, sizeof(one)) < 0 && errno != EAGAIN) {
        failure_ = std::make_exception_ptr(CommandError("cannot end the watch", "interrupt it"));
    }
}

template <typename Action>
void Watcher::Guarded(Action &&action) noexcept
{
    if (isOver_) {
        return;
    }
    try {
        action();
    } catch (...) {
        failure_ = std::current_exception();
        Finish();
        return;
    }
    if (!console_.out) {
        Finish();
    }
}

void Watcher::OnEvent(const std::string &text) noexcept
{
    Guarded([&] {
        Notification notification = ReadNotification(session_.Kit(), text);
        if (IsWanted(notification)) {
            Handle(notification);
        }
    });
}

void Watcher::OnGap() noexcept
{
    Guarded([&] {
        console_.err << "nubis: notifications were lost because too many waited to be read\n"
                     << (options_.fetch ? "  next: nothing; all types are fetched now"
                                        : "  next: read what has changed with `nubis changes`")
                     << std::endl;
        for (const auto &cursor : cursors_) {
            FetchPart(cursor.first);
        }
    });
}

// What is refused may claim anything, so it is shown to everyone.
bool Watcher::IsWanted(const Notification &notification) const
{
    const CommonOptions &common = options_.common;
    return !notification.IsVerified() ||
           ((common.bundle.empty() || notification.event.bundleName == common.bundle) &&
               (common.container.empty() || notification.event.containerName == common.container));
}

void Watcher::Handle(const Notification &notification)
{
    Print(notification);
    if (options_.fetch && notification.IsVerified()) {
        FetchAnnounced(notification);
    }
    ++printed_;
    if (printed_ == options_.count) {
        counted_ = true;
        Finish();
    }
}

void Watcher::Print(const Notification &notification)
{
    int64_t now = NowMs();
    if (options_.raw) {
        Json::Value json;
        std::string problem;
        console_.out << (ParseJsonText(notification.text, json, problem) ? CompactText(json)
                                                                         : Printable(notification.text))
                     << '\n';
    } else if (options_.common.json) {
        Json::Value json = NotificationToJson(notification);
        json["time"] = Json::Int64(now);
        console_.out << CompactText(json) << '\n';
    } else {
        const Nubis::NBRecordChangeEvent &event = notification.event;
        console_.out << TimeText(now) << "  " << OrDash(event.bundleName) << "/" << OrDash(event.containerName) << "  "
                     << OrDash(ScopesText(notification)) << "  " << OrDash(TypesText(notification)) << "  "
                     << OrDash(event.prepareTraceId) << "  "
                     << (notification.IsVerified() ? "verified" : "refused: " + Printable(notification.refusal))
                     << '\n';
    }
    console_.out.flush();
}

void Watcher::FetchAnnounced(const Notification &notification)
{
    // One for another container than the default one that is fetched from.
    if (notification.event.containerName != session_.ContainerInfo().containerName) {
        return;
    }
    for (Nubis::NBDatabaseScope scope : notification.event.databaseScopes) {
        for (const std::string &type : notification.event.recordTypes) {
            FetchPart({scope, type});
        }
    }
}

void Watcher::FetchPart(const DatabasePart &part)
{
    auto cursor = cursors_.find(part);
    // A type that the catalogue got later has no cursor: the beginning is the right one.
    std::string from = cursor == cursors_.end() ? "" : cursor->second;
    auto database = session_.Container().GetDatabaseWithdatabaseScope(part.first);
    cursors_[part] = PrintChanges(database, from, {part.second, {}}, options_.common.json, console_);
}

} // namespace NubisTool
