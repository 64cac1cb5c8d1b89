// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "wall_clock.h"

#include <chrono>
#include <mutex>
#include <utility>

namespace Nubis {
namespace {
constexpr int64_t MILLIS_PER_SECOND = 1000;

struct ClockSource {
    std::mutex mutex;
    std::function<int64_t()> read;
};

ClockSource &GetClockSource()
{
    static auto *source = new ClockSource;
    return *source;
}
} // namespace

int64_t WallClock::NowSeconds()
{
    return NowMillis() / MILLIS_PER_SECOND;
}

int64_t WallClock::NowMillis()
{
    ClockSource &source = GetClockSource();
    std::function<int64_t()> read;
    {
        std::lock_guard<std::mutex> lock(source.mutex);
        read = source.read;
    }
    if (read) {
        return read();
    }
    auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
}

void WallClock::SetSource(std::function<int64_t()> read)
{
    ClockSource &source = GetClockSource();
    std::lock_guard<std::mutex> lock(source.mutex);
    source.read.swap(read);
}
} // namespace Nubis
