// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_FFRT_CORE_H
#define HOST_FFRT_CORE_H

#include <mutex>

#include "parking.h"
#include "time_line.h"
#include "timer_table.h"
#include "worker_pool.h"

namespace Host::Ffrt {
// Everything of FFRT that is one per process, under one lock. One lock for all, because a waiter stands in the list of
// what it waits for and in the time line at once, and because the count of active tasks must change in the same step as
// the wake-up that changes it. Only an uncontended ffrt::mutex does without. Never destroyed: tasks and waits go on
// while main returns.
struct Core {
    std::mutex mutex;
    WorkerPool pool;
    TimeLine timeLine;
    ParkingLot parking;
    TimerTable timers;
};

Core &GetCore();
} // namespace Host::Ffrt

#endif
