// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_CONSOLE_H
#define NUBIS_TOOL_CONSOLE_H

#include <iosfwd>

namespace NubisTool {

// The streams a command talks through: the standard ones in the program, string streams in tests.
struct Console {
    std::istream &in;
    std::ostream &out;
    std::ostream &err;
    // Progress is drawn on err only when a person is looking at it.
    bool errIsTerminal = false;
};

} // namespace NubisTool

#endif
