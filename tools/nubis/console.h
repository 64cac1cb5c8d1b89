// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_CONSOLE_H
#define NUBIS_TOOL_CONSOLE_H

#include <cstddef>
#include <iosfwd>

namespace NubisTool {

// The streams a command talks through: the standard ones in the program, string streams in tests.
struct Console {
    std::istream &in;
    std::ostream &out;
    std::ostream &err;
    // Progress is drawn on err only when a person is looking at it.
    bool errIsTerminal = false;
    // The columns of the terminal that out is; 0 when it is none, and nothing may be cut.
    size_t outWidth = 0;
    // Whether text on out may have colours.
    bool colour = false;
};

// That of the program. COLUMNS counts more than what the terminal says; NO_COLOR and a dumb terminal do without colours.
Console StandardConsole();

} // namespace NubisTool

#endif
