// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <future>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "ability_connect_callback_stub.h"
#include "extension_manager_client.h"
#include "ipc_object_stub.h"
#include "message_option.h"
#include "message_parcel.h"
#include "want.h"

// A client that behaves as no honest one does: hostile_client MODE. "flood" asks for the most expensive things at once
// and for ever, "pending" leaves many asynchronous requests whose answers it does not take. Prints a line when it has
// begun, and ends when it is killed.
namespace {

constexpr uint32_t SYNC = 3;
constexpr uint32_t ASYNC = 4;
constexpr int FLOOD_THREADS = 150;
constexpr int PENDING_REQUESTS = 400;
constexpr size_t VALUES = 900000;

class Connection : public OHOS::AAFwk::AbilityConnectionStub {
public:
    void OnAbilityConnectDone(
        const OHOS::AppExecFwk::ElementName &, const OHOS::sptr<OHOS::IRemoteObject> &object, int) override
    {
        ability_.set_value(object);
    }
    void OnAbilityDisconnectDone(const OHOS::AppExecFwk::ElementName &, int) override
    {}
    OHOS::sptr<OHOS::IRemoteObject> Ability()
    {
        return ability_.get_future().get();
    }

private:
    std::promise<OHOS::sptr<OHOS::IRemoteObject>> ability_;
};

// Never answers.
class Deaf : public OHOS::IPCObjectStub {
public:
    Deaf() : OHOS::IPCObjectStub(u"OHOS.Drive.DriveCallbackAbility")
    {}
    int OnRemoteRequest(uint32_t, OHOS::MessageParcel &, OHOS::MessageParcel &, OHOS::MessageOption &) override
    {
        std::promise<void>().get_future().wait();
        return 0;
    }
};

int Send(const OHOS::sptr<OHOS::IRemoteObject> &service, uint32_t code, const std::string &text,
    const OHOS::sptr<OHOS::IRemoteObject> &callback)
{
    OHOS::MessageParcel data;
    OHOS::MessageParcel reply;
    OHOS::MessageOption option;
    data.WriteInterfaceToken(u"OHOS.Aerostash.DriveServiceAbility");
    data.WriteInt32(static_cast<int32_t>(text.size()));
    data.WriteRawData(text.data(), text.size());
    if (callback != nullptr) {
        data.WriteRemoteObject(callback);
    }
    return service->SendRequest(code, data, reply, option);
}

void Flood(const OHOS::sptr<OHOS::IRemoteObject> &service)
{
    std::string text = R"({"function":"saveRecords","bundleName":"com.example.notes","containerName":"notes",)"
                       R"("savePolicy":2,"records":[0)";
    for (size_t i = 1; i < VALUES; ++i) {
        text += ",0";
    }
    text += "]}";
    std::atomic<bool> hasBegun{false};
    std::vector<std::thread> threads;
    threads.reserve(FLOOD_THREADS);
    for (int i = 0; i < FLOOD_THREADS; ++i) {
        threads.emplace_back([&] {
            while (true) {
                Send(service, SYNC, text, nullptr);
                if (!hasBegun.exchange(true)) {
                    std::cout << "begun" << std::endl;
                }
            }
        });
    }
    threads.front().join();
}

void LeavePending(const OHOS::sptr<OHOS::IRemoteObject> &service)
{
    OHOS::sptr<Deaf> deaf(new Deaf());
    for (int i = 0; i < PENDING_REQUESTS; ++i) {
        const std::string uuid = std::to_string(i);
        Send(service, ASYNC, R"({"function":"getAppState","uuid":")" + uuid + "\"}", deaf);
    }
    std::cout << "begun" << std::endl;
    std::promise<void>().get_future().wait();
}

} // namespace

int main(int argc, char **argv)
{
    OHOS::sptr<Connection> connection(new Connection());
    OHOS::AAFwk::Want want;
    want.SetElementName("com.orvane.tyra.aerostash", "DriveServiceAbility");
    constexpr int user = 100;
    if (argc != 2 || OHOS::AAFwk::ExtensionManagerClient::GetInstance().ConnectServiceExtensionAbility(
                         want, connection->AsObject(), user) != 0) {
        return 1;
    }
    OHOS::sptr<OHOS::IRemoteObject> service = connection->Ability();
    if (service == nullptr) {
        return 1;
    }
    if (argv[1] == std::string("flood")) {
        Flood(service);
    } else {
        LeavePending(service);
    }
    return 0;
}
