// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_CHILD_PROCESS_H
#define NUBIS_TOOL_CHILD_PROCESS_H

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace NubisTool {

using Environment = std::map<std::string, std::string>;

struct ProcessSpec {
    std::vector<std::string> arguments; // the program first; searched in PATH when it has no '/'
    Environment environment;            // on top of this process's own
    bool pipes = false;                 // connect its standard input and output to this object
    bool captureErrors = false;         // standard error into the same pipe as standard output
    bool ownGroup = false;              // it is spared the signals that a terminal sends to this process's group
};

// A program started by this one. One thread. When the object goes while the program runs, the program is asked to end
// and, if it does not, is killed. Throws CommandError, with the exit status
// that shells give then, when it cannot be started.
class ChildProcess {
public:
    explicit ChildProcess(const ProcessSpec &spec);
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    pid_t Pid() const
    {
        return pid_;
    }

    // False when the program no longer reads.
    bool WriteLine(const std::string &line);
    // The next line of its output without the line end; nothing at its end, after the time, or after an interrupt.
    std::optional<std::string> ReadLine(std::chrono::milliseconds time);
    // Everything it writes until it closes its output.
    std::string ReadAll();
    void CloseInput();

    // Its exit status as shells report it (128 + signal for a program that a signal ended); nothing after the time.
    // A negative time is none at all.
    std::optional<int> Wait(std::chrono::milliseconds time);
    // Waits without a limit under an InterruptGuard: SIGTERM is sent on, SIGINT left to the terminal that sends it to both.
    int WaitForwardingSignals();
    // SIGTERM, and SIGKILL after the time.
    void Stop(std::chrono::milliseconds time);

private:
    bool FillBuffer(std::chrono::milliseconds time);
    int Reap();

    pid_t pid_ = -1;
    int processDescriptor_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string buffer_;
    std::optional<int> status_;
};

// Whether a process, this one's child or not, was gone within the time.
bool WaitUntilGone(pid_t pid, std::chrono::milliseconds time);

// This program, and the folder that it stands in.
std::string OwnProgram();
std::string OwnFolder();

} // namespace NubisTool

#endif
