// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_PARCEL_CODEC_H
#define HOST_IPC_PARCEL_CODEC_H

#include "message_parcel.h"
#include "wire_parcel.h"

namespace Host::Ipc {

class Session;

// Turns parcels into what travels and back; objects are exported to and imported from the session.
class ParcelCodec {
public:
    // Copies the values; a large block is shared, not copied. False when memory is short.
    static bool Pack(const OHOS::MessageParcel &parcel, Session &session, WireParcel &wire);
    // Fills an empty parcel; values of a parcel that is not empty are replaced.
    static bool Unpack(WireParcel &&wire, Session &session, OHOS::MessageParcel &parcel);
};

} // namespace Host::Ipc

#endif // HOST_IPC_PARCEL_CODEC_H
