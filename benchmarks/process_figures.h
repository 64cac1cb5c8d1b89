// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_BENCH_PROCESS_FIGURES_H
#define NUBIS_BENCH_PROCESS_FIGURES_H

#include <cstdint>

// What the kernel says about a process. Whatever cannot be read throws.
namespace NubisBench {
// Bytes in memory now, and at most since ForgetPeak.
int64_t ResidentBytes();
int64_t PeakResidentBytes();
void ForgetPeak();
// Gives back to the system what the allocator holds without need.
void TrimMemory();

struct Activity {
    // Of all threads that live.
    int64_t wakeUps = 0;
    double cpuSeconds = 0;
};

// `pid` 0 is this process.
Activity ActivityOf(int pid);
int ThreadsOf(int pid);
} // namespace NubisBench

#endif // NUBIS_BENCH_PROCESS_FIGURES_H
