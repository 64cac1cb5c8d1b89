// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_COMMAND_ERROR_H
#define NUBIS_TOOL_COMMAND_ERROR_H

#include <stdexcept>
#include <string>
#include <utility>

namespace NubisTool {

constexpr int EXIT_DONE = 0;
constexpr int EXIT_OPERATION_FAILED = 1;
constexpr int EXIT_USAGE = 2;
// What shells report for a program that cannot be run, and for one that is not there.
constexpr int EXIT_NOT_RUN = 126;
constexpr int EXIT_NOT_FOUND = 127;
// What shells report for a command that SIGINT ended.
constexpr int EXIT_INTERRUPTED = 130;
// The same for one that SIGPIPE ended.
constexpr int EXIT_READER_GONE = 141;

// How a command ends without success: what went wrong and where, and what the person can do next. Thrown anywhere below
// a command and turned into text on stderr and an exit status in one place (RunTool).
class CommandError : public std::runtime_error {
public:
    CommandError(const std::string &what, std::string advice, int exitStatus = EXIT_OPERATION_FAILED)
        : std::runtime_error(what), advice_(std::move(advice)), exitStatus_(exitStatus)
    {}

    const std::string &Advice() const
    {
        return advice_;
    }

    int ExitStatus() const
    {
        return exitStatus_;
    }

private:
    std::string advice_;
    int exitStatus_;
};

// The arguments themselves do not make sense, although each of them could be read.
class UsageError : public CommandError {
public:
    UsageError(const std::string &what, std::string advice) : CommandError(what, std::move(advice), EXIT_USAGE)
    {}
};

} // namespace NubisTool

#endif
