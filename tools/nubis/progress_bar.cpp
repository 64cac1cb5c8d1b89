// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "progress_bar.h"

#include <algorithm>
#include <ostream>
#include <utility>

namespace NubisTool {
namespace {

constexpr std::chrono::milliseconds FIRST_DRAW_AFTER(1000);
constexpr std::chrono::milliseconds REDRAW_AFTER(100);
constexpr size_t BAR_WIDTH = 30;

} // namespace

ProgressBar::ProgressBar(const Console &console, std::string label, size_t total, Clock::time_point start)
    : console_(console), label_(std::move(label)), total_(total), start_(start), lastDrawn_(start)
{}

ProgressBar::~ProgressBar()
{
    Finish();
}

void ProgressBar::Show(size_t done, Clock::time_point now)
{
    if (!console_.errIsTerminal || now - start_ < FIRST_DRAW_AFTER || (drawn_ && now - lastDrawn_ < REDRAW_AFTER)) {
        return;
    }
    drawn_ = true;
    lastDrawn_ = now;
    done = std::min(done, total_);
    size_t filled = total_ == 0 ? BAR_WIDTH : done * BAR_WIDTH / total_;
    double seconds = std::chrono::duration<double>(now - start_).count();
    console_.err << '\r' << label_ << " [" << std::string(filled, '#') << std::string(BAR_WIDTH - filled, '.') << "] "
                 << done << '/' << total_ << "  " << static_cast<size_t>(static_cast<double>(done) / seconds)
                 << "/s\033[K" << std::flush;
}

void ProgressBar::Finish()
{
    if (drawn_) {
        console_.err << "\r\033[K" << std::flush;
        drawn_ = false;
    }
}

} // namespace NubisTool
