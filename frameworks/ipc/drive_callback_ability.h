// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_DRIVE_CALLBACK_ABILITY_H
#define NUBIS_DRIVE_CALLBACK_ABILITY_H

#include <memory>
#include <mutex>
#include <string>

#include "iremote_broker.h"

namespace Nubis {
// What the service sees of the object that it calls back. Requests are JSON texts, whatever their code.
class DriveCallbackAbility : public OHOS::IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"OHOS.Drive.DriveCallbackAbility");
};
} // namespace Nubis

#endif // NUBIS_DRIVE_CALLBACK_ABILITY_H
