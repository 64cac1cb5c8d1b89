// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "checks.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>

#include <json/json.h>

#include "child_process.h"
#include "command_error.h"
#include "file_state.h"
#include "service_request.h"
#include "session.h"

namespace NubisTool {
namespace {

constexpr const char *RESTART = "stop it with `nubis service stop`; the next request starts the installed one";
// The version of the protocol that the library and the service of this version speak best.
constexpr const char *BEST_PROTOCOL = "3";
constexpr size_t LONGEST_SOCKET_PATH = sizeof(sockaddr_un::sun_path) - 1;

// What the program says its version is; empty when it does not say anything that looks like one.
std::string VersionOf(const std::string &program)
{
    constexpr std::chrono::seconds time(5);
    ChildProcess child({{program, "--version"}, {}, true, true});
    child.CloseInput();
    const std::string line = child.ReadLine(time).value_or("");
    const size_t space = line.rfind(' ');
    return space == std::string::npos || child.Wait(time) != EXIT_DONE ? "" : line.substr(space + 1);
}

void CheckProtocol(const Host::ManifestAbility &ability, Findings &findings)
{
    constexpr const char *check = "protocol";
    auto found = ability.metadata.find("abilityVersion");
    const std::string version = found == ability.metadata.end() ? "" : found->second;
    if (version == BEST_PROTOCOL) {
        findings.Ok(check, "abilityVersion " + version);
    } else {
        findings.Warn(check,
            "the manifest's abilityVersion is \"" + version + "\", but tool and library are made for " + BEST_PROTOCOL +
                ": requests may be sent a slower way",
            "install the manifest that comes with the service");
    }
}

void JudgeDatabase(const Json::Value &data, Findings &findings)
{
    constexpr const char *check = "database";
    std::string problems;
    for (const Json::Value &problem : data["problems"]) {
        problems += (problems.empty() ? "" : "; ") + problem.asString();
    }
    if (problems.empty()) {
        findings.Ok(check, "whole, schema version " + data["schemaVersion"].asString());
    } else {
        findings.Fail(check, "damaged: " + problems, DAMAGE_ADVICE);
    }
}

} // namespace

std::string CheckProgram(int user, Findings &findings)
{
    constexpr const char *check = "program";
    std::optional<Host::ManifestAbility> described = DescribedService(user);
    if (!described || !described->error.empty()) {
        findings.Fail(check, "the drive service's program is not known, because its manifest is no help",
            "see what is said of the manifest");
        return "";
    }
    CheckProtocol(*described, findings);
    std::string program = std::filesystem::path(described->command.front()).lexically_normal().string();
    try {
        const std::string version = VersionOf(program);
        if (version == NUBIS_TOOL_VERSION) {
            findings.Ok(check, program + ", version " + version);
        } else if (version.empty()) {
            findings.Fail(
                check, program + " does not tell its version", "see what `" + ShellWord(program) + " --version` says");
            return "";
        } else {
            findings.Warn(check, program + " is of version " + version + ", this tool of " NUBIS_TOOL_VERSION,
                "install both of one version");
        }
    } catch (const CommandError &error) {
        findings.Fail(check, error.what(), error.Advice());
        return "";
    }
    return program;
}

ServiceStatus CheckSocket(int user, Findings &findings)
{
    constexpr const char *check = "socket";
    constexpr mode_t othersAtAll = S_IRWXG | S_IRWXO;
    ServiceStatus status = FindService(user);
    FileState state(status.socketPath);
    if (status.socketPath.size() > LONGEST_SOCKET_PATH) {
        findings.Fail(check,
            status.socketPath + " is too long: sockets have paths of at most " + std::to_string(LONGEST_SOCKET_PATH) +
                " bytes",
            "let NUBIS_RUNTIME_DIR name a folder with a shorter path");
    } else if (!state.error.empty()) {
        findings.Fail(check, status.socketPath + ": " + state.error, "let NUBIS_RUNTIME_DIR name a folder of your own");
    } else if (!state.exists) {
        findings.Ok(check, status.socketPath + " is not there, because the service does not run");
    } else if (state.type != S_IFSOCK || !state.IsMine()) {
        findings.Fail(check, status.socketPath + (state.IsMine() ? " is no socket" : " belongs to another user"),
            "remove it: rm " + ShellWord(status.socketPath));
    } else if (!status.running) {
        findings.Warn(check, status.socketPath + " was left behind: nobody listens at it",
            "nothing; the next start of the service puts a new one in its place");
    } else if ((state.mode & othersAtAll) != 0) {
        findings.Warn(check, status.socketPath + " has mode " + state.ModeText() + ": others may connect",
            "chmod 600 " + ShellWord(status.socketPath));
    } else {
        findings.Ok(check, status.socketPath + ", mode " + state.ModeText());
    }
    return status;
}

bool CheckService(int user, bool start, const ServiceStatus &status, Findings &findings)
{
    constexpr const char *check = "service";
    if (!status.running && !start) {
        findings.Ok(check, "does not run; the next request starts it (`nubis doctor --start` tries)");
        return false;
    }
    CommonOptions options;
    options.user = user;
    Session session(options);
    try {
        const std::string process = "process " + std::to_string(StartService(session.Kit()).pid);
        Json::Value request(Json::objectValue);
        request["function"] = "checkData";
        const Json::Value data = AskService(session, {request, "data", "the check of the database", ""});
        const std::string version = data["programVersion"].asString();
        if (version == NUBIS_TOOL_VERSION) {
            findings.Ok(check, process + ", version " + version);
        } else {
            findings.Warn(check, process + " is of version " + version + ", this tool of " NUBIS_TOOL_VERSION, RESTART);
        }
        JudgeDatabase(data, findings);
        return true;
    } catch (const CommandError &error) {
        findings.Fail(check, error.what(), "mend what the other checks name");
        return status.running;
    }
}

} // namespace NubisTool
