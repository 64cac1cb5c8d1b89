// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <thread>

#include "cpp/sleep.h"

#include "core.h"
#include "saturate.h"

namespace {
void Sleep(int64_t nanoseconds)
{
    using namespace Host::Ffrt;
    if (nanoseconds <= 0) {
        std::this_thread::yield();
        return;
    }
    Core &core = GetCore();
    CoreLock lock(core.mutex);
    const Moment due = core.timeLine.After(nanoseconds);
    // Nobody else knows its own variable, but something that stood at this address before may still be told of.
    while (core.parking.Park(lock, &nanoseconds, due)) {
    }
}
} // namespace

namespace ffrt {
void this_task::yield()
{
    std::this_thread::yield();
}

void detail::sleep_nanoseconds(int64_t nanoseconds)
{
    Sleep(nanoseconds);
}
} // namespace ffrt

int ffrt_usleep(uint64_t usec)
{
    Sleep(Host::Ffrt::Saturate(usec, Host::Ffrt::NANOSECONDS_PER_MICROSECOND));
    return ffrt_success;
}

void ffrt_yield(void)
{
    std::this_thread::yield();
}
