// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "inspection.h"

#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "drive_service_proxy.h"
#include "nubis_kit.h"

namespace Simulation {

namespace {

// The ways to members that the library keeps to itself: an explicit instantiation may name what is private, so that the
// library needs no door for tests.
template <typename Tag, auto Pointer>
struct Opened {
    friend auto Reach(Tag)
    {
        return Pointer;
    }
};

#define SIMULATION_OPEN(NAME, MEMBER)                                                                                  \
    struct NAME {                                                                                                      \
        friend auto Reach(NAME);                                                                                       \
    };                                                                                                                 \
    template struct Opened<NAME, &MEMBER> // NOLINT(bugprone-macro-parentheses): a pointer to member takes none

SIMULATION_OPEN(Proxy, Nubis::NubisNative::proxy_);
SIMULATION_OPEN(InFlight, Nubis::DriveServiceProxy::requestsInFlight_);
SIMULATION_OPEN(UnderWay, Nubis::DriveServiceProxy::requestsUnderWay_);
SIMULATION_OPEN(Stub, Nubis::DriveServiceProxy::callbackStub_);
SIMULATION_OPEN(Connect, Nubis::DriveServiceProxy::ipcConnect_);
SIMULATION_OPEN(Waiting, Nubis::DriveCallbackStub::waitingRequests_);
SIMULATION_OPEN(TimeOut, Nubis::DriveServiceProxy::requestTimeOut_);
SIMULATION_OPEN(Deadlines, Nubis::RequestTimeOut::requests_);

std::string Complain(size_t count, const char *what)
{
    return count == 0 ? "" : std::to_string(count) + " " + what + " left\n";
}

} // namespace

std::set<std::string> OpenFiles()
{
    std::set<std::string> files;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const std::string target = std::filesystem::read_symlink(entry.path(), gone).string();
        // The one that lists them leads to the list itself.
        if (!gone && target.find("/fd") == std::string::npos) {
            files.insert(entry.path().filename().string() + " " + target);
        }
    }
    return files;
}

std::multiset<std::string> BusyThreads()
{
    const std::set<std::string> kept{"ffrt_idle", "ffrt_time", "ipc-worker", "drive-request"};
    std::multiset<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        std::getline(std::ifstream(entry.path() / "comm"), name);
        if (!name.empty() && kept.count(name) == 0 && entry.path().filename() != std::to_string(getpid())) {
            names.insert(name);
        }
    }
    return names;
}

bool IsConnected(Nubis::NubisNative &kit)
{
    return ((*(kit.*Reach(Proxy()))).*Reach(Connect()))->IsConnected();
}

std::string LeftOvers(Nubis::NubisNative &kit)
{
    Nubis::DriveServiceProxy &proxy = *(kit.*Reach(Proxy()));
    Nubis::DriveCallbackStub &stub = *(proxy.*Reach(Stub()));
    return Complain((proxy.*Reach(InFlight())).load(), "slots are") +
           Complain(proxy.*Reach(UnderWay()), "requests under way are") +
           Complain((stub.*Reach(Waiting())).size(), "waiting requests are") +
           Complain(((proxy.*Reach(TimeOut())).*Reach(Deadlines())).size(), "deadlines are");
}

} // namespace Simulation
