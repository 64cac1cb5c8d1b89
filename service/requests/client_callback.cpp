// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/client_callback.h"

#include <utility>

#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"
#include "util/log.h"
#include "util/parcel_text.h"

namespace DriveService {

namespace {

constexpr const char16_t *CALLBACK_DESCRIPTOR = u"OHOS.Drive.DriveCallbackAbility";

// Clients do not look at it.
constexpr uint32_t CALLBACK_TRANSACTION = 1;

} // namespace

ClientCallback::ClientCallback(OHOS::sptr<OHOS::IRemoteObject> object) : object_(std::move(object))
{}

std::optional<std::string> ClientCallback::Call(const std::string &requestText) const
{
    OHOS::MessageParcel data;
    if (!data.WriteInterfaceToken(CALLBACK_DESCRIPTOR) || !WriteText(data, requestText)) {
        LogError("a call of " + std::to_string(requestText.size()) + " bytes did not fit into its parcel");
        return std::nullopt;
    }
    OHOS::MessageParcel reply;
    OHOS::MessageOption option;
    int result = object_->SendRequest(CALLBACK_TRANSACTION, data, reply, option);
    if (result != OHOS::ERR_NONE) {
        LogError("a call to a client failed with result " + std::to_string(result));
        return std::nullopt;
    }
    return ReadText(reply);
}

} // namespace DriveService
