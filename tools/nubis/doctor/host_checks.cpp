// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "checks.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <link.h>
#include <set>
#include <strings.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "file_state.h"
#include "host/ability_control.h"
#include "host/paths.h"

namespace NubisTool {
namespace {

std::string Variable(const char *name)
{
    const char *value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// Which of the variables, the first of which counts, a path comes from.
std::string FromWhere(const std::vector<const char *> &names)
{
    auto set = std::find_if(names.begin(), names.end(), [](const char *name) { return !Variable(name).empty(); });
    return set == names.end() ? " (the default; " + std::string(names.front()) + " would name another)"
                              : " (by " + std::string(*set) + ")";
}

int AddLibrary(struct dl_phdr_info *info, size_t, void *libraries)
{
    const std::string path = info->dlpi_name;
    const std::string name = path.substr(path.rfind('/') + 1);
    if (name.rfind("libnubis_lite.so", 0) == 0 || name.rfind("libnubis_host.so", 0) == 0) {
        static_cast<std::vector<std::string> *>(libraries)->push_back(path);
    }
    return 0;
}

void CheckRuntimeFolder(const std::string &check, const std::string &path, const std::string &from, Findings &findings)
{
    FileState state(path);
    if (!state.exists && state.error.empty()) {
        findings.Ok(check, path + from + " is not there yet; the first connection makes it");
        return;
    }
    const std::string problem = Host::PrivateFolderProblem(path);
    if (problem.empty()) {
        findings.Ok(check, path + from + ", mode " + state.ModeText());
        return;
    }
    const bool isModeAlone = state.exists && state.type == S_IFDIR && state.IsMine();
    findings.Fail(check, problem + from,
        isModeAlone ? "chmod 700 " + ShellWord(path)
                    : "let NUBIS_RUNTIME_DIR name a folder of your own, or remove what is there");
}

void CheckStateFolder(Findings &findings)
{
    constexpr const char *check = "state folder";
    constexpr mode_t othersWrite = S_IWGRP | S_IWOTH;
    constexpr mode_t othersAtAll = S_IRWXG | S_IRWXO;
    const std::string path = Host::StateDir();
    const std::string from = FromWhere({"NUBIS_STATE_DIR", "XDG_STATE_HOME"});
    std::error_code error;
    const std::string real = std::filesystem::canonical(path, error).string();
    FileState state(error ? path : real);
    if (!state.exists && state.error.empty()) {
        findings.Ok(check, path + from + " is not there yet; the first start of the service makes it");
    } else if (!state.exists || state.type != S_IFDIR) {
        findings.Fail(check, path + from + state.NoFolderText(), "let NUBIS_STATE_DIR name a folder of your own");
    } else if (!state.IsMine() || access(path.c_str(), W_OK | X_OK) != 0) {
        findings.Fail(check, path + from + " belongs to user " + std::to_string(state.owner) + " or cannot be written",
            "let NUBIS_STATE_DIR name a folder of your own");
    } else if ((state.mode & othersWrite) != 0) {
        findings.Fail(check, path + from + " has mode " + state.ModeText() + ": others can put other data in its place",
            "chmod 700 " + ShellWord(path));
    } else if ((state.mode & othersAtAll) != 0) {
        findings.Warn(check, path + from + " has mode " + state.ModeText() + ": others can look into it",
            "chmod 700 " + ShellWord(path));
    } else {
        findings.Ok(check, path + from + ", mode " + state.ModeText());
    }
}

} // namespace

void CheckVersions(Findings &findings)
{
    std::vector<std::string> libraries;
    dl_iterate_phdr(AddLibrary, &libraries);
    std::string text = "nubis " NUBIS_TOOL_VERSION;
    bool isOne = true;
    for (const std::string &library : libraries) {
        std::error_code error;
        std::string name = std::filesystem::canonical(library, error).filename().string();
        isOne = isOne && name.find(".so." NUBIS_TOOL_VERSION) != std::string::npos;
        text += ", " + name;
    }
    if (isOne) {
        findings.Ok("versions", text);
    } else {
        findings.Warn("versions", text + " are not of one version",
            "install all of one version; LD_LIBRARY_PATH may name a folder with another one");
    }
}

void CheckLog(Findings &findings)
{
    const std::array<const char *, 6> levels = {"debug", "info", "warn", "error", "fatal", "none"};
    const std::string level = Variable("NUBIS_LOG_LEVEL");
    const std::string file = Variable("NUBIS_LOG_FILE");
    const std::string where = file.empty() ? "standard error" : file;
    const bool isKnown = std::any_of(
        levels.begin(), levels.end(), [&level](const char *name) { return strcasecmp(level.c_str(), name) == 0; });
    const std::string folder = std::filesystem::path(file).parent_path().string();
    const bool exists = !file.empty() && access(file.c_str(), F_OK) == 0;
    const bool canWrite = file.empty() || access(exists           ? file.c_str()
                                                 : folder.empty() ? "."
                                                                  : folder.c_str(),
                                              W_OK) == 0;
    if (!level.empty() && !isKnown) {
        findings.Warn("log", "NUBIS_LOG_LEVEL is \"" + level + "\", which is taken for error",
            "set it to debug, info, warn, error, fatal or none");
    } else if (!canWrite) {
        findings.Warn("log", "NUBIS_LOG_FILE " + file + " cannot be written, so the log goes to standard error",
            "name a file in a folder of your own");
    } else {
        findings.Ok("log",
            (level.empty() ? "level error, for this tool fatal (the defaults)" : "level " + level) + ", to " + where);
    }
}

void CheckFolders(int user, Findings &findings)
{
    const std::string runtime = Host::RuntimeDir();
    CheckRuntimeFolder("runtime folder", runtime, FromWhere({"NUBIS_RUNTIME_DIR", "XDG_RUNTIME_DIR"}), findings);
    CheckRuntimeFolder("user's runtime folder", runtime + "/" + std::to_string(user), "", findings);
    CheckStateFolder(findings);
}

void CheckManifests(int user, Findings &findings)
{
    constexpr const char *check = "manifest";
    const bool isConfigured = !Variable("NUBIS_MANIFEST_PATH").empty();
    std::string folders;
    for (const std::string &folder : Host::ManifestDirs()) {
        folders += (folders.empty() ? "" : ", ") + folder;
        std::error_code error;
        std::filesystem::directory_iterator entries(folder, error);
        if (error && isConfigured) {
            findings.Warn("manifest folder", folder + " cannot be read: " + error.message(),
                "correct NUBIS_MANIFEST_PATH, which names it");
        }
    }
    std::set<std::string> seen;
    for (const Host::ManifestState &manifest : Host::InspectManifests(user)) {
        if (!seen.insert(manifest.bundleName).second) {
            findings.Warn(check, manifest.file + " is never read: an earlier folder has one of this name",
                "remove one of the two");
            continue;
        }
        if (!manifest.error.empty()) {
            findings.Fail(check, manifest.error, "correct or reinstall the file");
            continue;
        }
        std::string abilities;
        for (const Host::ManifestAbility &ability : manifest.abilities) {
            if (!ability.error.empty()) {
                findings.Fail(check, ability.error, "install the program, or correct \"exec\" in the manifest");
            } else {
                abilities += (abilities.empty() ? ": " : ", ") + ability.name;
            }
        }
        if (manifest.abilities.empty() || !abilities.empty()) {
            findings.Ok(check, manifest.file + abilities);
        }
    }
    if (seen.count(SERVICE_BUNDLE) == 0) {
        findings.Fail(check, std::string("no ") + SERVICE_BUNDLE + ".json in " + folders,
            "install the drive service, or let NUBIS_MANIFEST_PATH name the folder of its manifest");
    }
}

} // namespace NubisTool
