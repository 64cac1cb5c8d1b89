// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_SERVICE_CONNECTOR_H
#define HOST_SERVICE_CONNECTOR_H

#include <cstdint>
#include <memory>
#include <string>

#include "iremote_object.h"
#include "session.h"

namespace Host {

// An ability as this process reaches it. `use` keeps the session open.
struct AbilityLink {
    std::shared_ptr<Ipc::Session> session;
    std::shared_ptr<void> use;
    OHOS::sptr<OHOS::IRemoteObject> ability;
};

// Why an ability cannot be reached: the values that ConnectServiceExtensionAbility gives.
enum {
    ABILITY_UNKNOWN = 2097152,
    ABILITY_NOT_STARTED,
    ABILITY_NOT_REACHED,
};

// Reaches the ability's service process, starting it where needed; a session that this process has already is shared.
// ERR_OK, or one of the values above with a text. Blocks, some seconds at most. Any thread.
int ConnectToService(const std::string &bundleName, const std::string &abilityName, int32_t userId, AbilityLink &link,
    std::string &error);

// The same for an ability that is registered in this process. False when there is none.
bool ConnectToRegistered(
    const std::string &bundleName, const std::string &abilityName, int32_t userId, AbilityLink &link);

} // namespace Host

#endif // HOST_SERVICE_CONNECTOR_H
