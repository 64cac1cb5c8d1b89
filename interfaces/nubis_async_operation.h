// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_ASYNC_OPERATION_H
#define NUBIS_ASYNC_OPERATION_H

#include <functional>
#include <future>
#include <memory>
#include <utility>

#if defined(__cpp_impl_coroutine)
#include <coroutine>
#include <optional>
#endif

#include "nb_error.h"

namespace Nubis::Async {
/// An operation that is ready to be started, once, in one of three ways. Nothing is sent before.
///
/// A plain value that holds the arguments, and the database, container or kit until it was started; from then on the
/// library sees to that.
template <typename Result>
class [[nodiscard]] Operation {
public:
    /// Takes the outcome.
    using Continuation = std::function<void(Result)>;
    /// Starts with the continuation as callback and returns 0, or a local error code, after which the continuation is
    /// never called.
    using Starter = std::function<int(Continuation)>;

    /// The starter is called once, by one of the calls below.
    explicit Operation(Starter starter) : starter_(std::move(starter))
    {}

    /// Calls the function exactly once: on a worker task of the library, where the callback's rules hold for it, or, when
    /// the operation refused to start, before Then returns. An empty function is not called.
    void Then(Continuation continuation) &&
    {
        const Starter starter = std::move(starter_);
        if (continuation == nullptr) {
            continuation = [](const Result &) {};
        }
        const int code = starter(continuation);
        if (code != NB_LOCAL_SUCCESS) {
            continuation(Refused(code));
        }
    }

    /// The future holds a result, never an exception. Waiting for it from a callback of the library is allowed.
    [[nodiscard]] std::future<Result> Start() &&
    {
        auto promise = std::make_shared<std::promise<Result>>();
        std::future<Result> future = promise->get_future();
        std::move(*this).Then([promise](Result result) { promise->set_value(std::move(result)); });
        return future;
    }

#if defined(__cpp_impl_coroutine)
    class Awaiter {
    public:
        explicit Awaiter(Starter starter) : starter_(std::move(starter))
        {}

        bool await_ready() const noexcept
        {
            return false;
        }

        bool await_suspend(std::coroutine_handle<> waiting)
        {
            // The coroutine may go on, and end the awaiter with it, while the starter is still returning.
            const Starter starter = std::move(starter_);
            const int code = starter([this, waiting](Result result) {
                result_.emplace(std::move(result));
                waiting.resume();
            });
            if (code == NB_LOCAL_SUCCESS) {
                return true;
            }
            result_.emplace(Refused(code));
            return false;
        }

        Result await_resume()
        {
            return std::move(*result_);
        }

    private:
        Starter starter_;
        std::optional<Result> result_;
    };

    /// The coroutine goes on where Then would call its function; it may block there, and call the library again. Make lists
    /// of arguments before: gcc 12 refuses one with elements inside the co_await ("array used as initializer").
    Awaiter operator co_await() &&
    {
        return Awaiter(std::move(starter_));
    }
#endif

private:
    static Result Refused(int code)
    {
        Result result;
        result.error = NBError(static_cast<NBLocalErrorCode>(code));
        return result;
    }

    Starter starter_;
};
} // namespace Nubis::Async

#endif // NUBIS_ASYNC_OPERATION_H
