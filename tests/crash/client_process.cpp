// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "client_process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Crash {
ClientProcess::ClientProcess(std::vector<std::string> command)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    std::vector<char *> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string &part : command) {
        arguments.push_back(part.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    const int failure = posix_spawn(&pid_, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    output_ = ends[0];
    if (failure != 0) {
        close(output_);
        throw std::runtime_error("cannot start " + command[0]);
    }
}

ClientProcess::~ClientProcess()
{
    if (pid_ >= 0) {
        Kill();
        AwaitEnd();
    }
    if (output_ >= 0) {
        close(output_);
    }
}

int ClientProcess::Output() const
{
    return output_;
}

std::vector<std::string> ClientProcess::ReadLines()
{
    std::vector<std::string> lines;
    std::array<char, 4096> buffer{};
    while (lines.empty() && output_ >= 0) {
        const ssize_t length = read(output_, buffer.data(), buffer.size());
        if (length <= 0) {
            close(output_);
            output_ = -1;
            break;
        }
        unread_.append(buffer.data(), static_cast<size_t>(length));
        size_t begin = 0;
        for (size_t end = 0; (end = unread_.find('\n', begin)) != std::string::npos; begin = end + 1) {
            lines.push_back(unread_.substr(begin, end - begin));
        }
        unread_.erase(0, begin);
    }
    return lines;
}

void ClientProcess::Kill()
{
    if (pid_ >= 0) {
        kill(pid_, SIGKILL);
    }
}

int ClientProcess::AwaitEnd()
{
    const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
    if (descriptor < 0 || !AwaitReadable(descriptor, PATIENCE)) {
        kill(pid_, SIGABRT);
    }
    close(descriptor);
    int status = -1;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    return status;
}

bool AwaitReadable(int descriptor, std::chrono::microseconds atMost)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(atMost);
    const timespec time{seconds.count(), static_cast<long>((atMost - seconds).count()) * 1000};
    pollfd awaited{descriptor, POLLIN, 0};
    return ppoll(&awaited, 1, &time, nullptr) > 0;
}

Holdings HoldingsOf(pid_t pid)
{
    namespace fs = std::filesystem;
    const fs::path process = fs::path("/proc") / std::to_string(pid);
    Holdings holdings;
    holdings.threads =
        static_cast<size_t>(std::distance(fs::directory_iterator(process / "task"), fs::directory_iterator()));
    for (const auto &entry : fs::directory_iterator(process / "fd")) {
        std::error_code gone;
        const std::string target = fs::read_symlink(entry.path(), gone).string();
        if (gone || target.find("/drive.db") != std::string::npos) {
            continue;
        }
        ++holdings.files;
        holdings.sockets += target.rfind("socket:", 0) == 0 ? 1 : 0;
    }
    return holdings;
}
} // namespace Crash
