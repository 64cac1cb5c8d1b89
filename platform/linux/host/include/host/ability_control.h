// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_ABILITY_CONTROL_H
#define HOST_ABILITY_CONTROL_H

#include <cstdint>
#include <string>

// For tools: what runs, and why a connection failed. Any thread.
namespace Host {

/// What FindAbility finds out.
struct AbilityStatus {
    /// A process listens at the socket.
    bool running = false;
    /// That process; -1 when none runs.
    int pid = -1;
    /// Where the ability listens, or would.
    std::string socketPath;
};

/// Looks for the service process of an ability without starting it.
AbilityStatus FindAbility(const std::string &bundleName, const std::string &abilityName, int32_t userId);

/// Why the latest ConnectServiceExtensionAbility of this process failed, in one line for people; empty after a success.
std::string LastConnectError();

} // namespace Host

#endif // HOST_ABILITY_CONTROL_H
