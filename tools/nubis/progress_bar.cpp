// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "progress_bar.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <utility>

namespace NubisTool {
namespace {

constexpr std::chrono::milliseconds FIRST_DRAW_AFTER(1000);
constexpr std::chrono::milliseconds REDRAW_AFTER(100);
constexpr size_t BAR_WIDTH = 30;

// "0:07", "12:30"; of more than a day nobody wants to know the minutes.
std::string TimeLeft(double seconds)
{
    constexpr double day = 86400;
    if (seconds >= day) {
        return "more than a day";
    }
    const auto whole = std::lround(seconds);
    const std::string rest = std::to_string(whole % 60);
    return std::to_string(whole / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

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
    const double rate = static_cast<double>(done) / seconds;
    console_.err << '\r' << label_ << " [" << std::string(filled, '#') << std::string(BAR_WIDTH - filled, '.') << "] "
                 << done << '/' << total_ << "  " << static_cast<size_t>(rate) << "/s"
                 << (done > 0 ? "  " + TimeLeft(static_cast<double>(total_ - done) / rate) + " left" : "") << "\033[K"
                 << std::flush;
}

void ProgressBar::Finish()
{
    if (drawn_) {
        console_.err << "\r\033[K" << std::flush;
        drawn_ = false;
    }
}

} // namespace NubisTool
