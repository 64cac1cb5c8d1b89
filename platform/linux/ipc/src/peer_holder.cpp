// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "peer_holder.h"

namespace OHOS {

PeerHolder::PeerHolder(const sptr<IRemoteObject> &object) : remoteObject_(object)
{}

PeerHolder::~PeerHolder() = default;

sptr<IRemoteObject> PeerHolder::Remote()
{
    return remoteObject_;
}

} // namespace OHOS
