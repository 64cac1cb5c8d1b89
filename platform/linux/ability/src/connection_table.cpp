// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "connection_table.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>
#include <vector>

#include "ability_connect_callback_interface.h"
#include "connect_error.h"
#include "ipc_log.h"
#include "worker_pool.h"

namespace OHOS::AAFwk {

namespace {

ErrCode Reach(const AppExecFwk::ElementName &element, int32_t userId, Host::AbilityLink &link)
{
    std::string bundle = element.GetBundleName();
    std::string ability = element.GetAbilityName();
    std::string error;
    ErrCode result = ERR_OK;
    try {
        if (!Host::ConnectToRegistered(bundle, ability, userId, link)) {
            result = Host::ConnectToService(bundle, ability, userId, link, error);
        }
    } catch (const std::exception &failure) {
        result = Host::ABILITY_NOT_REACHED;
        error = failure.what();
    }
    Host::SetLastConnectError(result == ERR_OK ? std::string() : error);
    if (result != ERR_OK) {
        IPC_LOGE("cannot connect to %{public}s/%{public}s: %{public}s", bundle.c_str(), ability.c_str(), error.c_str());
    }
    return result;
}

} // namespace

class ConnectionTable::Teller : public std::enable_shared_from_this<ConnectionTable::Teller> {
public:
    explicit Teller(sptr<IRemoteObject> connect) : connect_(std::move(connect))
    {}

    void Connected(const AppExecFwk::ElementName &element, const sptr<IRemoteObject> &ability)
    {
        Tell([element, ability](const sptr<IRemoteObject> &connect) {
            MessageParcel data;
            if (data.WriteInterfaceToken(IAbilityConnection::GetDescriptor()) && element.Marshalling(data) &&
                data.WriteRemoteObject(ability) && data.WriteInt32(ERR_OK)) {
                Send(connect, IAbilityConnection::ON_ABILITY_CONNECT_DONE, data);
            }
        });
    }

    void Disconnected(const AppExecFwk::ElementName &element, int resultCode)
    {
        Tell([element, resultCode](const sptr<IRemoteObject> &connect) {
            MessageParcel data;
            if (data.WriteInterfaceToken(IAbilityConnection::GetDescriptor()) && element.Marshalling(data) &&
                data.WriteInt32(resultCode)) {
                Send(connect, IAbilityConnection::ON_ABILITY_DISCONNECT_DONE, data);
            }
        });
    }

private:
    using News = std::function<void(const sptr<IRemoteObject> &)>;

    static void Send(const sptr<IRemoteObject> &connect, uint32_t code, MessageParcel &data)
    {
        MessageParcel reply;
        MessageOption option;
        try {
            connect->SendRequest(code, data, reply, option);
        } catch (...) {
            IPC_LOGE("a connection callback threw");
        }
    }

    void Tell(News news)
    {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            news_.push_back(std::move(news));
            if (telling_) {
                return;
            }
            telling_ = true;
        }
        Host::Ipc::WorkerPool::Get().Post([self = shared_from_this()] { self->TellAll(); });
    }

    void TellAll()
    {
        while (true) {
            News news;
            {
                std::lock_guard<std::mutex> lock(mutex_);
                if (news_.empty()) {
                    telling_ = false;
                    return;
                }
                news = std::move(news_.front());
                news_.pop_front();
            }
            news(connect_);
        }
    }

    const sptr<IRemoteObject> connect_;
    std::mutex mutex_;
    // Guarded by mutex_.
    std::deque<News> news_;
    bool telling_ = false;
};

ConnectionTable &ConnectionTable::Get()
{
    static auto *table = new ConnectionTable();
    return *table;
}

std::shared_ptr<ConnectionTable::Teller> ConnectionTable::TellerOf(const sptr<IRemoteObject> &connect)
{
    for (auto it = tellers_.begin(); it != tellers_.end();) {
        it = it->second.expired() ? tellers_.erase(it) : std::next(it);
    }
    auto &known = tellers_[connect.GetRefPtr()];
    auto teller = known.lock();
    if (teller == nullptr) {
        teller = std::make_shared<Teller>(connect);
        known = teller;
    }
    return teller;
}

ConnectionTable::ConnectionPtr ConnectionTable::Enter(
    const AppExecFwk::ElementName &element, const sptr<IRemoteObject> &connect, int32_t userId, bool &isNew)
{
    // Ends outside the lock.
    ConnectionPtr dead;
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = std::find_if(connections_.begin(), connections_.end(), [&](const ConnectionPtr &connection) {
        return connection->connect == connect && connection->userId == userId &&
               connection->element.GetBundleName() == element.GetBundleName() &&
               connection->element.GetAbilityName() == element.GetAbilityName();
    });
    isNew = false;
    if (found != connections_.end() && !((*found)->finished && (*found)->link.session->IsDead())) {
        if ((*found)->finished) {
            (*found)->teller->Connected((*found)->element, (*found)->link.ability);
        }
        return *found;
    }
    if (found != connections_.end()) {
        // OnDied has not come yet. Whoever connects again wants a living ability, after hearing of the death.
        dead = *found;
        dead->teller->Disconnected(dead->element, -1);
        connections_.erase(found);
    }
    isNew = true;
    auto connection = std::make_shared<Connection>();
    connection->element = element;
    connection->userId = userId;
    connection->connect = connect;
    connection->teller = TellerOf(connect);
    connections_.push_back(connection);
    return connection;
}

void ConnectionTable::Finish(const ConnectionPtr &connection, ErrCode result, Host::AbilityLink &&link)
{
    auto session = link.session;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        connection->finished = true;
        connection->result = result;
        finished_.notify_all();
        auto found = std::find(connections_.begin(), connections_.end(), connection);
        if (found == connections_.end()) {
            // Disconnected while connecting; that has been told already.
            return;
        }
        if (result != ERR_OK) {
            connections_.erase(found);
            return;
        }
        connection->link = std::move(link);
        connection->teller->Connected(connection->element, connection->link.ability);
    }
    session->OnDeath([this, weak = std::weak_ptr<Connection>(connection)] {
        if (auto died = weak.lock()) {
            OnDied(died);
        }
    });
}

ErrCode ConnectionTable::Connect(
    const AppExecFwk::ElementName &element, const sptr<IRemoteObject> &connect, int32_t userId)
{
    if (connect == nullptr) {
        return ERR_INVALID_VALUE;
    }
    bool isNew = false;
    ConnectionPtr connection = Enter(element, connect, userId, isNew);
    if (!isNew) {
        std::unique_lock<std::mutex> lock(mutex_);
        finished_.wait(lock, [&] { return connection->finished; });
        return connection->result;
    }
    Host::AbilityLink link;
    ErrCode result = Reach(element, userId, link);
    Finish(connection, result, std::move(link));
    return result;
}

ErrCode ConnectionTable::Disconnect(const sptr<IRemoteObject> &connect)
{
    // They end outside the lock.
    std::vector<ConnectionPtr> removed;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (auto it = connections_.begin(); it != connections_.end();) {
            if (connect != nullptr && (*it)->connect == connect) {
                removed.push_back(*it);
                (*it)->teller->Disconnected((*it)->element, ERR_OK);
                it = connections_.erase(it);
            } else {
                ++it;
            }
        }
    }
    return removed.empty() ? ERR_INVALID_VALUE : ERR_OK;
}

void ConnectionTable::OnDied(const ConnectionPtr &connection)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = std::find(connections_.begin(), connections_.end(), connection);
    if (found != connections_.end()) {
        connections_.erase(found);
        connection->teller->Disconnected(connection->element, -1);
    }
}

} // namespace OHOS::AAFwk
