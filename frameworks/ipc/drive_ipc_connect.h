// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_DRIVE_IPC_CONNECT_H
#define NUBIS_DRIVE_IPC_CONNECT_H

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "ability_connect_callback_stub.h"
#include "ffrt_inner.h"
#include "proxy_link.h"
#include "service_death_recipient.h"

namespace Nubis {
// The connection to the service: hears from the ability manager that it stands or has gone, and carries requests.
//
// The proxy owns it together with the ability manager, which may call it after the proxy's end. Callbacks come on IPC
// threads; any thread may call the rest.
//
//   not connected --OnAbilityConnectDone--> connected --OnAbilityDisconnectDone, OnRemoteDied--> not connected
//
// Connected means that there is a remote object.
class DriveIpcConnect : public OHOS::AAFwk::AbilityConnectionStub {
public:
    // What SendData returns when not connected.
    static constexpr int32_t NOT_CONNECTED = 19;

    explicit DriveIpcConnect(std::shared_ptr<ProxyLink> link);

    void OnAbilityConnectDone(const OHOS::AppExecFwk::ElementName &element,
        const OHOS::sptr<OHOS::IRemoteObject> &remoteObject, int resultCode) override;
    void OnAbilityDisconnectDone(const OHOS::AppExecFwk::ElementName &element, int resultCode) override;
    // Ends the connection and wakes every waiting request with an empty reply. A notice about another object than the
    // present one comes late and changes nothing; null stands for the present one.
    void OnRemoteDied(const OHOS::wptr<OHOS::IRemoteObject> &died = nullptr);

    bool IsConnected();
    // Before a connection is asked for that WaitIpcConnect is to wait for.
    void ExpectConnect();
    // Each returns as soon as it is connected, or is not any more, or after five seconds. A connection that came and was
    // lost before the wait began ends it too.
    void WaitIpcConnect();
    void WaitIpcDisconnect();
    // One transaction; the remote object's result. Blocks without a lock.
    int32_t SendData(uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option);

private:
    OHOS::sptr<OHOS::IRemoteObject> GetRemoteObject();
    void SetRemoteObject(const OHOS::sptr<OHOS::IRemoteObject> &remoteObject);
    void DropRemoteObject();

    const std::shared_ptr<ProxyLink> link_;
    OHOS::sptr<ServiceDeathRecipient> deathRecipient_;

    // Held while the object changes, until everyone who waits for the old one has been woken: a request of the next
    // connection must not be among them. The waking locks an FFRT mutex, so this is one too.
    ffrt::mutex changeMutex_;
    // The object's death was heard of, the disconnection that goes with it was not.
    bool isDisconnectDue_ = false;

    // Guards the two below; taken under changeMutex_, held over nothing.
    std::mutex mutex_;
    std::condition_variable changed_;
    OHOS::sptr<OHOS::IRemoteObject> remoteObject_;
    // A connection came that nobody has waited for yet; it may be lost again.
    bool hasConnected_ = false;
};
} // namespace Nubis

#endif // NUBIS_DRIVE_IPC_CONNECT_H
