// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_SCENES_H
#define NUBIS_TOOL_DEMO_SCENES_H

#include <cstddef>
#include <functional>
#include <string>

#include <json/json.h>

#include "demo_report.h"

namespace NubisTool {

class DemoForger;

// Obeys orders; see demo_device.h.
class DemoDevice {
public:
    virtual ~DemoDevice() = default;
    // Throws CommandError when the order failed.
    virtual Json::Value Do(const Json::Value &order) = 0;
};

// What the scenes of the demo play on and hand on to each other.
struct DemoStage {
    DemoStage(DemoReport &reportToFill, DemoDevice &deviceA, DemoDevice &deviceB)
        : report(reportToFill), first(deviceA), second(deviceB)
    {}

    DemoReport &report;
    DemoDevice &first;  // A
    DemoDevice &second; // B
    // Gives a text to everyone who listens for B's notifications, as any program of the user could.
    std::function<void(const std::string &text)> publish;
    std::string dataFolder;
    // Where the devices write what they hold.
    std::string folder;
    // As many as both have to hold in the end.
    size_t records = 0;
    // That B listens for.
    std::string eventName;
    // The last notification that B served, and the user action that it told of.
    std::string lastNotification;
    std::string lastAction;
    size_t actions = 0;
};

// B listens and subscribes; A saves the data, then changes, deletes and adds; B is woken by each notification.
void PlayBulkScene(DemoStage &stage);
// Forged notifications and an old one reach B.
void PlayForgeryScene(DemoStage &stage, const DemoForger &forger);
// B's subscription runs out.
void PlayExpiryScene(DemoStage &stage);
// Both change the same record at once.
void PlayConflictScene(DemoStage &stage);
// A keeps B out for a while.
void PlayLockScene(DemoStage &stage);
// The contents of both devices are compared.
void PlayComparison(DemoStage &stage);

} // namespace NubisTool

#endif
