// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_WIRE_PARCEL_H
#define HOST_IPC_WIRE_PARCEL_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "iremote_object.h"
#include "refbase.h"
#include "unique_fd.h"

namespace Host::Ipc {

// Bytes that nobody changes any more. Without an owner they are valid only while the request they came with is handled.
struct RawBlock {
    const uint8_t *data = nullptr;
    size_t size = 0;
    std::shared_ptr<const void> owner;

    // Zero bytes up to the next multiple of eight follow the data, as the transport wants it. Empty when memory is short.
    static RawBlock CopyOf(const void *data, size_t size);
};

// A remote object or a file descriptor on its way between the two ends of a session.
struct WireObject {
    enum class Kind : uint16_t {
        // Of the sending end.
        EXPORTED = 0,
        // Of the receiving end.
        HOME = 1,
        DESCRIPTOR = 2,
    };

    Kind kind = Kind::EXPORTED;
    uint64_t position = 0;
    uint64_t id = 0;
    std::u16string descriptor;
    // Keeps the object reachable: the sender's hold on its export, or the receiver's reference to the far object.
    std::shared_ptr<void> hold;
    // The object itself, where the receiving end has already found it.
    OHOS::sptr<OHOS::IRemoteObject> object;
    std::shared_ptr<UniqueFd> fd;
};

// A parcel between the two ends of a session.
struct WireParcel {
    std::vector<uint8_t> values;
    RawBlock block;
    std::vector<WireObject> objects;

    size_t Weight() const
    {
        return values.size() + block.size;
    }
    bool Empty() const
    {
        return values.empty() && block.size == 0 && objects.empty();
    }
};

} // namespace Host::Ipc

#endif // HOST_IPC_WIRE_PARCEL_H
