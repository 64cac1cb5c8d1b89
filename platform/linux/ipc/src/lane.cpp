// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "lane.h"

#include <exception>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <utility>

#include "ipc_log.h"
#include "lane_loop.h"
#include "wire_session.h"
#include "worker_pool.h"

namespace Host::Ipc {

std::shared_ptr<Lane> Lane::Start(
    UniqueFd socket, LaneKind kind, std::weak_ptr<WireSession> session, std::shared_ptr<LaneHost> host)
{
    UniqueFd wake(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    if (!wake) {
        return nullptr;
    }
    auto lane = std::make_shared<Lane>(kind, std::move(session), std::move(host), std::move(wake));
    auto shared = std::make_shared<UniqueFd>(std::move(socket));
    const char *name = kind == LaneKind::SMALL ? "ipc-small" : "ipc-big";
    if (!StartThread(name, [lane, shared] { lane->Serve(std::move(*shared)); })) {
        return nullptr;
    }
    return lane;
}

void Lane::WarmUp()
{
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        return;
    }
    // The other end is closed at once, and with it the lane.
    const UniqueFd other(ends[1]);
    static_cast<void>(Start(UniqueFd(ends[0]), LaneKind::SMALL, {}, nullptr));
}

Lane::Lane(LaneKind kind, std::weak_ptr<WireSession> session, std::shared_ptr<LaneHost> host, UniqueFd wake)
    : host_(std::move(host)), wake_(std::move(wake)), kind_(kind), session_(std::move(session))
{}

bool Lane::Post(Job job)
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (ended_) {
            return false;
        }
        jobs_.push_back(std::move(job));
        if (jobs_.size() > 1) {
            // Whoever posted the first one wakes the loop, which takes them all.
            return true;
        }
    }
    eventfd_write(wake_.Get(), 1);
    return true;
}

void Lane::Close()
{
    Post([](LaneLoop &loop) { loop.Shutdown(); });
}

std::shared_ptr<WireSession> Lane::GetSession() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return session_.lock();
}

LaneKind Lane::Kind() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return kind_;
}

void Lane::Adopt(LaneKind kind, const std::shared_ptr<WireSession> &session)
{
    std::lock_guard<std::mutex> lock(mutex_);
    kind_ = kind;
    session_ = session;
}

std::vector<Lane::Job> Lane::TakeJobs()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(jobs_, {});
}

void Lane::Serve(UniqueFd socket)
{
    try {
        LaneLoop::Serve(shared_from_this(), std::move(socket));
    } catch (const kj::Exception &error) {
        IPC_LOGE("a connection failed: %{public}s", error.getDescription().cStr());
    } catch (const std::exception &error) {
        IPC_LOGE("a connection failed: %{public}s", error.what());
    } catch (...) {
        IPC_LOGE("a connection failed");
    }
    End();
}

void Lane::End()
{
    std::vector<Job> dropped;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ended_ = true;
        dropped.swap(jobs_);
    }
    if (auto session = GetSession()) {
        session->Die();
    }
    if (host_ != nullptr) {
        host_->OnClosed(shared_from_this());
    }
}

} // namespace Host::Ipc
