// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <iostream>
#include <string>
#include <unistd.h>
#include <vector>

#include "command_line.h"
#include "console.h"

int main(int argc, char **argv)
{
    std::ios::sync_with_stdio(false);
    NubisTool::Console console{std::cin, std::cout, std::cerr, isatty(STDERR_FILENO) == 1};
    return NubisTool::RunTool(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc), console);
}
