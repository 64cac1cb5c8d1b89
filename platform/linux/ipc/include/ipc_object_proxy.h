// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_IPC_OBJECT_PROXY_H
#define OHOS_IPC_OBJECT_PROXY_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "iremote_object.h"

namespace Host::Ipc {
class Session;
struct ProxyTarget;
} // namespace Host::Ipc

namespace OHOS {

// The far end of an object of another process. The last sptr to go releases the object there. A process has one proxy for
// one object of a session at a time, however often it arrives.
class IPCObjectProxy : public IRemoteObject {
public:
    // A proxy made by hand has no process behind it and counts as dead; living ones come out of parcels and connections.
    explicit IPCObjectProxy(
        int handle, std::u16string descriptor = std::u16string(), int proto = IRemoteObject::IF_PROT_DEFAULT);
    ~IPCObjectProxy() override;

    bool IsProxyObject() const override;
    bool IsObjectDead() const override;
    int32_t GetObjectRefCount() override;
    // Blocks the calling thread until the reply has come or the far process has died.
    int SendRequest(uint32_t code, MessageParcel &data, MessageParcel &reply, MessageOption &option) override;
    bool AddDeathRecipient(const sptr<DeathRecipient> &recipient) override;
    bool RemoveDeathRecipient(const sptr<DeathRecipient> &recipient) override;
    int Dump(int fd, const std::vector<std::u16string> &args) override;

private:
    friend class Host::Ipc::Session;

    IPCObjectProxy(std::unique_ptr<Host::Ipc::ProxyTarget> target, std::u16string descriptor);
    // The far process is gone: marks the proxy dead and calls the recipients. The second call does nothing.
    void NotifyDeath();

    // Constant after construction; null for a proxy made by hand.
    std::unique_ptr<Host::Ipc::ProxyTarget> target_;

    mutable std::mutex mutex_;
    bool dead_;
    std::vector<sptr<DeathRecipient>> recipients_;
};

} // namespace OHOS

#endif // OHOS_IPC_OBJECT_PROXY_H
