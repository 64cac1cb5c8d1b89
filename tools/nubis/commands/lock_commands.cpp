// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <ostream>
#include <utility>

#include <json/json.h>

#include "child_process.h"
#include "command_error.h"
#include "common_options.h"
#include "error_text.h"
#include "interrupt.h"
#include "lock_keeper.h"
#include "lock_session.h"
#include "record_json.h"
#include "service_request.h"
#include "session.h"
#include "table.h"
#include "time_text.h"

namespace NubisTool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds RETRY_TIME(250);
constexpr std::chrono::milliseconds LEAST_RENEWAL_TIME(1000);
constexpr uint64_t LONGEST_WAIT = 86400;

struct LockOptions {
    CommonOptions common;
    std::string sessionId;
    uint64_t wait = 0;
};

std::string NameOf(Session &session)
{
    return "the container " + session.Container().GetContainerName() + " of " + session.Container().GetBundleName();
}

Json::Value LockState(Session &session)
{
    Json::Value request(Json::objectValue);
    request["function"] = "getLockState";
    request["bundleName"] = session.Container().GetBundleName();
    request["containerName"] = session.Container().GetContainerName();
    return AskService(session, {request, "lock", "reading the lock's state", ""});
}

// "locked by the device tablet since 2026-11-21 15:40:52, until 2026-11-21 15:41:52 unless it is renewed"
std::string StateText(const Json::Value &state)
{
    if (!state["locked"].asBool()) {
        return "not locked";
    }
    std::string device = state["deviceName"].asString();
    return "locked by " + (device.empty() ? "an unknown device" : "the device " + Printable(device)) + " since " +
           TimeText(state["since"].asInt64()) + ", until " + TimeText(state["until"].asInt64()) +
           " unless it is renewed";
}

std::string HeldText(Session &session)
{
    Json::Value state = LockState(session);
    // The holder may have given it back meanwhile.
    return NameOf(session) + " is " + (state["locked"].asBool() ? StateText(state) : "locked by others in turn");
}

// Under an InterruptGuard. Throws CommandError when another session holds the lock for longer than the wait.
Nubis::NBLock TakeLock(Session &session, uint64_t wait, const Console &console)
{
    auto database = session.OpenDatabase();
    Clock::time_point deadline = Clock::now() + std::chrono::seconds(wait);
    bool isWaiting = false;
    while (true) {
        Nubis::NBLock lock;
        Nubis::NBError error = database->GetLock(lock);
        if (ErrorReason(error) != LOCK_HELD_REASON) {
            ThrowIfError(error, "taking the lock");
            return lock;
        }
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            throw CommandError(HeldText(session), wait == 0 ? "wait for it with --wait SECONDS, or try again later"
                                                            : "try again later, or wait longer with --wait SECONDS");
        }
        if (!isWaiting) {
            console.err << "nubis: waiting: " << HeldText(session) << std::endl;
            isWaiting = true;
        }
        if (WaitForInterrupt(std::min(left, RETRY_TIME))) {
            throw CommandError("interrupted while waiting for the lock", "", EXIT_INTERRUPTED);
        }
    }
}

Nubis::NBLock RenewOrThrow(Session &session, const std::string &sessionId)
{
    Nubis::NBLock lock{0, sessionId};
    Nubis::NBError error;
    Renewal renewal = RenewLock(*session.OpenDatabase(), sessionId, error);
    if (renewal == Renewal::LOST) {
        throw CommandError("the session " + sessionId + " no longer holds the lock of " + NameOf(session),
            "others may have written meanwhile: take it anew without --session");
    }
    ThrowIfError(error, "renewing the lock");
    return lock;
}

int Take(const LockOptions &options, const Console &console)
{
    Session session(options.common);
    InterruptGuard guard;
    Nubis::NBLock lock =
        options.sessionId.empty() ? TakeLock(session, options.wait, console) : RenewOrThrow(session, options.sessionId);
    if (options.common.json) {
        Json::Value json(Json::objectValue);
        json["lockSessionId"] = lock.lockSessionId;
        json["until"] = LockState(session)["until"];
        console.out << PrettyText(json) << '\n';
    } else {
        console.out << lock.lockSessionId << '\n';
    }
    return EXIT_DONE;
}

int Release(const LockOptions &options, const Console &console)
{
    Session session(options.common);
    Nubis::NBError error = session.OpenDatabase()->DeleteLock({0, options.sessionId});
    if (ErrorReason(error) == LOCK_HELD_REASON) {
        throw CommandError("another session than " + options.sessionId + " holds the lock: " + HeldText(session),
            "give the session that `nubis lock take` printed for this container");
    }
    ThrowIfError(error, "releasing the lock");
    if (options.common.json) {
        Json::Value json(Json::objectValue);
        json["released"] = true;
        console.out << PrettyText(json) << '\n';
    } else {
        console.out << "released the lock of " << NameOf(session) << '\n';
    }
    return EXIT_DONE;
}

int Show(const LockOptions &options, const Console &console)
{
    Session session(options.common);
    Json::Value state = LockState(session);
    if (options.common.json) {
        console.out << PrettyText(state) << '\n';
    } else {
        console.out << NameOf(session) << " is " << StateText(state) << '\n';
    }
    return EXIT_DONE;
}

// However the work under a lock ends; what cannot be given back ends by itself.
class LockGivenBack {
public:
    LockGivenBack(std::shared_ptr<Nubis::NBDatabase> database, Nubis::NBLock lock)
        : database_(std::move(database)), lock_(std::move(lock))
    {}
    ~LockGivenBack()
    {
        database_->DeleteLock(lock_);
    }
    LockGivenBack(const LockGivenBack &) = delete;
    LockGivenBack &operator=(const LockGivenBack &) = delete;

private:
    const std::shared_ptr<Nubis::NBDatabase> database_;
    const Nubis::NBLock lock_;
};

std::chrono::milliseconds RenewalTime(const Nubis::NBLock &lock)
{
    // Two renewals may fail before the lock ends.
    return std::max(LEAST_RENEWAL_TIME, std::chrono::milliseconds(std::chrono::seconds(lock.lockInterval)) / 3);
}

// What is to be said of the lock after the command; empty when it was held all the time.
std::string Problem(Renewal last, const Nubis::NBError &error)
{
    switch (last) {
        case Renewal::HELD:
            return "";
        case Renewal::LOST:
            return "the lock was lost before the command ended, so others may have written meanwhile";
        default:
            return "whether the lock was held until the command ended is not known: " + ErrorText(error);
    }
}

int Exec(const LockOptions &options, const std::vector<std::string> &arguments, const Console &console)
{
    if (arguments.empty()) {
        throw UsageError(
            "there is no command to run", "put it behind --: nubis lock exec --bundle NAME -- COMMAND ARGUMENT...");
    }
    Session session(options.common);
    InterruptGuard guard(SecondSignal::IS_REMEMBERED);
    Nubis::NBLock lock = TakeLock(session, options.wait, console);
    std::shared_ptr<Nubis::NBDatabase> database = session.OpenDatabase();
    LockGivenBack giveBack(database, lock);
    Nubis::NBError error;
    LockKeeper keeper(
        RenewalTime(lock), [&] { return RenewLock(*database, lock.lockSessionId, error); },
        [&console] {
            console.err << "nubis: the lock was lost while the command runs; others may write now" << std::endl;
        });
    if (Interrupted()) {
        throw CommandError("interrupted before the command was started", "", EXIT_INTERRUPTED);
    }
    Environment environment = {
        {LOCK_SESSION_VARIABLE, AddLockSession(std::getenv(LOCK_SESSION_VARIABLE),
                                    LockScope(options.common.user, session.Container()), lock.lockSessionId)}};
    ChildProcess child({arguments, environment, false, false});
    int status = child.WaitForwardingSignals();
    std::string problem = Problem(keeper.End(), error);
    if (!problem.empty()) {
        throw CommandError(problem, "check what the command has written, and run it again if need be",
            status == EXIT_DONE ? EXIT_OPERATION_FAILED : status);
    }
    return status;
}

void AddWaitOption(CLI::App &command, LockOptions &options)
{
    command.add_option("--wait", options.wait, "Wait so long for a lock that another session holds [not at all]")
        ->check(WholeNumber(0, LONGEST_WAIT))
        ->type_name("SECONDS");
}

} // namespace

void AddLockCommands(CLI::App &app, Chosen &chosen)
{
    CLI::App *family = AddCommand(app, "lock", "The lock on a container, which keeps others from writing",
        "nubis lock exec --bundle com.example.notes -- sh edit_notes.sh");
    family->require_subcommand(1);
    auto options = std::make_shared<LockOptions>();
    auto add = [&](const char *verb, const char *description, const char *example, auto act) {
        CLI::App *command = AddCommand(*family, verb, description, example);
        AddServiceOptions(*command, options->common);
        AddContainerOptions(*command, options->common);
        SetAction(*command, chosen, options, act);
        return command;
    };
    CLI::App *take = add("take", "Take the lock for a minute and print its session, which may write",
        "nubis lock take --bundle com.example.notes", Take);
    CLI::Option *renewed =
        take->add_option("--session", options->sessionId, "Renew the lock that this session holds")->type_name("ID");
    AddWaitOption(*take, *options);
    take->get_option("--wait")->excludes(renewed);
    CLI::App *release = add("release", "Give the lock back",
        "nubis lock release --bundle com.example.notes --session 0d6c697262e706e6ee7eeb33efd76236", Release);
    release->add_option("--session", options->sessionId, "The session that holds it")->required()->type_name("ID");
    add("show", "Say who holds the lock, and until when", "nubis lock show --bundle com.example.notes", Show);

    CLI::App *exec =
        AddCommand(*family, "exec", "Hold the lock while a command runs, and return the command's exit status",
            "nubis lock exec --bundle com.example.notes --wait 30 -- nubis record import --bundle com.example.notes "
            "--type note notes.csv");
    AddAccountOptions(*exec, options->common);
    AddContainerOptions(*exec, options->common);
    AddWaitOption(*exec, *options);
    SetAction(
        *exec, chosen, [options, &chosen](const Console &console) { return Exec(*options, chosen.passedOn, console); });
}

} // namespace NubisTool
