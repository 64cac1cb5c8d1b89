// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_PROCESS_H
#define NUBIS_TOOL_DEMO_PROCESS_H

#include <string>

#include "child_process.h"
#include "demo_scenes.h"

namespace NubisTool {

// A device of the demo: a process that obeys orders.
class DeviceProcess : public DemoDevice {
public:
    DeviceProcess(const std::string &name, const std::string &stateFolder, int user);

    Json::Value Do(const Json::Value &order) override;

private:
    std::string name_;
    ChildProcess process_;
};

// Ends the demo cleanly after a signal.
void ThrowIfInterrupted();

} // namespace NubisTool

#endif
