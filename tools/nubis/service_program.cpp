// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_program.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <unistd.h>
#include <vector>

#include "child_process.h"
#include "command_error.h"
#include "error_text.h"
#include "host/paths.h"
#include "interrupt.h"
#include "lock_session.h"

namespace NubisTool {
namespace {

constexpr const char *SERVICE_ABILITY = "DriveServiceAbility";
constexpr const char *SERVICE_PROGRAM = "nubis-drive-service";
constexpr std::chrono::seconds STOP_TIME(15);

bool MayRun(const std::string &path)
{
    return access(path.c_str(), X_OK) == 0;
}

// For a service whose folders go in any case: one that does not end must not live on.
void EndService(int user)
{
    try {
        StopService(user, STOP_TIME);
    } catch (const CommandError &) {
        if (ServiceStatus left = FindService(user); left.running && left.pid > 0) {
            kill(left.pid, SIGKILL);
        }
    }
}

} // namespace

std::optional<Host::ManifestAbility> DescribedService(int user)
{
    const std::vector<Host::ManifestState> manifests = Host::InspectManifests(user);
    auto manifest = std::find_if(manifests.begin(), manifests.end(),
        [](const Host::ManifestState &state) { return state.bundleName == SERVICE_BUNDLE; });
    if (manifest == manifests.end()) {
        return std::nullopt;
    }
    auto ability = std::find_if(manifest->abilities.begin(), manifest->abilities.end(),
        [](const Host::ManifestAbility &described) { return described.name == SERVICE_ABILITY; });
    return ability == manifest->abilities.end() ? std::nullopt : std::optional(*ability);
}

std::string FindServiceProgram(int user)
{
    std::string path = OwnFolder() + "/" + SERVICE_PROGRAM;
    if (MayRun(path)) {
        return path;
    }
    std::optional<Host::ManifestAbility> described = DescribedService(user);
    if (!described || !described->error.empty()) {
        throw CommandError(std::string("the program ") + SERVICE_PROGRAM +
                               " is neither beside this one nor named by a "
                               "manifest",
            "build or install the drive service, or name its manifests' folder in NUBIS_MANIFEST_PATH; `nubis doctor` "
            "says what is wrong");
    }
    return described->command.front();
}

std::string ServiceDataFolder(int user)
{
    std::optional<Host::ManifestAbility> described = DescribedService(user);
    const std::vector<std::string> line = described ? described->command : std::vector<std::string>();
    auto option = std::find(line.begin(), line.end(), "--data");
    return line.end() - option < 2 ? Host::StateDir() + "/drive" : *(option + 1);
}

ServiceStatus FindService(int user)
{
    Host::AbilityStatus found = Host::FindAbility(SERVICE_BUNDLE, SERVICE_ABILITY, user);
    return {found.running, found.pid, found.socketPath};
}

ServiceStatus StartService(Nubis::NubisNative &kit)
{
    Nubis::NBUserInfo info;
    Nubis::NBError error = kit.GetCloudUserInfo(info, false);
    if (error.HasError()) {
        std::string reason = Host::LastConnectError();
        throw CommandError("the drive service does not answer: " + (reason.empty() ? ErrorText(error) : reason),
            "run `nubis doctor`, which looks at all that the service needs");
    }
    return FindService(kit.GetUserId());
}

bool StopService(int user, std::chrono::milliseconds time)
{
    ServiceStatus status = FindService(user);
    if (!status.running || status.pid <= 0) {
        return false;
    }
    if (kill(status.pid, SIGTERM) != 0 && errno != ESRCH) {
        throw CommandError(
            "cannot stop the drive service, process " + std::to_string(status.pid) + ": " + std::strerror(errno),
            "run the command as the user who started the service");
    }
    if (!WaitUntilGone(status.pid, time)) {
        throw CommandError("the drive service, process " + std::to_string(status.pid) + ", has not ended after " +
                               std::to_string(std::chrono::duration_cast<std::chrono::seconds>(time).count()) + " s",
            "look at what it does, or end it with `kill -9 " + std::to_string(status.pid) + "`");
    }
    return true;
}

FreshService::FreshService(int user) : user_(user)
{
    setenv("NUBIS_RUNTIME_DIR", folder_.Make("run").c_str(), 1);
    setenv("NUBIS_STATE_DIR", folder_.Make("state").c_str(), 1);
    // Sessions of another service's locks are unknown to it.
    unsetenv(LOCK_SESSION_VARIABLE);
    // A process of its own connects to it: this one would only see its connection break when the service is stopped.
    // Spared from interrupts, because a service whose start was cut off would come up later and find nobody to stop it.
    ChildProcess start({{OwnProgram(), "service", "start", "--user", std::to_string(user)}, {}, true, false, true});
    start.ReadAll();
    status_ = start.Wait(std::chrono::milliseconds(-1)) == EXIT_DONE ? FindService(user) : ServiceStatus();
    if (Interrupted()) {
        EndService(user);
        throw CommandError("interrupted while the fresh service was being started", "", EXIT_INTERRUPTED);
    }
    if (!status_.running) {
        EndService(user);
        throw CommandError("the fresh service could not be started", "see the message above");
    }
}

FreshService::~FreshService()
{
    EndService(user_);
}

} // namespace NubisTool
