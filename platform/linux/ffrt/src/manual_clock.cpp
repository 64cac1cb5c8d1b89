// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "host/manual_clock.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "core.h"

namespace Host {
using Ffrt::Core;
using Ffrt::CoreLock;
using Ffrt::GetCore;
using Ffrt::Moment;

std::chrono::steady_clock::time_point MonotonicNow()
{
    Core &core = GetCore();
    CoreLock lock(core.mutex);
    return core.timeLine.Now();
}

ManualClock::ManualClock(std::chrono::milliseconds patience) : patience_(patience)
{
    Core &core = GetCore();
    CoreLock lock(core.mutex);
    if (core.timeLine.IsManual()) {
        std::fputs("Host::ManualClock: there is one already\n", stderr);
        std::abort();
    }
    core.timeLine.BeginManual();
}

ManualClock::~ManualClock()
{
    Core &core = GetCore();
    CoreLock lock(core.mutex);
    core.timeLine.EndManual();
}

std::chrono::steady_clock::time_point ManualClock::Now() const
{
    return MonotonicNow();
}

void ManualClock::Advance(std::chrono::nanoseconds duration)
{
    Core &core = GetCore();
    CoreLock lock(core.mutex);
    while (advancing_) {
        core.parking.Park(lock, this);
    }
    advancing_ = true;
    core.pool.WaitForQuiet(lock, patience_);
    const Moment target = core.timeLine.After(std::max(duration.count(), std::chrono::nanoseconds::rep{0}));
    while (core.timeLine.StepTowards(target)) {
        core.pool.WaitForQuiet(lock, patience_);
    }
    advancing_ = false;
    core.parking.Unpark(this, 1);
}

bool ManualClock::WaitForPending(std::size_t count, std::chrono::milliseconds timeLimit) const
{
    Core &core = GetCore();
    CoreLock lock(core.mutex);
    return core.timeLine.WaitForPending(lock, count, std::chrono::steady_clock::now() + timeLimit);
}
} // namespace Host
