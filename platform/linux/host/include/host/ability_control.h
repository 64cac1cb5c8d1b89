// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_ABILITY_CONTROL_H
#define HOST_ABILITY_CONTROL_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// For tools: what runs, what could be started, and why a connection failed. Any thread.
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

/// An ability as a manifest describes it.
struct ManifestAbility {
    /// As it is asked for; unique in its bundle.
    std::string name;
    /// What starts it: placeholders filled in, and the program by its path. When that fails, as far as it came.
    std::vector<std::string> command;
    /// What the bundle manager tells of it, such as "abilityVersion".
    std::map<std::string, std::string> metadata;
    /// Why it cannot be started, in one line for people; empty when it can.
    std::string error;
};

/// A file BUNDLE.json in one of the manifest folders.
struct ManifestState {
    /// Its path.
    std::string file;
    /// As the file's name gives it.
    std::string bundleName;
    /// What is wrong with the file, in one line for people; empty when nothing is.
    std::string error;
    /// In the order of the file; none when something is wrong with it.
    std::vector<ManifestAbility> abilities;
};

/// All manifests, folder by folder in the order in which they are searched, by name in each. Of several of one bundle
/// only the first counts. Folders that cannot be read have none. Starts and changes nothing.
std::vector<ManifestState> InspectManifests(int32_t userId);

/// Why the latest ConnectServiceExtensionAbility of this process failed, in one line for people; empty after a success.
std::string LastConnectError();

} // namespace Host

#endif // HOST_ABILITY_CONTROL_H
