// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_WALL_CLOCK_H
#define NUBIS_WALL_CLOCK_H

#include <cstdint>
#include <functional>

namespace Nubis {
// The time of day as the whole library sees it. Any thread may call.
class WallClock {
public:
    // Since the Unix epoch.
    static int64_t NowSeconds();
    static int64_t NowMillis();

    // From now on the time (milliseconds since the epoch) is what this function says, so that tests decide what time it
    // is; an empty one brings the system's clock back. It is called on any thread.
    static void SetSource(std::function<int64_t()> read);
};
} // namespace Nubis

#endif // NUBIS_WALL_CLOCK_H
