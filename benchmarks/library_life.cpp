// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Starting and being idle, with the real drive service.

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include "canned_protocol.h"
#include "host/ability_control.h"
#include "library_world.h"
#include "nubis_kit.h"
#include "process_figures.h"

namespace NubisBench {
namespace {
constexpr double START_GOAL = 1.3;
constexpr double MILLI = 1e3;
// The timer's thread wakes the task of the tick, which tells it when to wake it again.
constexpr double WAKE_UPS_PER_TICK = 3;
// And once more when the task is awake before the timer's thread has let go of its lock.
constexpr double WAKE_UP_GOAL = 1.34;
constexpr int TICK_SECONDS = 5;
// In milliseconds: what waking up twice costs on any machine.
constexpr double IDLE_CPU_GOAL = 1;

int ServicePid()
{
    return Host::FindAbility(SERVICE_BUNDLE, SERVICE_ABILITY, SYNC_USER).pid;
}

void StopService()
{
    const int pid = ServicePid();
    if (pid <= 0) {
        return;
    }
    const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    kill(pid, SIGTERM);
    pollfd gone{descriptor, POLLIN, 0};
    while (descriptor >= 0 && poll(&gone, 1, -1) < 0 && errno == EINTR) {
    }
    close(descriptor);
}

void ConnectTo(const std::string &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    const int socketFd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    constexpr std::chrono::microseconds pause(100);
    while (connect(socketFd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0) {
        std::this_thread::sleep_for(pause);
    }
    close(socketFd);
}

void Ask(const std::shared_ptr<Nubis::NubisNative> &kit)
{
    // What costs the service least: its own work is in no floor.
    Json::Value request(Json::objectValue);
    request["function"] = "getAppState";
    Json::Value reply;
    constexpr int timeout = 60;
    const auto error = kit->SendDataToCloudSrv(request, reply, timeout);
    if (error.HasError()) {
        throw std::runtime_error("the drive service did not answer: " + error.GetErrorMsg());
    }
}
} // namespace

void StartLibrary()
{
    const Stopwatch watch;
    Ask(Nubis::NubisNative::GetInstance(SYNC_USER));
    std::cout << watch.Seconds() << '\n';
}

void StartProgram()
{
    const std::string socketPath = Host::FindAbility(SERVICE_BUNDLE, SERVICE_ABILITY, SYNC_USER).socketPath;
    std::vector<std::string> words = {NUBIS_BENCH_BIN "/nubis-drive-service", "--data",
        std::string(std::getenv("NUBIS_STATE_DIR")) + "/drive", "--user", std::to_string(SYNC_USER), "--idle-seconds",
        "60"};
    std::vector<char *> arguments;
    for (std::string &word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    const Stopwatch watch;
    if (posix_spawn(&pid, words.front().c_str(), &actions, nullptr, arguments.data(), environ) != 0) {
        throw std::runtime_error("cannot start " + words.front());
    }
    ConnectTo(socketPath);
    std::cout << watch.Seconds() << '\n';
    posix_spawn_file_actions_destroy(&actions);
}

void StayIdle(const Options &options)
{
    Ask(Nubis::NubisNative::GetInstance(SYNC_USER));
    // Asked for before, because looking for the service wakes it up.
    const int service = ServicePid();
    // Threads that ran out of work end after ten seconds, and what they held goes with them.
    std::this_thread::sleep_for(std::chrono::seconds(options.Pick(15, 0)));
    const Activity before = ActivityOf(0);
    const Activity serviceBefore = ActivityOf(service);
    std::this_thread::sleep_for(std::chrono::seconds(options.Pick(4 * TICK_SECONDS, 1)));
    const Activity after = ActivityOf(0);
    const Activity serviceAfter = ActivityOf(service);
    // One wake-up is that of this thread.
    std::cout << after.wakeUps - before.wakeUps - 1 << ' ' << serviceAfter.wakeUps - serviceBefore.wakeUps << ' '
              << after.cpuSeconds - before.cpuSeconds + serviceAfter.cpuSeconds - serviceBefore.cpuSeconds << '\n';
}

namespace {
void MeasureStart(const Options &options)
{
    Row row = NewRow(
        "cold-start", "first reply after a cold start", START_GOAL, "library", "start the program, connect", "ms");
    for (int round = -1; round < options.Pick(15, 1); ++round) {
        StopService();
        const double library = std::stod(RunChild("start-library", options)) * MILLI;
        StopService();
        const double program = std::stod(RunChild("start-program", options)) * MILLI;
        if (round >= 0) {
            row.rounds.emplace_back(library, program);
        }
    }
    StopService();
    Settle(row);
    Print(row);
}

Row IdleRow(
    const std::string &id, const std::string &name, double goal, const std::string &floorName, const std::string &unit)
{
    return NewRow(id, name, goal, "measured", floorName, unit);
}

void MeasureIdle(const Options &options)
{
    const int ticks = options.Pick(4, 1);
    Row client =
        IdleRow("idle-client", "idle client: wake-ups, against those of the tick", WAKE_UP_GOAL, "tick", "wake-ups");
    Row service = IdleRow("idle-service", "idle service: wake-ups", 0, "-", "wake-ups");
    Row cpu = IdleRow("idle-cpu", "idle client and service: CPU for each tick", IDLE_CPU_GOAL, "-", "ms");
    for (int round = 0; round < options.Pick(3, 1); ++round) {
        std::istringstream figures(RunChild("stay-idle", options));
        double clientWakeUps = 0;
        double serviceWakeUps = 0;
        double cpuSeconds = 0;
        figures >> clientWakeUps >> serviceWakeUps >> cpuSeconds;
        client.rounds.emplace_back(clientWakeUps, WAKE_UPS_PER_TICK * ticks);
        service.rounds.emplace_back(serviceWakeUps, 1);
        cpu.rounds.emplace_back(cpuSeconds * MILLI / ticks, 1);
    }
    for (Row *row : {&client, &service, &cpu}) {
        Settle(*row);
        Print(*row);
    }
}
} // namespace

void MeasureLife(const Options &options)
{
    setenv("NUBIS_MANIFEST_PATH", NUBIS_BENCH_MANIFESTS, 1);
    // The real service takes the place of that of the benchmarks.
    StopService();
    if (options.Wants("cold-start")) {
        MeasureStart(options);
    }
    if (options.Wants("idle")) {
        MeasureIdle(options);
    }
    StopService();
}
} // namespace NubisBench
