// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "child_process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

#include "command_error.h"
#include "interrupt.h"

namespace NubisTool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int SIGNAL_STATUS_BASE = 128;
constexpr std::chrono::milliseconds STOP_TIME(5000);

int OpenProcess(pid_t pid)
{
    return static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
}

// Polls until an event, the end of the time (none when negative) or an interrupt.
bool PollUntil(int descriptor, std::chrono::milliseconds time, bool stopAtInterrupt)
{
    Clock::time_point deadline = Clock::now() + time;
    while (true) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        std::array<struct pollfd, 2> entries = {
            {{descriptor, POLLIN, 0}, {stopAtInterrupt ? InterruptDescriptor() : -1, POLLIN, 0}}};
        int wait = time.count() < 0 ? -1 : static_cast<int>(left < 0 ? 0 : left);
        int ready = poll(entries.data(), entries.size(), wait);
        if (ready > 0) {
            return entries[0].revents != 0;
        }
        if (ready == 0 || errno != EINTR) {
            return false;
        }
    }
}

std::vector<std::string> MergedEnvironment(const Environment &additions)
{
    std::vector<std::string> merged;
    for (char **entry = environ; *entry != nullptr; ++entry) {
        std::string text = *entry;
        if (additions.count(text.substr(0, text.find('='))) == 0) {
            merged.push_back(std::move(text));
        }
    }
    for (const auto &[name, value] : additions) {
        merged.push_back(std::string(name).append("=").append(value));
    }
    return merged;
}

std::vector<char *> Pointers(std::vector<std::string> &texts)
{
    std::vector<char *> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string &text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

class SpawnSettings {
public:
    explicit SpawnSettings(bool ownGroup)
    {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
        // The child must not inherit a handler's absence: what this process ignores or blocks starts afresh.
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGINT);
        sigaddset(&defaults, SIGTERM);
        sigaddset(&defaults, SIGPIPE);
        posix_spawnattr_setsigdefault(&attributes, &defaults);
        posix_spawnattr_setflags(
            &attributes, static_cast<short>(POSIX_SPAWN_SETSIGDEF | (ownGroup ? POSIX_SPAWN_SETPGROUP : 0)));
    }

    ~SpawnSettings()
    {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }

    SpawnSettings(const SpawnSettings &) = delete;
    SpawnSettings &operator=(const SpawnSettings &) = delete;

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

void CloseIfOpen(int &descriptor)
{
    if (descriptor >= 0) {
        close(descriptor);
        descriptor = -1;
    }
}

} // namespace

ChildProcess::ChildProcess(const ProcessSpec &spec)
{
    // The input is a socket rather than a pipe, so that writing to a program that has gone is an error and no signal.
    std::array<int, 2> inputPair = {-1, -1};
    std::array<int, 2> outputPair = {-1, -1};
    SpawnSettings settings(spec.ownGroup);
    if (spec.pipes) {
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, inputPair.data()) != 0 ||
            pipe2(outputPair.data(), O_CLOEXEC) != 0) {
            CloseIfOpen(inputPair[0]);
            CloseIfOpen(inputPair[1]);
            throw CommandError("cannot make pipes: " + std::string(std::strerror(errno)), "close other programs");
        }
        posix_spawn_file_actions_adddup2(&settings.actions, inputPair[1], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&settings.actions, outputPair[1], STDOUT_FILENO);
        if (spec.captureErrors) {
            posix_spawn_file_actions_adddup2(&settings.actions, outputPair[1], STDERR_FILENO);
        }
    }
    std::vector<std::string> arguments = spec.arguments;
    std::vector<std::string> environment = MergedEnvironment(spec.environment);
    int failure = posix_spawnp(&pid_, arguments[0].c_str(), &settings.actions, &settings.attributes,
        Pointers(arguments).data(), Pointers(environment).data());
    CloseIfOpen(inputPair[1]);
    CloseIfOpen(outputPair[1]);
    input_ = inputPair[0];
    output_ = outputPair[0];
    if (failure != 0) {
        CloseIfOpen(input_);
        CloseIfOpen(output_);
        throw CommandError("cannot start " + arguments[0] + ": " + std::strerror(failure),
            "check that the program exists and may be run", failure == ENOENT ? EXIT_NOT_FOUND : EXIT_NOT_RUN);
    }
    processDescriptor_ = OpenProcess(pid_);
    if (processDescriptor_ < 0) {
        std::string reason = std::strerror(errno);
        kill(pid_, SIGKILL);
        Reap();
        CloseIfOpen(input_);
        CloseIfOpen(output_);
        throw CommandError("cannot watch other processes: " + reason, "run on Linux 5.3 or newer");
    }
}

ChildProcess::~ChildProcess()
{
    Stop(STOP_TIME);
    CloseIfOpen(input_);
    CloseIfOpen(output_);
    CloseIfOpen(processDescriptor_);
}

bool ChildProcess::WriteLine(const std::string &line)
{
    std::string text = line + "\n";
    for (size_t written = 0; written < text.size();) {
        ssize_t count = send(input_, text.data() + written, text.size() - written, MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        written += count > 0 ? static_cast<size_t>(count) : 0;
    }
    return true;
}

bool ChildProcess::FillBuffer(std::chrono::milliseconds time)
{
    if (!PollUntil(output_, time, true)) {
        return false;
    }
    std::array<char, 65536> chunk{};
    ssize_t count = read(output_, chunk.data(), chunk.size());
    if (count <= 0) {
        return false;
    }
    buffer_.append(chunk.data(), static_cast<size_t>(count));
    return true;
}

std::optional<std::string> ChildProcess::ReadLine(std::chrono::milliseconds time)
{
    Clock::time_point deadline = Clock::now() + time;
    size_t searched = 0;
    while (true) {
        size_t end = buffer_.find('\n', searched);
        if (end != std::string::npos) {
            std::string line = buffer_.substr(0, end);
            buffer_.erase(0, end + 1);
            return line;
        }
        searched = buffer_.size();
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() < 0 || !FillBuffer(left)) {
            return std::nullopt;
        }
    }
}

std::string ChildProcess::ReadAll()
{
    while (FillBuffer(std::chrono::milliseconds(-1))) {
    }
    return std::move(buffer_);
}

void ChildProcess::CloseInput()
{
    CloseIfOpen(input_);
}

int ChildProcess::Reap()
{
    if (!status_) {
        int raw = 0;
        pid_t reaped = -1;
        do {
            reaped = waitpid(pid_, &raw, 0);
        } while (reaped < 0 && errno == EINTR);
        status_ = WIFEXITED(raw) ? WEXITSTATUS(raw) : SIGNAL_STATUS_BASE + WTERMSIG(raw);
    }
    return *status_;
}

std::optional<int> ChildProcess::Wait(std::chrono::milliseconds time)
{
    if (!status_ && !PollUntil(processDescriptor_, time, false)) {
        return std::nullopt;
    }
    return Reap();
}

int ChildProcess::WaitForwardingSignals()
{
    while (!status_ && !PollUntil(processDescriptor_, std::chrono::milliseconds(-1), true)) {
        // A terminal sends its SIGINT to the child as well; the others may be meant for this process alone.
        if (int signal = TakeSignal(); signal == SIGTERM || signal == SIGHUP) {
            kill(pid_, signal);
        }
    }
    return Reap();
}

void ChildProcess::Stop(std::chrono::milliseconds time)
{
    if (status_ || pid_ <= 0) {
        return;
    }
    kill(pid_, SIGTERM);
    if (!Wait(time)) {
        kill(pid_, SIGKILL);
        Reap();
    }
}

bool WaitUntilGone(pid_t pid, std::chrono::milliseconds time)
{
    int process = OpenProcess(pid);
    if (process < 0) {
        return errno == ESRCH;
    }
    bool gone = PollUntil(process, time, false);
    close(process);
    return gone;
}

std::string OwnProgram()
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

std::string OwnFolder()
{
    return std::filesystem::path(OwnProgram()).parent_path().string();
}

} // namespace NubisTool
