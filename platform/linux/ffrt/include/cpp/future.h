// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_CPP_FUTURE_H
#define FFRT_CPP_FUTURE_H

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "cpp/condition_variable.h"
#include "cpp/mutex.h"

namespace ffrt {
enum class future_status {
    ready,
    timeout,
    deferred, // never returned
};

namespace detail {
// What a promise and its futures share; lives as long as the last of them.
template <typename R>
struct shared_state {
    mutex lock;
    condition_variable changed;
    std::optional<R> value;

    template <typename V>
    void set(V &&v)
    {
        std::lock_guard<mutex> guard(lock);
        value.reset();
        value.emplace(std::forward<V>(v));
        changed.notify_all();
    }
};
} // namespace detail

template <typename R>
struct promise;

// The reading side. Several futures of one promise share one state: what one of them has taken is moved out for all.
// A future is used by one thread at a time; the threads of several futures do not disturb each other.
template <typename R>
class future {
public:
    future() noexcept = default;
    future(const future &) = delete;
    future &operator=(const future &) = delete;
    future(future &&other) noexcept = default;
    future &operator=(future &&other) noexcept = default;

    bool valid() const noexcept
    {
        return state_ != nullptr;
    }

    // Waits without end, moves the value out and leaves this future empty. An empty future may be asked for valid()
    // and nothing else.
    R get() noexcept
    {
        auto state = std::move(state_);
        std::unique_lock<mutex> guard(state->lock);
        state->changed.wait(guard, [&state]() { return state->value.has_value(); });
        return std::move(*state->value);
    }

    void wait() const noexcept
    {
        std::unique_lock<mutex> guard(state_->lock);
        state_->changed.wait(guard, [this]() { return state_->value.has_value(); });
    }

    template <typename Rep, typename Period>
    future_status wait_for(const std::chrono::duration<Rep, Period> &d) const noexcept
    {
        std::unique_lock<mutex> guard(state_->lock);
        const bool ready = state_->changed.wait_for(guard, d, [this]() { return state_->value.has_value(); });
        return ready ? future_status::ready : future_status::timeout;
    }

private:
    friend struct promise<R>;

    explicit future(std::shared_ptr<detail::shared_state<R>> state) noexcept : state_(std::move(state))
    {}

    std::shared_ptr<detail::shared_state<R>> state_;
};

// The writing side. Setting again replaces the value and wakes all waiters again; every call of get_future gives one
// more future of the same state. A promise that goes without a value wakes nobody. set_value and get_future may be
// called from any thread. Not copyable; a promise that was moved from may only be destroyed.
template <typename R>
struct promise {
    promise() noexcept : state_(std::make_shared<detail::shared_state<R>>())
    {}
    promise(const promise &) = delete;
    promise &operator=(const promise &) = delete;
    promise(promise &&other) noexcept = default;

    void set_value(const R &value) noexcept
    {
        state_->set(value);
    }
    void set_value(R &&value) noexcept
    {
        state_->set(std::move(value));
    }
    future<R> get_future() noexcept
    {
        return future<R>(state_);
    }

private:
    std::shared_ptr<detail::shared_state<R>> state_;
};
} // namespace ffrt

#endif
