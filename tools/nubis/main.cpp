// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "command_line.h"
#include "console.h"
#include "host/log_level.h"

int main(int argc, char **argv)
{
    // What fails is said by the commands, for people; the library's own lines are for those who ask for them.
    if (std::getenv("NUBIS_LOG_LEVEL") == nullptr) {
        Host::SetLogLevel(LOG_FATAL);
    }
    std::ios::sync_with_stdio(false);
    return NubisTool::RunTool(
        std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc), NubisTool::StandardConsole());
}
