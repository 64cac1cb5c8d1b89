// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "checks.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <system_error>
#include <vector>

#include "child_process.h"
#include "command_error.h"
#include "error_text.h"
#include "file_state.h"

namespace NubisTool {
namespace {

constexpr uint64_t MIB = uint64_t{1024} * 1024;
// What the service needs to work at all, and what an import of some size needs.
constexpr uint64_t LEAST_SPACE = MIB;
constexpr uint64_t GOOD_SPACE = 64 * MIB;

// How the service's program ends when a service has the data that it was to check.
constexpr int SERVED = 3;
constexpr const char *UNREACHABLE_ADVICE = "end that process, or wait: it ends a minute after its last client. It was "
                                           "started with another runtime folder, or its socket was removed";

constexpr size_t MOST_SAID = 1000;

struct Said {
    std::optional<int> status;
    std::string text; // in one line
};

// What the service's program finds out about its own files.
Said AskProgram(const std::vector<std::string> &arguments)
{
    ChildProcess child({arguments, {}, true, true});
    child.CloseInput();
    std::string text = child.ReadAll();
    text.erase(text.find_last_not_of('\n') + 1);
    // Damage shows in many places at once, and a few are enough.
    if (text.size() > MOST_SAID) {
        text = text.substr(0, std::min(text.rfind('\n', MOST_SAID), MOST_SAID)) + "\nand more";
    }
    for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', end)) {
        text.replace(end, 1, "; ");
    }
    return {child.Wait(std::chrono::milliseconds(-1)), text};
}

void CheckDataFolder(const std::string &folder, Findings &findings)
{
    constexpr const char *check = "data folder";
    constexpr mode_t othersWrite = S_IWGRP | S_IWOTH;
    std::error_code error;
    const std::string real = std::filesystem::canonical(folder, error).string();
    FileState state(error ? folder : real);
    if (!state.exists && state.error.empty()) {
        findings.Ok(check, folder + " is not there yet; the first start of the service makes it");
    } else if (!state.exists || state.type != S_IFDIR) {
        findings.Fail(check, folder + state.NoFolderText(),
            state.error.empty() ? "move away what is there" : "let NUBIS_STATE_DIR name a folder of your own");
    } else if (!state.IsMine()) {
        findings.Fail(check, folder + " belongs to user " + std::to_string(state.owner),
            "let NUBIS_STATE_DIR name a folder of your own, or run as its owner");
    } else if ((state.mode & othersWrite) != 0) {
        findings.Fail(check, folder + " has mode " + state.ModeText() + ": the service refuses what others can write",
            "chmod go-w " + ShellWord(folder));
    } else if (const std::string problem = AccessProblem(folder); !problem.empty()) {
        findings.Fail(check, folder + " cannot be written: " + problem, "chmod u+rwx " + ShellWord(folder));
    } else {
        findings.Ok(check, folder + ", mode " + state.ModeText());
    }
}

void CheckSpace(const std::string &folder, Findings &findings)
{
    constexpr const char *check = "space";
    std::filesystem::path there = folder;
    std::error_code error;
    while (!std::filesystem::exists(there, error) && there.has_parent_path() && there != there.parent_path()) {
        there = there.parent_path();
    }
    struct statvfs space {};
    if (statvfs(there.c_str(), &space) != 0) {
        findings.Warn(check, "the free space of " + there.string() + " cannot be read", "look at it with df");
        return;
    }
    const uint64_t free = uint64_t{space.f_bavail} * space.f_frsize;
    const std::string text = std::to_string(free / MIB) + " MiB are free for " + folder;
    if (free < LEAST_SPACE) {
        findings.Fail(check, text, "make room: nothing can be saved");
    } else if (free < GOOD_SPACE) {
        findings.Warn(check, text, "make room before much is saved");
    } else {
        findings.Ok(check, text);
    }
}

void CheckDatabase(const std::string &folder, int user, const std::string &program, bool isServed, Findings &findings)
{
    constexpr const char *check = "database";
    constexpr mode_t othersAtAll = S_IRWXG | S_IRWXO;
    const std::string userFolder = folder + "/user-" + std::to_string(user);
    for (const std::string &path : {userFolder, userFolder + "/drive.db", userFolder + "/push_key.pem"}) {
        FileState state(path);
        if (state.exists && !state.IsMine()) {
            findings.Fail(check, path + " belongs to user " + std::to_string(state.owner), "run as its owner");
        } else if (const std::string problem = AccessProblem(path); state.exists && !problem.empty()) {
            findings.Fail(check, path + " cannot be read and written: " + problem, "chmod u+rwX " + ShellWord(path));
        } else if (state.exists && (state.mode & othersAtAll) != 0) {
            findings.Warn(check, path + " has mode " + state.ModeText() + ": others can look into it",
                "chmod go-rwx " + ShellWord(path));
        }
    }
    if (isServed || program.empty()) {
        return;
    }
    Said said = AskProgram({program, "check-data", "--data", folder, "--user", std::to_string(user)});
    if (said.status == EXIT_DONE) {
        findings.Ok(check, said.text);
    } else {
        findings.Fail(check, said.text, said.status == SERVED ? UNREACHABLE_ADVICE : DAMAGE_ADVICE);
    }
}

void CheckCatalogue(const std::string &folder, const std::string &program, Findings &findings)
{
    constexpr const char *check = "catalogue";
    std::vector<std::string> files;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        if (entry->path().extension() == ".json") {
            files.push_back(entry->path().string());
        }
    }
    if (files.empty()) {
        findings.Ok(check, folder + " has no bundles; `nubis catalogue apply FILE` adds one");
        return;
    }
    if (program.empty()) {
        findings.Warn(check, folder + ": " + CountText(files.size(), "file") + " that no program can check",
            "see what is said of the program");
        return;
    }
    std::sort(files.begin(), files.end());
    std::vector<std::string> arguments = {program, "check-catalogue"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    Said said = AskProgram(arguments);
    if (said.status == EXIT_DONE) {
        findings.Ok(check, folder + ": " + said.text);
    } else {
        findings.Fail(check, said.text, "correct the file and install it with `nubis catalogue apply FILE`");
    }
}

} // namespace

void CheckData(int user, const std::string &program, bool isServed, Findings &findings)
{
    const std::string folder = ServiceDataFolder(user);
    CheckDataFolder(folder, findings);
    try {
        CheckDatabase(folder, user, program, isServed, findings);
        CheckCatalogue(folder + "/catalogue", program, findings);
    } catch (const CommandError &error) {
        findings.Fail("database", error.what(), error.Advice());
    }
    CheckSpace(folder, findings);
}

} // namespace NubisTool
