// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_death_recipient.h"

#include "drive_ipc_connect.h"
#include "log.h"

namespace Nubis {
ServiceDeathRecipient::ServiceDeathRecipient(const OHOS::wptr<DriveIpcConnect> &connect) : connect_(connect)
{}

void ServiceDeathRecipient::OnRemoteDied(const OHOS::wptr<OHOS::IRemoteObject> &object)
{
    NB_LOGI("On remote died");
    if (object.promote() == nullptr) {
        NB_LOGE("on remote died, remote is nullptr");
    }
    const OHOS::sptr<DriveIpcConnect> connect = connect_.promote();
    if (connect != nullptr) {
        connect->OnRemoteDied(object);
    }
}
} // namespace Nubis
