// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "connection_table.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "ability_connect_callback_interface.h"
#include "connect_error.h"
#include "ipc_log.h"
#include "worker_pool.h"

namespace OHOS::AAFwk {

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

ConnectionTable::ConnectionPtr ConnectionTable::Enter(
    const AppExecFwk::ElementName &element, const sptr<IRemoteObject> &connect, int32_t userId, bool &isNew)
{
    std::lock_guard<std::mutex> lock(mutex_);
    std::shared_ptr<Teller> teller;
    isNew = false;
    for (const auto &connection : connections_) {
        if (connection->connect != connect) {
            continue;
        }
        teller = connection->teller;
        if (connection->userId == userId && connection->element.GetBundleName() == element.GetBundleName() &&
            connection->element.GetAbilityName() == element.GetAbilityName()) {
            if (connection->connected) {
                teller->Connected(connection->element, connection->link.ability);
            }
            return connection;
        }
    }
    isNew = true;
    auto connection = std::make_shared<Connection>();
    connection->element = element;
    connection->userId = userId;
    connection->connect = connect;
    connection->teller = teller != nullptr ? teller : std::make_shared<Teller>(connect);
    connections_.push_back(connection);
    return connection;
}

bool ConnectionTable::Remove(const ConnectionPtr &connection)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = std::find(connections_.begin(), connections_.end(), connection);
    if (found == connections_.end()) {
        return false;
    }
    connections_.erase(found);
    return true;
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
        return ERR_OK;
    }
    Host::AbilityLink link;
    std::string error;
    ErrCode result = ERR_OK;
    if (!Host::ConnectToRegistered(element.GetBundleName(), element.GetAbilityName(), userId, link)) {
        result = Host::ConnectToService(element.GetBundleName(), element.GetAbilityName(), userId, link, error);
    }
    Host::SetLastConnectError(result == ERR_OK ? std::string() : error);
    if (result != ERR_OK) {
        IPC_LOGE("cannot connect to %{public}s/%{public}s: %{public}s", element.GetBundleName().c_str(),
            element.GetAbilityName().c_str(), error.c_str());
        Remove(connection);
        return result;
    }
    auto session = link.session;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (std::find(connections_.begin(), connections_.end(), connection) == connections_.end()) {
            // Disconnected while connecting; that has been told already.
            return ERR_OK;
        }
        connection->connected = true;
        connection->link = std::move(link);
        connection->teller->Connected(connection->element, connection->link.ability);
    }
    session->OnDeath([this, weak = std::weak_ptr<Connection>(connection)] {
        if (auto died = weak.lock()) {
            OnDied(died);
        }
    });
    return ERR_OK;
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
    if (Remove(connection)) {
        connection->teller->Disconnected(connection->element, -1);
    }
}

} // namespace OHOS::AAFwk
