// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "console.h"

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace NubisTool {
namespace {

constexpr size_t USUAL_WIDTH = 80;

size_t WidthOf(int terminal)
{
    const char *columns = std::getenv("COLUMNS");
    size_t width = columns == nullptr ? 0 : std::strtoul(columns, nullptr, 10);
    struct winsize size {};
    if (width == 0 && ioctl(terminal, TIOCGWINSZ, &size) == 0) {
        width = size.ws_col;
    }
    return width == 0 ? USUAL_WIDTH : width;
}

bool WantsColour()
{
    const char *refused = std::getenv("NO_COLOR");
    const char *terminal = std::getenv("TERM");
    return (refused == nullptr || *refused == '\0') && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
}

} // namespace

Console StandardConsole()
{
    const bool outIsTerminal = isatty(STDOUT_FILENO) == 1;
    return {std::cin, std::cout, std::cerr, isatty(STDERR_FILENO) == 1, outIsTerminal ? WidthOf(STDOUT_FILENO) : 0,
        outIsTerminal && WantsColour()};
}

} // namespace NubisTool
