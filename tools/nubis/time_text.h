// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_TIME_TEXT_H
#define NUBIS_TOOL_TIME_TEXT_H

#include <cstdint>
#include <string>

namespace NubisTool {

// Milliseconds since the epoch as "2026-11-21 15:40:52" in the time zone of the process.
std::string TimeText(int64_t milliseconds);

} // namespace NubisTool

#endif
