// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_IREMOTE_OBJECT_H
#define OHOS_IREMOTE_OBJECT_H

#include <cstdint>
#include <string>
#include <vector>

#include "message_option.h"
#include "message_parcel.h"
#include "parcel.h"
#include "refbase.h"
#include "string_ex.h"

namespace OHOS {

class IRemoteBroker;

// An object that can be called from other processes: a stub (IPCObjectStub) where it lives, a proxy (IPCObjectProxy)
// elsewhere. Held by sptr; every call may come from any thread.
class IRemoteObject : public virtual Parcelable, public virtual RefBase {
public:
    enum {
        IF_PROT_DEFAULT,
    };

    class DeathRecipient : public virtual RefBase {
    public:
        // The process of `object` is gone. Called once per registration, on an IPC thread, with no lock held.
        virtual void OnRemoteDied(const wptr<IRemoteObject> &object) = 0;
    };

    virtual int32_t GetObjectRefCount() = 0;

    // Sends a request and waits for the reply, unless `option` asks for TF_ASYNC. A stub runs it in the calling thread. A
    // proxy answers ERR_DEAD_OBJECT when its process is known to be dead, 29189 when it died during the call, 29201 when
    // the call failed otherwise; the far handler's result when its reply is empty; else 0.
    virtual int SendRequest(uint32_t code, MessageParcel &data, MessageParcel &reply, MessageOption &option) = 0;

    virtual bool IsProxyObject() const;
    virtual bool IsObjectDead() const;
    virtual bool CheckObjectLegality() const;
    virtual std::u16string GetInterfaceDescriptor();
    std::u16string GetObjectDescriptor() const;

    // Always false on a stub. On a proxy false for null and for a dead object; the same recipient may be added twice.
    virtual bool AddDeathRecipient(const sptr<DeathRecipient> &recipient) = 0;
    // Takes one registration out and tells whether there was one: none is left inside OnRemoteDied.
    virtual bool RemoveDeathRecipient(const sptr<DeathRecipient> &recipient) = 0;

    bool Marshalling(Parcel &parcel) const override;
    static sptr<IRemoteObject> Unmarshalling(Parcel &parcel);
    static bool Marshalling(Parcel &parcel, const sptr<IRemoteObject> &object);

    virtual sptr<IRemoteBroker> AsInterface();
    virtual int Dump(int fd, const std::vector<std::u16string> &args) = 0;

protected:
    explicit IRemoteObject(std::u16string descriptor = {});
    virtual ~IRemoteObject() = default;

    const std::u16string descriptor_;
};

inline std::u16string to_utf16(const std::string &text)
{
    return Str8ToStr16(text);
}

} // namespace OHOS

#endif // OHOS_IREMOTE_OBJECT_H
