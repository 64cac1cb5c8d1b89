// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SIMULATION_LISTENER_H
#define NUBIS_SIMULATION_LISTENER_H

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "host/event_channel.h"
#include "ledger.h"
#include "nubis_kit.h"

namespace Simulation {

// Hears the notifications for a kit, and verifies them with it.
class Listener {
public:
    using OnChange = std::function<void(const Nubis::NBRecordChangeEvent &)>;

    // The function is called on a thread of the listener's own.
    Listener(std::shared_ptr<Nubis::NubisNative> kit, Ledger &ledger, OnChange onChange);

    // Returns when everything that was published before has been heard; false when that takes too long.
    bool CatchUp();

private:
    void OnText(const std::string &text);

    const std::shared_ptr<Nubis::NubisNative> kit_;
    Ledger &ledger_;
    const OnChange onChange_;

    std::mutex mutex_;
    std::condition_variable changed_;
    // Guarded by mutex_: the marks of CatchUp that were published and heard.
    int marks_ = 0;
    int heardMarks_ = 0;

    // Last, so that it ends first.
    Host::EventListener channel_;
};

} // namespace Simulation

#endif // NUBIS_SIMULATION_LISTENER_H
