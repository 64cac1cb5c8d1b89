// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_program.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <unistd.h>
#include <vector>

#include <json/json.h>

#include "child_process.h"
#include "command_error.h"
#include "error_text.h"
#include "host/ability_control.h"
#include "host/paths.h"
#include "interrupt.h"
#include "lock_session.h"
#include "row_reader.h"

namespace NubisTool {
namespace {

constexpr const char *SERVICE_BUNDLE = "com.orvane.tyra.aerostash";
constexpr const char *SERVICE_ABILITY = "DriveServiceAbility";
constexpr const char *SERVICE_PROGRAM = "nubis-drive-service";
constexpr std::chrono::seconds STOP_TIME(15);

bool MayRun(const std::string &path)
{
    return access(path.c_str(), X_OK) == 0;
}

std::string FindInPath(const std::string &name)
{
    const char *configured = std::getenv("PATH");
    std::string folders = configured == nullptr ? "/usr/local/bin:/usr/bin:/bin" : configured;
    for (size_t start = 0; start <= folders.size();) {
        size_t end = folders.find(':', start);
        std::string program = folders.substr(start, end == std::string::npos ? end : end - start);
        if (!program.empty() && MayRun(program.append("/").append(name))) {
            return program;
        }
        start = end == std::string::npos ? folders.size() + 1 : end + 1;
    }
    return "";
}

void Replace(std::string &text, const std::string &placeholder, const std::string &value)
{
    for (size_t at = text.find(placeholder); at != std::string::npos; at = text.find(placeholder, at + value.size())) {
        text.replace(at, placeholder.size(), value);
    }
}

// The exec line of the service's ability with its placeholders filled in; empty when no manifest is found.
std::vector<std::string> ManifestExecLine(int user, std::string &manifestDir)
{
    for (const std::string &dir : Host::ManifestDirs()) {
        std::ifstream file(dir + "/" + SERVICE_BUNDLE + ".json");
        std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        Json::Value manifest;
        std::string error;
        if (!file || !ParseJsonText(text, manifest, error) || !manifest.isObject()) {
            continue;
        }
        for (const Json::Value &ability : manifest["abilities"]) {
            if (!ability.isObject() || ability["name"] != Json::Value(SERVICE_ABILITY)) {
                continue;
            }
            std::vector<std::string> line;
            for (const Json::Value &word : ability["exec"]) {
                line.push_back(word.isString() ? word.asString() : "");
                Replace(line.back(), "${user}", std::to_string(user));
                Replace(line.back(), "${state}", Host::StateDir());
                Replace(line.back(), "${runtime}", Host::RuntimeDir());
                Replace(line.back(), "${manifestDir}", dir);
            }
            manifestDir = dir;
            return line;
        }
    }
    return {};
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

std::string FindServiceProgram(int user)
{
    std::string manifestDir;
    std::vector<std::string> line = ManifestExecLine(user, manifestDir);
    std::string path = OwnFolder() + "/" + SERVICE_PROGRAM;
    if (!MayRun(path) && !line.empty()) {
        bool inPath = line[0].find('/') == std::string::npos;
        path = inPath ? FindInPath(line[0]) : line[0][0] == '/' ? line[0] : manifestDir + "/" + line[0];
    }
    if (!MayRun(path)) {
        throw CommandError(std::string("the program ") + SERVICE_PROGRAM +
                               " is neither beside this one nor named by a "
                               "manifest",
            "build or install the drive service, or name its manifests' folder in NUBIS_MANIFEST_PATH");
    }
    return path;
}

std::string ServiceDataFolder(int user)
{
    std::string manifestDir;
    std::vector<std::string> line = ManifestExecLine(user, manifestDir);
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
            "check that " + std::string(SERVICE_PROGRAM) +
                " is built and its manifest is found "
                "(NUBIS_MANIFEST_PATH), and that " +
                Host::RuntimeDir() + " can be written");
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
