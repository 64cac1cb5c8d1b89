// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_CONNECTION_TABLE_H
#define OHOS_CONNECTION_TABLE_H

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "element_name.h"
#include "errors.h"
#include "iremote_object.h"
#include "refbase.h"
#include "service_connector.h"

namespace OHOS::AAFwk {

// Which connection objects of this process are connected to which abilities. One per process, never destroyed; any
// thread. What happens to one connection object is told to it in order, one callback at a time, on IPC threads.
class ConnectionTable {
public:
    static ConnectionTable &Get();

    ErrCode Connect(const AppExecFwk::ElementName &element, const sptr<IRemoteObject> &connect, int32_t userId);
    ErrCode Disconnect(const sptr<IRemoteObject> &connect);

private:
    // Tells one connection object what happened.
    class Teller;

    struct Connection {
        AppExecFwk::ElementName element;
        int32_t userId = 0;
        sptr<IRemoteObject> connect;
        std::shared_ptr<Teller> teller;
        // Guarded by the table's mutex. Until `finished` the first Connect is still reaching out; then `result` is its
        // outcome, and with ERR_OK `link` is set.
        bool finished = false;
        ErrCode result = ERR_OK;
        Host::AbilityLink link;
    };
    using ConnectionPtr = std::shared_ptr<Connection>;

    ConnectionTable() = default;
    ~ConnectionTable() = default;

    // The connection of `connect` to this ability; a new one when there is none, which `isNew` tells.
    ConnectionPtr Enter(
        const AppExecFwk::ElementName &element, const sptr<IRemoteObject> &connect, int32_t userId, bool &isNew);
    // Notes what became of a new connection; one that is disconnected by now stays so.
    void Finish(const ConnectionPtr &connection, ErrCode result, Host::AbilityLink &&link);
    void OnDied(const ConnectionPtr &connection);
    // Called with the lock held. One for each connection object for as long as it has anything to tell: were there a
    // second one, what they tell could change places.
    std::shared_ptr<Teller> TellerOf(const sptr<IRemoteObject> &connect);

    std::mutex mutex_;
    std::condition_variable finished_;
    // Guarded by mutex_.
    std::list<ConnectionPtr> connections_;
    std::map<const IRemoteObject *, std::weak_ptr<Teller>> tellers_;
};

} // namespace OHOS::AAFwk

#endif // OHOS_CONNECTION_TABLE_H
