// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_CPP_THREAD_H
#define FFRT_CPP_THREAD_H

#include <functional>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>

#include "cpp/task.h"

namespace ffrt {
// A task that is held like a thread. The function and its arguments are copied or moved in, and passed on as rvalues.
// A joinable thread must be joined or detached before it is destroyed or assigned to, else the process terminates.
// Move only, not thread safe.
class thread {
public:
    thread() noexcept = default;

    template <typename Fn, typename... Args>
    explicit thread(const char *name, qos qos_, Fn &&fn, Args &&...args)
    {
        Start(name, qos_, std::forward<Fn>(fn), std::forward<Args>(args)...);
    }

    template <typename Fn, typename... Args>
    explicit thread(qos qos_, Fn &&fn, Args &&...args)
    {
        Start("thread", qos_, std::forward<Fn>(fn), std::forward<Args>(args)...);
    }

    // Deliberately open to everything but a thread: what the platform refuses to compile shall not compile here.
    template <class Fn, class... Args, class = std::enable_if_t<!std::is_same_v<std::decay_t<Fn>, thread>>>
    explicit thread(Fn &&fn, Args &&...args)
    {
        Start("thread", qos_default, std::forward<Fn>(fn), std::forward<Args>(args)...);
    }

    thread(const thread &) = delete;
    thread &operator=(const thread &) = delete;
    thread(thread &&other) noexcept = default;
    thread &operator=(thread &&other) noexcept;
    ~thread();

    bool joinable() const noexcept;
    // Only lets go of the task.
    void detach() noexcept;
    // Blocks until the task has ended.
    void join() noexcept;

private:
    template <typename Fn, typename... Args>
    void Start(const char *name, qos qos_, Fn &&fn, Args &&...args)
    {
        static_assert(std::is_invocable_v<std::decay_t<Fn>, std::decay_t<Args>...>,
            "a thread is made from a function and its arguments, optionally after a name and a QoS of type int");
        using Call = std::tuple<std::decay_t<Fn>, std::decay_t<Args>...>;
        // Shared, because a std::function has to be copyable and the arguments need not be.
        auto call = std::make_shared<Call>(std::forward<Fn>(fn), std::forward<Args>(args)...);
        std::function<void()> body = [call = std::move(call)]() {
            std::apply([](auto &&...parts) { std::invoke(std::move(parts)...); }, std::move(*call));
        };
        handle_ = submit_h(std::move(body), task_attr().name(name).qos(qos_));
    }

    task_handle handle_;
};
} // namespace ffrt

#endif
