// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_service_stub.h"

#include <mutex>

#include "host/calling_peer.h"
#include "ipc_types.h"
#include "message_parcel.h"
#include "records/limits.h"
#include "util/log.h"

namespace DriveService {

namespace {

constexpr const char16_t *DESCRIPTOR = u"OHOS.Aerostash.DriveServiceAbility";

// Empty when there is none, or its length is not one that a text can have.
std::string ReadText(OHOS::MessageParcel &parcel)
{
    int32_t length = parcel.ReadInt32();
    if (length < 1 || static_cast<size_t>(length) > MAX_PARCEL_TEXT) {
        return "";
    }
    const void *bytes = parcel.ReadRawData(static_cast<size_t>(length));
    return bytes == nullptr ? "" : std::string(static_cast<const char *>(bytes), static_cast<size_t>(length));
}

bool WriteText(OHOS::MessageParcel &parcel, const std::string &text)
{
    return parcel.WriteInt32(static_cast<int32_t>(text.size())) && parcel.WriteRawData(text.data(), text.size());
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
    std::string answer = router_.Answer(ReadText(data), Host::GetCallingPeer().deviceName);
    if (!reply.WriteInt32(OHOS::ERR_NONE) || !WriteText(reply, answer)) {
        LogError("a reply of " + std::to_string(answer.size()) + " bytes did not fit into its parcel");
    }
    return OHOS::ERR_NONE;
}

} // namespace DriveService
