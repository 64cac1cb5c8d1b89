// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "host/event_channel.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cinttypes>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <system_error>
#include <thread>
#include <type_traits>
#include <unistd.h>
#include <utility>

#include "event_spool.h"
#include "ipc_log.h"

namespace Host {

namespace {

// Pause while the system has no more descriptors or memory.
constexpr int SHORTAGE_MILLISECONDS = 50;

// Orders the texts of this process, and those of several by the time.
class Stamps {
public:
    static Stamps &Get()
    {
        static auto *stamps = new Stamps;
        return *stamps;
    }

    // Held from taking a stamp until the text is in its place.
    std::mutex &Mutex()
    {
        return mutex_;
    }

    // Called with the lock held.
    std::string Next()
    {
        auto now = std::chrono::steady_clock::now().time_since_epoch();
        auto count = static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
        last_ = count > last_ ? count : last_ + 1;
        char text[48] = {};
        std::snprintf(text, sizeof(text), "%020" PRIu64 ".%d", last_, static_cast<int>(getpid()));
        return text;
    }

private:
    std::mutex mutex_;
    uint64_t last_ = 0;
};

} // namespace

// Shared with its thread, which may outlive the listener when that ends inside a call.
class EventListener::Impl : public std::enable_shared_from_this<EventListener::Impl> {
public:
    Impl(int32_t userId, std::string eventName, OnEvent onEvent, OnGap onGap)
        : userId_(userId), eventName_(std::move(eventName)), onEvent_(std::move(onEvent)), onGap_(std::move(onGap)),
          stop_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
    {}

    bool Start(std::string &error)
    {
        std::string folder = PrepareEventFolder(userId_, eventName_, error);
        if (folder.empty()) {
            return false;
        }
        socket_ = stop_ ? OpenSpool(folder, spool_, error) : Ipc::UniqueFd();
        if (!socket_) {
            error = error.empty() ? "the process has no more descriptors" : error;
            return false;
        }
        std::lock_guard<std::mutex> lock(mutex_);
        try {
            std::thread thread([self = shared_from_this()] { self->Run(); });
            runner_ = thread.get_id();
            thread.detach();
        } catch (const std::system_error &failure) {
            error = std::string("cannot start a thread: ") + failure.what();
            socket_.Reset();
            RemoveSpool(spool_);
            return false;
        }
        return true;
    }

    void Stop()
    {
        stopped_ = true;
        eventfd_write(stop_.Get(), 1);
        std::unique_lock<std::mutex> lock(mutex_);
        ended_.wait(lock, [this] { return runner_ == std::thread::id() || runner_ == std::this_thread::get_id(); });
    }

private:
    void Run()
    {
        bool isShort = false;
        while (!stopped_) {
            pollfd fds[] = {{stop_.Get(), POLLIN, 0}, {socket_.Get(), POLLIN, 0}};
            // Sockets that cannot be accepted now would end the waiting at once.
            poll(fds, isShort ? 1 : 2, isShort ? SHORTAGE_MILLISECONDS : -1);
            bool isAccepted = AcceptWakes();
            isShort = !ReadSpool() || !isAccepted;
        }
        socket_.Reset();
        RemoveSpool(spool_);
        std::lock_guard<std::mutex> lock(mutex_);
        runner_ = std::thread::id();
        ended_.notify_all();
    }

    // False when some may be left.
    bool AcceptWakes()
    {
        while (!stopped_) {
            Ipc::UniqueFd waker(accept4(socket_.Get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (!waker && errno != EINTR && errno != ECONNABORTED) {
                return errno == EAGAIN;
            }
        }
        return true;
    }

    // False when some may be left.
    bool ReadSpool()
    {
        std::string text;
        for (const std::string &file : ListSpool(spool_)) {
            if (stopped_) {
                break;
            }
            switch (TakeFromSpool(file, text)) {
                case Taken::TEXT:
                    Call(onEvent_, text);
                    break;
                case Taken::GAP:
                    IPC_LOGE("events %{public}s were lost, the listener was too slow", eventName_.c_str());
                    Call(onGap_);
                    break;
                case Taken::NOTHING:
                    break;
                case Taken::LATER:
                    return false;
            }
        }
        return true;
    }

    template <typename... Arguments>
    void Call(const std::function<void(Arguments...)> &function, const std::decay_t<Arguments> &...arguments)
    {
        try {
            if (function) {
                function(arguments...);
            }
        } catch (const std::exception &failure) {
            IPC_LOGE("the listener to %{public}s threw %{public}s", eventName_.c_str(), failure.what());
        } catch (...) {
            IPC_LOGE("the listener to %{public}s threw something", eventName_.c_str());
        }
    }

    const int32_t userId_;
    const std::string eventName_;
    const OnEvent onEvent_;
    const OnGap onGap_;
    Ipc::UniqueFd stop_;
    std::atomic<bool> stopped_{false};
    // Set before the thread starts, then its own.
    Ipc::UniqueFd socket_;
    std::string spool_;

    std::mutex mutex_;
    std::condition_variable ended_;
    // While it runs; guarded by mutex_.
    std::thread::id runner_;
};

EventListener::EventListener(int32_t userId, std::string eventName, OnEvent onEvent, OnGap onGap)
    : impl_(std::make_shared<Impl>(userId, std::move(eventName), std::move(onEvent), std::move(onGap)))
{}

EventListener::~EventListener()
{
    impl_->Stop();
}

bool EventListener::Start(std::string &error)
{
    // A first call may end this listener before Start is through.
    std::shared_ptr<Impl> impl = impl_;
    return impl->Start(error);
}

bool PublishEvent(int32_t userId, const std::string &eventName, const std::string &text, std::string &error)
{
    if (text.size() > MAX_EVENT_SIZE) {
        error = "an event of " + std::to_string(text.size()) + " bytes is too large, at most " +
                std::to_string(MAX_EVENT_SIZE) + " are possible";
        return false;
    }
    std::string folder = PrepareEventFolder(userId, eventName, error);
    if (folder.empty()) {
        return false;
    }
    Stamps &stamps = Stamps::Get();
    std::lock_guard<std::mutex> lock(stamps.Mutex());
    std::string stamp = stamps.Next();
    bool isGiven = true;
    for (const std::string &spool : FindSpools(folder)) {
        std::string reason;
        if (!PutIntoSpool(spool, stamp, text, reason)) {
            error = reason;
            isGiven = false;
        }
    }
    return isGiven;
}

} // namespace Host
