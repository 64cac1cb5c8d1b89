// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_IREMOTE_PROXY_H
#define OHOS_IREMOTE_PROXY_H

#include "iremote_broker.h"
#include "peer_holder.h"

namespace OHOS {

// Base of classes that implement INTERFACE by sending requests to Remote().
template <typename INTERFACE>
class IRemoteProxy : public PeerHolder, public INTERFACE {
public:
    explicit IRemoteProxy(const sptr<IRemoteObject> &object) : PeerHolder(object)
    {}
    ~IRemoteProxy() override = default;

protected:
    sptr<IRemoteObject> AsObject() override
    {
        return Remote();
    }
};

} // namespace OHOS

#endif // OHOS_IREMOTE_PROXY_H
