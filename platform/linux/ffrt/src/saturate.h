// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_FFRT_SATURATE_H
#define HOST_FFRT_SATURATE_H

#include <cstdint>
#include <limits>

namespace Host::Ffrt {
constexpr int64_t NANOSECONDS_PER_MICROSECOND = 1000;
constexpr int64_t NANOSECONDS_PER_MILLISECOND = 1000000;

// `count` units as nanoseconds; what does not fit becomes the largest number.
constexpr int64_t Saturate(uint64_t count, int64_t nanosecondsPerUnit)
{
    constexpr int64_t most = std::numeric_limits<int64_t>::max();
    return count > static_cast<uint64_t>(most / nanosecondsPerUnit) ? most
                                                                    : static_cast<int64_t>(count) * nanosecondsPerUnit;
}
} // namespace Host::Ffrt

#endif
