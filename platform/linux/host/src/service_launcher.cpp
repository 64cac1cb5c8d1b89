// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_launcher.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include "host/paths.h"
#include "worker_pool.h"

namespace Host {

namespace {

constexpr mode_t LOG_MODE = 0600;
constexpr off_t LONGEST_LAST_WORDS = 500;

bool Expand(
    const std::string &text, const std::vector<std::pair<std::string, std::string>> &values, std::string &result)
{
    result.clear();
    for (size_t at = 0; at < text.size();) {
        size_t end = text.compare(at, 2, "${") == 0 ? text.find('}', at) : std::string::npos;
        if (end == std::string::npos) {
            result += text[at++];
            continue;
        }
        std::string name = text.substr(at + 2, end - at - 2);
        bool known = false;
        for (const auto &value : values) {
            if (value.first == name) {
                result += value.second;
                known = true;
            }
        }
        if (!known) {
            return false;
        }
        at = end + 1;
    }
    return true;
}

bool IsProgram(const std::string &path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0;
}

// Empty when there is no such program.
std::string FindProgram(const std::string &name, const std::string &manifestDir)
{
    if (name.find('/') != std::string::npos) {
        std::string path = name.front() == '/' ? name : manifestDir + "/" + name;
        return IsProgram(path) ? path : std::string();
    }
    const char *variable = std::getenv("PATH");
    std::string list = variable == nullptr ? "/usr/local/bin:/usr/bin:/bin" : variable;
    for (size_t start = 0; start <= list.size();) {
        size_t end = list.find(':', start);
        end = end == std::string::npos ? list.size() : end;
        std::string path = list.substr(start, end - start) + "/" + name;
        if (end > start && IsProgram(path)) {
            return path;
        }
        start = end + 1;
    }
    return std::string();
}

// What posix_spawn wants, freed at the end.
struct SpawnSetup {
    SpawnSetup()
    {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
        sigset_t none;
        sigset_t standard;
        sigemptyset(&none);
        sigemptyset(&standard);
        // IPC ignores SIGPIPE; the program shall start as from a shell.
        sigaddset(&standard, SIGPIPE);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &standard);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    }
    ~SpawnSetup()
    {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
    }
    SpawnSetup(const SpawnSetup &) = delete;
    SpawnSetup &operator=(const SpawnSetup &) = delete;

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

off_t SizeOf(const std::string &file)
{
    struct stat status = {};
    return lstat(file.c_str(), &status) == 0 ? status.st_size : 0;
}

// The last line that was written behind `start`; empty when nothing was.
std::string LastWords(const std::string &logFile, off_t start)
{
    int descriptor = open(logFile.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return "";
    }
    const off_t size = SizeOf(logFile);
    start = std::max(start, size - LONGEST_LAST_WORDS);
    std::string text(static_cast<size_t>(std::max<off_t>(size - start, 0)), '\0');
    ssize_t length = pread(descriptor, text.data(), text.size(), start);
    close(descriptor);
    text.resize(length < 0 ? 0 : static_cast<size_t>(length));
    text.erase(text.find_last_not_of('\n') + 1);
    return text.substr(text.rfind('\n') + 1);
}

// Keeps one old log. A log that cannot be put aside is written on; the service matters more.
void PutAsideIfFull(const std::string &logFile)
{
    if (static_cast<size_t>(SizeOf(logFile)) > MAX_SERVICE_LOG_BYTES) {
        static_cast<void>(rename(logFile.c_str(), (logFile + ".old").c_str()));
    }
}

} // namespace

bool BuildCommand(const Manifest &manifest, const Manifest::Ability &ability, int32_t userId,
    std::vector<std::string> &command, std::string &error)
{
    const std::vector<std::pair<std::string, std::string>> values = {{"user", std::to_string(userId)},
        {"state", StateDir()}, {"runtime", RuntimeDir()}, {"manifestDir", manifest.dir}};
    command.clear();
    for (const std::string &part : ability.exec) {
        std::string expanded;
        if (!Expand(part, values, expanded)) {
            error = manifest.file + ": \"" + part +
                    "\": expected only the placeholders ${user}, ${state}, ${runtime}, "
                    "${manifestDir}";
            return false;
        }
        command.push_back(expanded);
    }
    std::string program = command.front().empty() ? std::string() : FindProgram(command.front(), manifest.dir);
    if (program.empty()) {
        error = "the program \"" + command.front() + "\" of ability " + ability.name + " (" + manifest.file +
                ") is not there or cannot be run";
        return false;
    }
    command.front() = program;
    return true;
}

ServiceLauncher::~ServiceLauncher()
{
    if (pid_ < 0) {
        return;
    }
    Ipc::StartThread("service-reaper", [pid = pid_] {
        while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
        }
    });
}

bool ServiceLauncher::Start(const Manifest &manifest, const Manifest::Ability &ability, const std::string &bundleName,
    int32_t userId, std::string &error)
{
    std::vector<std::string> command;
    if (!BuildCommand(manifest, ability, userId, command, error)) {
        return false;
    }
    SpawnSetup setup;
    const char *output = std::getenv("NUBIS_SERVICE_STDERR");
    if (output == nullptr || std::strcmp(output, "inherit") != 0) {
        std::string logDir = StateDir() + "/log";
        if (!MakeDirs(logDir, error)) {
            return false;
        }
        logFile_ = logDir + "/" + bundleName + ".log";
        PutAsideIfFull(logFile_);
        logStart_ = SizeOf(logFile_);
        posix_spawn_file_actions_addopen(
            &setup.actions, STDOUT_FILENO, logFile_.c_str(), O_WRONLY | O_CREAT | O_APPEND, LOG_MODE);
        posix_spawn_file_actions_adddup2(&setup.actions, STDOUT_FILENO, STDERR_FILENO);
    } else {
        // Never our standard output: whoever reads it waits until all holders have closed it.
        posix_spawn_file_actions_adddup2(&setup.actions, STDERR_FILENO, STDOUT_FILENO);
    }
    std::vector<char *> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string &part : command) {
        arguments.push_back(part.data());
    }
    arguments.push_back(nullptr);
    program_ = command.front();
    int failure = posix_spawn(&pid_, program_.c_str(), &setup.actions, &setup.attributes, arguments.data(), environ);
    if (failure != 0) {
        pid_ = -1;
        error = "cannot start " + program_ + (logFile_.empty() ? "" : " with its log at " + logFile_) + ": " +
                std::strerror(failure);
        return false;
    }
    return true;
}

bool ServiceLauncher::HasExited(std::string &how)
{
    int status = 0;
    if (pid_ < 0 || waitpid(pid_, &status, WNOHANG) == 0) {
        return false;
    }
    pid_ = -1;
    std::error_code unknown;
    const std::filesystem::path program = std::filesystem::canonical(program_, unknown);
    how = (unknown ? program_ : program.string()) + " ended at once, ";
    if (WIFSIGNALED(status)) {
        how += "by signal " + std::to_string(WTERMSIG(status));
    } else {
        how += "with status " + std::to_string(WEXITSTATUS(status));
    }
    if (!logFile_.empty()) {
        const std::string lastWords = LastWords(logFile_, logStart_);
        how += (lastWords.empty() ? "" : ": " + lastWords) + "; its log is " + logFile_;
    }
    return true;
}

} // namespace Host
