// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_service_stub.h"

#include <memory>
#include <optional>
#include <utility>

#include "host/calling_peer.h"
#include "ipc_types.h"
#include "message_parcel.h"
#include "util/json_util.h"
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

// A request whose transaction has ended.
struct PendingRequest {
    Json::Value json;
    std::string uuid;
    std::string deviceName;
    ClientCallback callback;
    std::unique_ptr<RequestBudget::Share> share;
};

void AnswerPending(RequestRouter &router, PendingRequest &request)
{
    std::string answer =
        router.AnswerWithUuid(std::move(request.json), request.uuid, request.deviceName, &request.callback);
    // It waits for as long as its client does not take it.
    request.share->AddBytes(answer.size());
    if (!request.callback.Call(answer)) {
        LogError("the reply to request " + Excerpt(request.uuid) + " was dropped");
    }
}

} // namespace

DriveServiceStub::DriveServiceStub(RequestRouter &router, RequestPool &pool, RequestBudget &budget)
    : OHOS::IPCObjectStub(DESCRIPTOR), router_(router), pool_(pool), budget_(budget)
{}

int DriveServiceStub::OnRemoteRequest(
    uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option)
{
    if (code != TRANSACTION_SYNC && code != TRANSACTION_ASYNC) {
        return OHOS::IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    if (data.ReadInterfaceToken() != DESCRIPTOR) {
        LogError("a request with a wrong interface token was refused");
        return OHOS::ERR_INVALID_STATE;
    }
    if (code == TRANSACTION_ASYNC) {
        return AnswerLater(data);
    }
    AnswerAtOnce(data, reply);
    return OHOS::ERR_NONE;
}

void DriveServiceStub::AnswerAtOnce(OHOS::MessageParcel &data, OHOS::MessageParcel &reply)
{
    std::string text = ReadText(data);
    std::optional<ClientCallback> callback = ReadCallback(data);
    const Host::CallingPeer peer = Host::GetCallingPeer();
    std::optional<Failure> failure;
    std::unique_ptr<RequestBudget::Share> share = budget_.Take(peer.pid, text, failure);
    std::string answer = share == nullptr ? RequestRouter::Refuse(*failure)
                                          : router_.Answer(text, peer.deviceName, callback ? &*callback : nullptr);
    if (!reply.WriteInt32(OHOS::ERR_NONE) || !WriteText(reply, answer)) {
        LogError("a reply of " + std::to_string(answer.size()) + " bytes did not fit into its parcel");
    }
}

int DriveServiceStub::AnswerLater(OHOS::MessageParcel &data)
{
    const Host::CallingPeer peer = Host::GetCallingPeer();
    const std::string text = ReadText(data);
    std::optional<Failure> failure;
    std::unique_ptr<RequestBudget::Share> share = budget_.Take(peer.pid, text, failure);
    if (share == nullptr) {
        LogError("an asynchronous request was refused: " + failure->description);
        return OHOS::ERR_TRANSACTION_FAILED;
    }
    Json::Value json;
    std::string error;
    if (!ParseForeignJson(text, json, error)) {
        LogError("an asynchronous request that is no JSON was refused: " + error);
        return OHOS::ERR_INVALID_DATA;
    }
    std::string uuid = TextMember(json, "uuid");
    if (uuid.empty()) {
        LogError("an asynchronous request without a uuid was refused");
        return OHOS::ERR_INVALID_DATA;
    }
    std::optional<ClientCallback> callback = ReadCallback(data);
    if (!callback) {
        LogError("the asynchronous request " + Excerpt(uuid) + " has no object to be answered by");
        return OHOS::ERR_NULL_OBJECT;
    }
    auto request = std::make_shared<PendingRequest>(
        PendingRequest{std::move(json), std::move(uuid), peer.deviceName, *std::move(callback), std::move(share)});
    if (!pool_.Post([&router = router_, request] { AnswerPending(router, *request); })) {
        LogError("the asynchronous request " + Excerpt(request->uuid) + " came when no more could be taken");
        return OHOS::ERR_TRANSACTION_FAILED;
    }
    return OHOS::ERR_NONE;
}

} // namespace DriveService
