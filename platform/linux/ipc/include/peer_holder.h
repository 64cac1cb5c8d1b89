// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_PEER_HOLDER_H
#define OHOS_PEER_HOLDER_H

#include "iremote_object.h"
#include "refbase.h"

namespace OHOS {

// Keeps the remote object that a proxy class sends its requests to.
class PeerHolder {
protected:
    explicit PeerHolder(const sptr<IRemoteObject> &object);
    virtual ~PeerHolder();

    sptr<IRemoteObject> Remote();

private:
    const sptr<IRemoteObject> remoteObject_;
};

} // namespace OHOS

#endif // OHOS_PEER_HOLDER_H
