// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_COMMAND_LINE_H
#define NUBIS_SERVICE_COMMAND_LINE_H

#include <functional>
#include <iosfwd>
#include <string>

namespace DriveService {

struct ServeOptions {
    std::string dataFolder;
    int userId = 0;
    int idleSeconds = 0; // 0: never ends for being idle
};

// Reads the command line and does what it says; `serve` runs the service and returns its exit status. The result is
// the program's: 0 done, 1 it could not be done, 2 the command line is wrong.
int RunCommandLine(int argc, const char *const *argv, std::ostream &out, std::ostream &err,
    const std::function<int(const ServeOptions &)> &serve);

} // namespace DriveService

#endif // NUBIS_SERVICE_COMMAND_LINE_H
