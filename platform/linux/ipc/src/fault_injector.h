// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_FAULT_INJECTOR_H
#define HOST_IPC_FAULT_INJECTOR_H

#include <chrono>
#include <cstdint>

#include "host/faults.h"
#include "wire_parcel.h"

namespace Host::Ipc {

// What strikes one request.
struct FaultDraw {
    Fault kind = Fault::NONE;
    std::chrono::milliseconds delay{0};
    // Decides where a reply is cut or garbled.
    uint64_t noise = 0;
};

class FaultInjector {
public:
    // The fate of the next request: NONE while no plan is in force, which costs one atomic read.
    static FaultDraw Draw(uint32_t code);
    // Cuts or garbles a reply if the draw says so.
    static void Spoil(const FaultDraw &draw, WireParcel &reply);
};

} // namespace Host::Ipc

#endif // HOST_IPC_FAULT_INJECTOR_H
