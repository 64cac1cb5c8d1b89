// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_service_stub.h"

#include <optional>

#include "host/calling_peer.h"
#include "ipc_types.h"
#include "message_parcel.h"
#include "util/log.h"
#include "util/parcel_text.h"

namespace DriveService {

namespace {

constexpr const char16_t *DESCRIPTOR = u"OHOS.Aerostash.DriveServiceAbility";

std::optional<ClientCallback> ReadCallback(OHOS::MessageParcel &parcel)
{
    OHOS::sptr<OHOS::IRemoteObject> object = parcel.ReadRemoteObject();
    return object == nullptr ? std::nullopt : std::make_optional<ClientCallback>(object);
}

} // namespace

DriveServiceStub::DriveServiceStub(RequestRouter &router) : OHOS::IPCObjectStub(DESCRIPTOR), router_(router)
{}

int DriveServiceStub::OnRemoteRequest(
    uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option)
{
    if (code != TRANSACTION_SYNC) {
        return OHOS::IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    if (data.ReadInterfaceToken() != DESCRIPTOR) {
        LogError("a request with a wrong interface token was refused");
        return OHOS::ERR_INVALID_STATE;
    }
    std::string text = ReadText(data);
    std::optional<ClientCallback> callback = ReadCallback(data);
    std::string answer = router_.Answer(text, Host::GetCallingPeer().deviceName, callback ? &*callback : nullptr);
    if (!reply.WriteInt32(OHOS::ERR_NONE) || !WriteText(reply, answer)) {
        LogError("a reply of " + std::to_string(answer.size()) + " bytes did not fit into its parcel");
    }
    return OHOS::ERR_NONE;
}

} // namespace DriveService
