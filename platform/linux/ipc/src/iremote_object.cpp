// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "iremote_object.h"

#include <utility>

#include "iremote_broker.h"

namespace OHOS {

IRemoteObject::IRemoteObject(std::u16string descriptor) : descriptor_(std::move(descriptor))
{}

bool IRemoteObject::IsProxyObject() const
{
    return true;
}

bool IRemoteObject::IsObjectDead() const
{
    return false;
}

bool IRemoteObject::CheckObjectLegality() const
{
    return false;
}

std::u16string IRemoteObject::GetInterfaceDescriptor()
{
    return descriptor_;
}

std::u16string IRemoteObject::GetObjectDescriptor() const
{
    return descriptor_;
}

bool IRemoteObject::Marshalling(Parcel &parcel) const
{
    return Marshalling(parcel, sptr<IRemoteObject>(const_cast<IRemoteObject *>(this)));
}

bool IRemoteObject::Marshalling(Parcel &parcel, const sptr<IRemoteObject> &object)
{
    // Only a message can carry objects.
    auto *message = dynamic_cast<MessageParcel *>(&parcel);
    return message != nullptr && message->WriteRemoteObject(object);
}

sptr<IRemoteObject> IRemoteObject::Unmarshalling(Parcel &parcel)
{
    auto *message = dynamic_cast<MessageParcel *>(&parcel);
    return message == nullptr ? nullptr : message->ReadRemoteObject();
}

sptr<IRemoteBroker> IRemoteObject::AsInterface()
{
    return nullptr;
}

} // namespace OHOS
