// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "parcel_codec.h"

#include <utility>

#include "ipc_log.h"
#include "parcel_attachments.h"
#include "session.h"

namespace Host::Ipc {

bool ParcelCodec::Pack(const OHOS::MessageParcel &parcel, Session &session, WireParcel &wire)
{
    const auto &attachments = *parcel.attachments_;
    const uint8_t *values = parcel.GetBytes();
    if (values != nullptr) {
        wire.values.assign(values, values + parcel.GetDataSize());
    }
    wire.block = attachments.block;
    if (wire.block.size != 0 && wire.block.owner == nullptr) {
        wire.block = RawBlock::CopyOf(attachments.block.data, attachments.block.size);
        if (wire.block.data == nullptr) {
            return false;
        }
    }
    for (const auto &item : attachments.items) {
        WireObject object;
        if (item.second.object != nullptr) {
            object = session.Export(item.second.object);
        } else {
            object.kind = WireObject::Kind::DESCRIPTOR;
            object.fd = item.second.fd;
        }
        object.position = item.first;
        wire.objects.push_back(std::move(object));
    }
    return true;
}

bool ParcelCodec::Unpack(WireParcel &&wire, Session &session, OHOS::MessageParcel &parcel)
{
    if (!parcel.LoadBytes(wire.values.data(), wire.values.size())) {
        IPC_LOGE("no memory for a parcel of %{public}zu bytes", wire.values.size());
        return false;
    }
    auto &attachments = *parcel.attachments_;
    attachments = {};
    attachments.block = std::move(wire.block);
    for (auto &object : wire.objects) {
        if (object.kind == WireObject::Kind::DESCRIPTOR) {
            attachments.items[object.position] = {nullptr, std::move(object.fd)};
        } else if (auto imported = session.Import(object); imported != nullptr) {
            attachments.items[object.position] = {imported, nullptr};
        }
    }
    return true;
}

} // namespace Host::Ipc
