// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_CPP_CONDITION_VARIABLE_H
#define FFRT_CPP_CONDITION_VARIABLE_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>

#include "c/condition_variable.h"
#include "cpp/mutex.h"
#include "cpp/sleep.h"

namespace ffrt {
enum class cv_status {
    no_timeout,
    timeout,
};

// Works with std::unique_lock<ffrt::mutex> only. Any thread and any task may wait and notify. Waiters are woken in
// the order in which they came; a wait without a predicate may end without a cause. Times are those of the steady
// clock; zero or less does not wait at all, nor unlock.
// Owned by the caller, who may destroy it as soon as every waiter has been notified.
class condition_variable : public ffrt_cond_t {
public:
    condition_variable();
    ~condition_variable() noexcept = default;
    condition_variable(const condition_variable &) = delete;
    condition_variable &operator=(const condition_variable &) = delete;

    void wait(std::unique_lock<mutex> &lk);

    template <typename Pred>
    void wait(std::unique_lock<mutex> &lk, Pred &&pred)
    {
        while (!pred()) {
            wait(lk);
        }
    }

    template <typename R, typename P>
    cv_status wait_for(std::unique_lock<mutex> &lk, const std::chrono::duration<R, P> &d) noexcept
    {
        return WaitFor(lk, detail::to_nanoseconds(d), nullptr, nullptr) ? cv_status::no_timeout : cv_status::timeout;
    }

    // The value of the predicate at the end.
    template <typename R, typename P, typename Pred>
    bool wait_for(std::unique_lock<mutex> &lk, const std::chrono::duration<R, P> &d, Pred &&pred) noexcept
    {
        using Type = std::remove_reference_t<Pred>;
        return WaitFor(
            lk, detail::to_nanoseconds(d), [](void *p) { return static_cast<bool>((*static_cast<Type *>(p))()); },
            const_cast<void *>(static_cast<const void *>(std::addressof(pred))));
    }

    // Waits for what is left until `tp` on its own clock when the wait begins.
    template <typename C, typename D>
    cv_status wait_until(std::unique_lock<mutex> &lk, const std::chrono::time_point<C, D> &tp) noexcept
    {
        return wait_for(lk, Left(tp));
    }

    template <typename C, typename D, typename Pred>
    bool wait_until(std::unique_lock<mutex> &lk, const std::chrono::time_point<C, D> &tp, Pred &&pred) noexcept
    {
        return wait_for(lk, Left(tp), std::forward<Pred>(pred));
    }

    void notify_one() noexcept;
    void notify_all() noexcept;

private:
    // Compared first: the distance to a moment long past need not fit.
    template <typename C, typename D>
    static auto Left(const std::chrono::time_point<C, D> &tp)
    {
        const auto now = C::now();
        return tp > now ? tp - now : decltype(tp - now)::zero();
    }

    // One wait if there is no predicate: whether it ended before its time. Else until the predicate or the end of the
    // time: the predicate's value.
    bool WaitFor(std::unique_lock<mutex> &lk, int64_t nanoseconds, bool (*predicate)(void *), void *argument) noexcept;
};
} // namespace ffrt

#endif
