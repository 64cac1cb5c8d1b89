// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef CRASH_CLIENT_PROCESS_H
#define CRASH_CLIENT_PROCESS_H

#include <chrono>
#include <string>
#include <vector>

#include <sys/types.h>

namespace Crash {
// Longer than anything takes on a busy machine.
constexpr std::chrono::seconds PATIENCE(60);

// A child process whose standard output is read here. What it has written before it was killed is still read.
class ClientProcess {
public:
    // Throws when the program cannot be started.
    explicit ClientProcess(std::vector<std::string> command);
    // Kills it if it runs.
    ~ClientProcess();
    ClientProcess(const ClientProcess &) = delete;
    ClientProcess &operator=(const ClientProcess &) = delete;

    pid_t Pid() const
    {
        return pid_;
    }
    // The descriptor of its output; -1 after the end.
    int Output() const;
    // Waits for output; the whole lines so far, none at the end of the output.
    std::vector<std::string> ReadLines();
    void Kill();
    // The status as of waitpid. One that takes too long to end is killed, which the status shows.
    int AwaitEnd();

private:
    pid_t pid_ = -1;
    int output_ = -1;
    std::string unread_;
};

// Whether the descriptor became readable in time.
bool AwaitReadable(int descriptor, std::chrono::microseconds atMost);

// What a process holds, as /proc tells it.
struct Holdings {
    size_t threads = 0;
    size_t sockets = 0;
    // Without those of the database, of which a pool of readers keeps some.
    size_t files = 0;
};
Holdings HoldingsOf(pid_t pid);
} // namespace Crash

#endif // CRASH_CLIENT_PROCESS_H
