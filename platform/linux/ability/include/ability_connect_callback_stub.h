// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_ABILITY_CONNECT_CALLBACK_STUB_H
#define OHOS_ABILITY_CONNECT_CALLBACK_STUB_H

#include "ability_connect_callback_interface.h"
#include "iremote_stub.h"
#include "nocopyable.h"

namespace OHOS::AAFwk {

// Turns the requests of the ability manager into the two callbacks. Derive from it and implement them.
class AbilityConnectionStub : public IRemoteStub<IAbilityConnection> {
public:
    AbilityConnectionStub();
    virtual ~AbilityConnectionStub();

    // Parcels: token, element name, then for connect the remote object, then int32 result code.
    int OnRemoteRequest(uint32_t code, MessageParcel &data, MessageParcel &reply, MessageOption &option) override;

private:
    DISALLOW_COPY_AND_MOVE(AbilityConnectionStub);
};

} // namespace OHOS::AAFwk

#endif // OHOS_ABILITY_CONNECT_CALLBACK_STUB_H
