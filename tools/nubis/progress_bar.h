// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_PROGRESS_BAR_H
#define NUBIS_TOOL_PROGRESS_BAR_H

#include <chrono>
#include <cstddef>
#include <string>

#include "console.h"

namespace NubisTool {

// A bar on stderr for work that takes longer than a second; nothing at all when stderr is not a terminal or the work is
// done sooner. One thread. The line is wiped when the bar ends, so that what is printed next stands on a clean line.
class ProgressBar {
public:
    using Clock = std::chrono::steady_clock;

    ProgressBar(const Console &console, std::string label, size_t total, Clock::time_point start = Clock::now());
    ~ProgressBar();
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    void Show(size_t done, Clock::time_point now = Clock::now());
    void Finish();

private:
    const Console &console_;
    std::string label_;
    size_t total_;
    Clock::time_point start_;
    Clock::time_point lastDrawn_;
    bool drawn_ = false;
};

} // namespace NubisTool

#endif
