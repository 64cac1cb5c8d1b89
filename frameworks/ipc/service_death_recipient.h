// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_DEATH_RECIPIENT_H
#define NUBIS_SERVICE_DEATH_RECIPIENT_H

#include <memory>
#include <mutex>
#include <string>

#include "iremote_object.h"
#include "refbase.h"

namespace Nubis {
class DriveIpcConnect;

// Hears of the service's death, on an IPC thread, and tells its connection. The remote object may hold it longer than
// the connection lives.
class ServiceDeathRecipient : public OHOS::IRemoteObject::DeathRecipient {
public:
    explicit ServiceDeathRecipient(const OHOS::wptr<DriveIpcConnect> &connect);
    void OnRemoteDied(const OHOS::wptr<OHOS::IRemoteObject> &object) override;

private:
    const OHOS::wptr<DriveIpcConnect> connect_;
};
} // namespace Nubis

#endif // NUBIS_SERVICE_DEATH_RECIPIENT_H
