// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_ABILITY_REGISTRY_H
#define HOST_ABILITY_REGISTRY_H

#include <cstdint>
#include <map>
#include <string>

#include "iremote_object.h"
#include "refbase.h"

namespace Host {

/// Offers objects of this process as abilities, before any service of the machine. Who connects gets a proxy, and requests
/// run through real parcels on IPC threads, as if the object lived in another process. Any thread.
class AbilityRegistry {
public:
    /// Values by name, as in the metadata of an ability in a manifest.
    using Metadata = std::map<std::string, std::string>;

    /// Offers `object`; replaces an earlier offer of the same ability, whose sessions go on. `metadata` is what the bundle
    /// manager of this process answers for the bundle. False for null or empty names.
    static bool Offer(const std::string &bundleName, const std::string &abilityName, int32_t userId,
        const OHOS::sptr<OHOS::IRemoteObject> &object, const Metadata &metadata = {});
    /// Ends the offer; sessions go on. False when there was none.
    static bool Withdraw(const std::string &bundleName, const std::string &abilityName, int32_t userId);
    /// Ends the offer and all its sessions as if the process of the ability had died: calls under way fail, death
    /// recipients are called, connections hear OnAbilityDisconnectDone with -1. It can be offered again afterwards.
    static bool Kill(const std::string &bundleName, const std::string &abilityName, int32_t userId);
};

} // namespace Host

#endif // HOST_ABILITY_REGISTRY_H
