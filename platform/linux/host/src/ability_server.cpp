// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "host/ability_server.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <limits>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

#include "file_lock.h"
#include "host/paths.h"
#include "ipc_log.h"
#include "manifest.h"
#include "unix_socket.h"
#include "wire_acceptor.h"

namespace Host {

namespace {

using Clock = std::chrono::steady_clock;

// How long a service that is just ending may still hold the place.
constexpr std::chrono::milliseconds TAKEOVER_TIME(2000);
// How long requests that were taken may still take when the service ends, with what the service itself waits for; so
// much of it is there for sending the answers in any case.
constexpr std::chrono::milliseconds ANSWER_TIME(10000);
constexpr std::chrono::milliseconds SEND_TIME(1000);
constexpr int RETRY_MILLISECONDS = 10;
// Pause while the system has no more descriptors or memory for a client.
constexpr int SHORTAGE_MILLISECONDS = 50;

} // namespace

class AbilityServer::Impl {
public:
    Impl(AbilityServerOptions options, OHOS::sptr<OHOS::IRemoteObject> ability)
        : options_(std::move(options)), ability_(std::move(ability)),
          path_(AbilitySocketPath(options_.bundleName, options_.abilityName, options_.userId)),
          wake_(std::make_shared<Ipc::UniqueFd>(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)))
    {}

    ~Impl()
    {
        Close();
    }

    bool Start(std::string &error)
    {
        if (ability_ == nullptr || !IsSafeName(options_.bundleName) || !IsSafeName(options_.abilityName)) {
            error = "no ability, or no valid name of one, is given";
            return false;
        }
        if (!PrepareRuntimeDir(options_.userId, error) || !TakePlace(error)) {
            return false;
        }
        // Only the holder of the place gets here, so whatever is at the path belongs to a dead process.
        unlink(path_.c_str());
        listener_ = Ipc::ListenSocket(path_, error);
        if (!listener_) {
            place_.Unlock();
            return false;
        }
        auto find = [ability = ability_, options = options_](
                        const std::string &bundleName, const std::string &abilityName, int32_t userId) {
            bool mine =
                bundleName == options.bundleName && abilityName == options.abilityName && userId == options.userId;
            return mine ? ability : OHOS::sptr<OHOS::IRemoteObject>();
        };
        auto onChange = [wake = wake_] { eventfd_write(wake->Get(), 1); };
        acceptor_ = std::make_shared<Ipc::WireAcceptor>(find, onChange, static_cast<int>(geteuid()));
        return true;
    }

    void Run()
    {
        auto idleSince = Clock::now();
        bool wasBusy = false;
        while (listener_ && !stopped_) {
            pollfd fds[] = {{listener_.Get(), POLLIN, 0}, {wake_->Get(), POLLIN, 0}};
            if (poll(fds, 2, TimeLeft(idleSince)) < 0 && errno != EINTR) {
                IPC_LOGE("cannot wait for clients: %{public}d", errno);
                break;
            }
            eventfd_t count = 0;
            eventfd_read(wake_->Get(), &count);
            AcceptSome();
            // Only sessions count: whoever just looks whether the service runs does not keep it.
            bool isBusy = acceptor_->SessionCount() > 0;
            if (isBusy || wasBusy) {
                idleSince = Clock::now();
            } else if (TimeLeft(idleSince) == 0) {
                break;
            }
            wasBusy = isBusy;
        }
        const auto end = Clock::now() + ANSWER_TIME;
        if (listener_ && options_.beforeClose) {
            options_.beforeClose();
        }
        const auto left = std::chrono::floor<std::chrono::milliseconds>(end - Clock::now());
        if (listener_ && !acceptor_->FinishAnswers(std::max(left, SEND_TIME))) {
            IPC_LOGE("the service ends although requests are still being answered");
        }
        Close();
    }

    void Stop()
    {
        // A signal handler must leave no other error number behind.
        int before = errno;
        stopped_ = true;
        eventfd_write(wake_->Get(), 1);
        errno = before;
    }

    size_t SessionCount() const
    {
        return acceptor_ == nullptr ? 0 : acceptor_->SessionCount();
    }

    const std::string &SocketPath() const
    {
        return path_;
    }

private:
    bool TakePlace(std::string &error)
    {
        auto deadline = Clock::now() + TAKEOVER_TIME;
        while (!place_.TryLock(path_ + ".lock")) {
            std::string reason;
            bool nobody = false;
            Ipc::UniqueFd other = Ipc::ConnectSocket(path_, reason, nobody);
            if (other || Clock::now() >= deadline) {
                int pid = -1;
                int uid = -1;
                error = "another process serves " + options_.bundleName + "/" + options_.abilityName + " for user " +
                        std::to_string(options_.userId) + " already";
                if (other && Ipc::GetPeer(other.Get(), pid, uid)) {
                    error += " (process " + std::to_string(pid) + ")";
                }
                return false;
            }
            poll(nullptr, 0, RETRY_MILLISECONDS);
        }
        return true;
    }

    // In milliseconds as poll wants it; -1 while the server need not end.
    int TimeLeft(Clock::time_point idleSince) const
    {
        if (options_.idleTimeout.count() <= 0 || acceptor_->SessionCount() > 0) {
            return -1;
        }
        auto passed = std::chrono::floor<std::chrono::milliseconds>(Clock::now() - idleSince);
        auto left = (options_.idleTimeout - passed).count();
        return static_cast<int>(std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max()));
    }

    // Not all at once: however many come, the server looks at its own state in between.
    void AcceptSome()
    {
        constexpr int most = 16;
        for (int i = 0; i < most; ++i) {
            Ipc::UniqueFd client(accept4(listener_.Get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (!client) {
                if (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS) {
                    // The client stays in the queue, so waiting for the next one would not wait at all.
                    poll(nullptr, 0, SHORTAGE_MILLISECONDS);
                }
                return;
            }
            acceptor_->Accept(std::move(client));
        }
    }

    void Close()
    {
        if (!listener_) {
            return;
        }
        // The path goes first: clients in the queue of the closed socket fail, and find the place free.
        unlink(path_.c_str());
        listener_.Reset();
        acceptor_->Close();
        place_.Unlock();
    }

    const AbilityServerOptions options_;
    const OHOS::sptr<OHOS::IRemoteObject> ability_;
    const std::string path_;
    // Shared with the acceptor's sessions, which may end later.
    const std::shared_ptr<Ipc::UniqueFd> wake_;
    std::atomic<bool> stopped_{false};
    FileLock place_;
    Ipc::UniqueFd listener_;
    std::shared_ptr<Ipc::WireAcceptor> acceptor_;
};

AbilityServer::AbilityServer(AbilityServerOptions options, OHOS::sptr<OHOS::IRemoteObject> ability)
    : impl_(std::make_unique<Impl>(std::move(options), std::move(ability)))
{}

AbilityServer::~AbilityServer() = default;

bool AbilityServer::Start(std::string &error)
{
    return impl_->Start(error);
}

void AbilityServer::Run()
{
    impl_->Run();
}

void AbilityServer::Stop()
{
    impl_->Stop();
}

size_t AbilityServer::SessionCount() const
{
    return impl_->SessionCount();
}

const std::string &AbilityServer::SocketPath() const
{
    return impl_->SocketPath();
}

} // namespace Host
