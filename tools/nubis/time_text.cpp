// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "time_text.h"

#include <ctime>

namespace NubisTool {

std::string TimeText(int64_t milliseconds)
{
    auto seconds = static_cast<std::time_t>(milliseconds / 1000);
    std::tm local{};
    char text[64];
    // A year that no calendar has is shown as it came.
    if (localtime_r(&seconds, &local) == nullptr ||
        std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &local) == 0) {
        return std::to_string(milliseconds);
    }
    return text;
}

} // namespace NubisTool
