// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "transport_client.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>

#include "ability_connect_callback_stub.h"
#include "canned_protocol.h"
#include "extension_manager_client.h"
#include "host/ability_control.h"
#include "ipc_object_stub.h"
#include "message_option.h"
#include "parcel_text.h"
#include "want.h"

namespace NubisBench {
namespace {
constexpr std::chrono::seconds PATIENCE(60);

void Check(bool isGood, const char *what)
{
    if (!isGood) {
        throw std::runtime_error(what);
    }
}

void Send(const OHOS::sptr<OHOS::IRemoteObject> &service, uint32_t code, OHOS::MessageParcel &data,
    OHOS::MessageParcel &reply)
{
    OHOS::MessageOption option;
    Check(service->SendRequest(code, data, reply, option) == 0, "a request of the benchmark failed");
}
} // namespace

class TransportClient::Connection : public OHOS::AAFwk::AbilityConnectionStub {
public:
    void OnAbilityConnectDone(
        const OHOS::AppExecFwk::ElementName &, const OHOS::sptr<OHOS::IRemoteObject> &object, int) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        object_ = object;
        isConnected_ = true;
        connected_.notify_all();
    }
    void OnAbilityDisconnectDone(const OHOS::AppExecFwk::ElementName &, int) override
    {}
    OHOS::sptr<OHOS::IRemoteObject> Await()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        Check(connected_.wait_for(lock, PATIENCE, [this] { return isConnected_; }), "the connection did not come");
        return object_;
    }

private:
    std::mutex mutex_;
    std::condition_variable connected_;
    OHOS::sptr<OHOS::IRemoteObject> object_;
    bool isConnected_ = false;
};

// Takes the reply of the asynchronous request that is under way, and answers that it did.
class TransportClient::Receiver : public OHOS::IPCObjectStub {
public:
    int OnRemoteRequest(uint32_t, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &) override
    {
        data.ReadInterfaceToken();
        std::string text = ReadText(data);
        {
            std::lock_guard<std::mutex> lock(mutex_);
            text_ = std::move(text);
            hasCome_ = true;
        }
        came_.notify_all();
        WriteText(reply, R"({"code":0})");
        return 0;
    }
    std::string Await()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        Check(came_.wait_for(lock, PATIENCE, [this] { return hasCome_; }), "the reply did not come");
        hasCome_ = false;
        return std::move(text_);
    }

private:
    std::mutex mutex_;
    std::condition_variable came_;
    std::string text_;
    bool hasCome_ = false;
};

TransportClient::TransportClient(int32_t userId) : connection_(new Connection), receiver_(new Receiver)
{
    OHOS::AAFwk::Want want;
    want.SetElementName(SERVICE_BUNDLE, SERVICE_ABILITY);
    const auto result = OHOS::AAFwk::ExtensionManagerClient::GetInstance().ConnectServiceExtensionAbility(
        want, connection_->AsObject(), userId);
    if (result != OHOS::ERR_OK) {
        throw std::runtime_error("no connection: " + Host::LastConnectError());
    }
    service_ = connection_->Await();
    Check(service_ != nullptr, "no service");
}

TransportClient::~TransportClient()
{
    OHOS::AAFwk::ExtensionManagerClient::GetInstance().DisconnectAbility(connection_->AsObject());
}

std::string TransportClient::Exchange(const std::string &request, bool withObject) const
{
    OHOS::MessageParcel data;
    OHOS::MessageParcel reply;
    data.WriteInterfaceToken(SERVICE_TOKEN);
    WriteText(data, request);
    if (withObject) {
        data.WriteRemoteObject(receiver_);
    }
    Send(service_, SYNC_REQUEST, data, reply);
    Check(reply.ReadInt32() == 0, "the service refused a request");
    return ReadText(reply);
}

std::string TransportClient::ExchangeAsync(const std::string &request) const
{
    OHOS::MessageParcel data;
    OHOS::MessageParcel reply;
    data.WriteInterfaceToken(SERVICE_TOKEN);
    WriteText(data, request);
    data.WriteRemoteObject(receiver_);
    Send(service_, ASYNC_REQUEST, data, reply);
    return receiver_->Await();
}

void TransportClient::SetReply(const std::string &function, const std::string &text, int delayMs) const
{
    OHOS::MessageParcel data;
    OHOS::MessageParcel reply;
    data.WriteInterfaceToken(SERVICE_TOKEN);
    WriteText(data, function);
    data.WriteInt32(delayMs);
    WriteText(data, text);
    Send(service_, SET_REPLY, data, reply);
}

void TransportClient::Capture(const std::string &function) const
{
    OHOS::MessageParcel data;
    OHOS::MessageParcel reply;
    data.WriteInterfaceToken(SERVICE_TOKEN);
    WriteText(data, function);
    Send(service_, CAPTURE, data, reply);
}

std::string TransportClient::Captured() const
{
    OHOS::MessageParcel data;
    OHOS::MessageParcel reply;
    data.WriteInterfaceToken(SERVICE_TOKEN);
    Send(service_, CAPTURED, data, reply);
    return ReadText(reply);
}

void TransportClient::HoldSaves(bool isOn) const
{
    OHOS::MessageParcel data;
    OHOS::MessageParcel reply;
    data.WriteInterfaceToken(SERVICE_TOKEN);
    data.WriteInt32(isOn ? 1 : 0);
    Send(service_, HOLD_SAVES, data, reply);
}

int TransportClient::CountHeld() const
{
    OHOS::MessageParcel data;
    OHOS::MessageParcel reply;
    data.WriteInterfaceToken(SERVICE_TOKEN);
    Send(service_, COUNT_HELD, data, reply);
    return reply.ReadInt32();
}
} // namespace NubisBench
