// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_PARCEL_ATTACHMENTS_H
#define HOST_IPC_PARCEL_ATTACHMENTS_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "message_parcel.h"
#include "wire_parcel.h"

namespace OHOS {

// What a parcel carries beside its values. Where something lies, the values hold a mark of eight bytes, so that reading
// and writing go on behind it:
//
//     uint32  "obj*" or "fd**"
//     uint32  0
struct MessageParcel::Attachments {
    static constexpr uint32_t OBJECT_MARK = 0x6f626a2a;
    static constexpr uint32_t DESCRIPTOR_MARK = 0x66642a2a;

    struct Item {
        sptr<IRemoteObject> object;
        std::shared_ptr<Host::Ipc::UniqueFd> fd;
    };

    // By the position of their mark.
    std::map<size_t, Item> items;
    // The one block above 32 KiB; its size is also among the values.
    Host::Ipc::RawBlock block;
    // Where the block last written or read is: beside the values, or at a position among them.
    bool lastRawBeside = false;
    size_t lastRawPosition = 0;
    size_t lastRawSize = 0;
    std::u16string token;
};

} // namespace OHOS

#endif // HOST_IPC_PARCEL_ATTACHMENTS_H
