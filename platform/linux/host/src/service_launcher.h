// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_SERVICE_LAUNCHER_H
#define HOST_SERVICE_LAUNCHER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

#include "manifest.h"

namespace Host {

// The size at which the log of a service is put aside when it starts.
constexpr size_t MAX_SERVICE_LOG_BYTES = size_t{8} * 1024 * 1024;

// A service program that this process has started. When the object ends, somebody still takes note of the program's exit,
// so that no dead process stays behind.
class ServiceLauncher {
public:
    ServiceLauncher() = default;
    ~ServiceLauncher();
    ServiceLauncher(const ServiceLauncher &) = delete;
    ServiceLauncher &operator=(const ServiceLauncher &) = delete;

    // Starts the ability's program in a session of its own, with its output going to <state>/log/<bundle>.log, or to our
    // standard error if NUBIS_SERVICE_STDERR is "inherit". On failure false with a text.
    bool Start(const Manifest &manifest, const Manifest::Ability &ability, const std::string &bundleName,
        int32_t userId, std::string &error);
    // True when the program has already ended; `how` tells in words, the last of them its own.
    bool HasExited(std::string &how);

private:
    pid_t pid_ = -1;
    std::string program_;
    std::string logFile_;
    off_t logStart_ = 0; // where this program's part of the log begins
};

// Makes a command line of an ability's exec: placeholders filled in, the program found. On failure false with a text.
bool BuildCommand(const Manifest &manifest, const Manifest::Ability &ability, int32_t userId,
    std::vector<std::string> &command, std::string &error);

} // namespace Host

#endif // HOST_SERVICE_LAUNCHER_H
