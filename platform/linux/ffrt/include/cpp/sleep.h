// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_CPP_SLEEP_H
#define FFRT_CPP_SLEEP_H

#include <chrono>
#include <cstdint>

#include "c/sleep.h"

namespace ffrt {
namespace this_task {
// Lets other threads run first.
void yield();
} // namespace this_task

// What the templates of this header and of the condition variable share; not for use outside them.
namespace detail {
// Nanoseconds, rounded up, so that nothing wakes too early; what does not fit (a wait for years) becomes the largest
// number, which means without end. Zero or less becomes 0.
template <class R, class P>
int64_t to_nanoseconds(const std::chrono::duration<R, P> &d) noexcept
{
    using seconds = std::chrono::duration<long double>;
    constexpr long double limit = 9.0e9L;
    const long double whole = std::chrono::duration_cast<seconds>(d).count();
    if (!(whole > 0)) {
        return 0;
    }
    if (whole >= limit) {
        return INT64_MAX;
    }
    return std::chrono::ceil<std::chrono::duration<int64_t, std::nano>>(d).count();
}

void sleep_nanoseconds(int64_t nanoseconds);
} // namespace detail

namespace this_task {
// Blocks the calling task or thread for `d`; zero or less only yields.
template <class R, class P>
void sleep_for(const std::chrono::duration<R, P> &d)
{
    detail::sleep_nanoseconds(detail::to_nanoseconds(d));
}
} // namespace this_task
} // namespace ffrt

#endif
