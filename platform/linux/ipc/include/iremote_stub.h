// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_IREMOTE_STUB_H
#define OHOS_IREMOTE_STUB_H

#include "ipc_object_stub.h"
#include "iremote_broker.h"

namespace OHOS {

// A stub that implements INTERFACE and carries its descriptor.
template <typename INTERFACE>
class IRemoteStub : public IPCObjectStub, public INTERFACE {
public:
    IRemoteStub(bool serialInvokeFlag = false) : IPCObjectStub(INTERFACE::GetDescriptor(), serialInvokeFlag)
    {}
    ~IRemoteStub() override = default;

    sptr<IRemoteObject> AsObject() override
    {
        return this;
    }

    sptr<IRemoteBroker> AsInterface() override
    {
        return this;
    }
};

} // namespace OHOS

#endif // OHOS_IREMOTE_STUB_H
