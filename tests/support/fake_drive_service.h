// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_FAKE_DRIVE_SERVICE_H
#define NUBIS_TEST_FAKE_DRIVE_SERVICE_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include <json/value.h>

#include "host/ability_registry.h"
#include "ipc_object_stub.h"
#include "json_helper.h"
#include "message_option.h"
#include "message_parcel.h"
#include "message_parcel_util.h"

namespace NubisTest {
// A drive service in this process, reached through real parcels: answers each function with the text it was told to, or
// {"code": 0}, and remembers what it was asked. Without an ability version every request comes synchronously.
class FakeDriveService : public OHOS::IPCObjectStub {
public:
    using Answerer = std::function<std::string(const Json::Value &request)>;

    // What came with a request besides its text.
    struct Arrival {
        Json::Value request;
        bool isAsync = false;
        OHOS::sptr<OHOS::IRemoteObject> callback;
    };

    // Before the first kit instance of the user, so that the kit does not start a service of the machine.
    static OHOS::sptr<FakeDriveService> Offer(int32_t userId, const Host::AbilityRegistry::Metadata &metadata = {})
    {
        OHOS::sptr<FakeDriveService> service = new FakeDriveService;
        service->OfferAgain(userId, metadata);
        return service;
    }

    void OfferAgain(int32_t userId, const Host::AbilityRegistry::Metadata &metadata = {})
    {
        Host::AbilityRegistry::Offer(BUNDLE, ABILITY, userId, this, metadata);
    }

    static void Kill(int32_t userId)
    {
        Host::AbilityRegistry::Kill(BUNDLE, ABILITY, userId);
    }

    static void Withdraw(int32_t userId)
    {
        Host::AbilityRegistry::Withdraw(BUNDLE, ABILITY, userId);
    }

    void Answer(const std::string &function, const std::string &reply)
    {
        AnswerWith(function, [reply](const Json::Value &) { return reply; });
    }

    // The answerer runs on the thread of each request, with no lock held.
    void AnswerWith(const std::string &function, Answerer answerer)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        answerers_[function] = std::move(answerer);
    }

    // The function's requests are answered once the gate is open.
    void AnswerBehind(const std::string &function, std::promise<void> &gate)
    {
        AnswerWith(function, [opened = gate.get_future().share()](const Json::Value &) {
            opened.wait();
            return std::string("{}");
        });
    }

    // Asynchronous requests of the function are answered through their callback object within the transaction; those of
    // others wait for ReplyTo.
    void AnswerAsyncAtOnce(const std::string &function, const std::string &reply)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        asyncReplies_[function] = reply;
    }

    // The requests of one function so far.
    std::vector<Json::Value> Requests(const std::string &function)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        std::vector<Json::Value> requests;
        for (const auto &arrival : arrivals_[function]) {
            requests.push_back(arrival.request);
        }
        return requests;
    }

    // Waits for so many requests of one function and returns all of them. Throws when they do not come.
    std::vector<Arrival> WaitFor(const std::string &function, size_t count)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        const auto hasArrived = [&]() { return arrivals_[function].size() >= count; };
        if (!arrived_.wait_for(lock, std::chrono::seconds(30), hasArrived)) {
            throw std::runtime_error("the service was not asked for " + function);
        }
        return arrivals_[function];
    }

    // Answers an asynchronous request as the service does, and returns what the library said to that.
    static std::string ReplyTo(const Arrival &arrival, Json::Value reply)
    {
        reply["uuid"] = arrival.request["uuid"];
        return CallBack(arrival.callback, Nubis::JsonHelper::JsonToString(reply));
    }

    static std::string CallBack(const OHOS::sptr<OHOS::IRemoteObject> &callback, const std::string &text)
    {
        OHOS::MessageParcel data;
        OHOS::MessageParcel reply;
        OHOS::MessageOption option;
        data.WriteInterfaceToken(u"OHOS.Drive.DriveCallbackAbility");
        Nubis::MessageParcelUtil::WriteStringToMessage(data, text);
        if (callback == nullptr || callback->SendRequest(1, data, reply, option) != 0) {
            return "";
        }
        return Nubis::MessageParcelUtil::ReadStringFromMessage(reply);
    }

    int OnRemoteRequest(
        uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option) override
    {
        constexpr uint32_t syncRequest = 3;
        constexpr uint32_t asyncRequest = 4;
        const bool isKnown = code == syncRequest || code == asyncRequest;
        if (!isKnown || data.ReadInterfaceToken() != u"OHOS.Aerostash.DriveServiceAbility") {
            return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
        }
        Arrival arrival;
        arrival.request = Nubis::JsonHelper::StringToJson(Nubis::MessageParcelUtil::ReadStringFromMessage(data));
        arrival.isAsync = code == asyncRequest;
        arrival.callback = data.ReadRemoteObject();
        const std::string text = Handle(arrival);
        if (!arrival.isAsync) {
            reply.WriteInt32(0);
            Nubis::MessageParcelUtil::WriteStringToMessage(reply, text);
        }
        return 0;
    }

private:
    static constexpr const char *BUNDLE = "com.orvane.tyra.aerostash";
    static constexpr const char *ABILITY = "DriveServiceAbility";

    std::string Handle(const Arrival &arrival)
    {
        const std::string function = Nubis::JsonHelper::GetStringFromJson(arrival.request, "function");
        Answerer answerer;
        std::string asyncReply;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            arrivals_[function].push_back(arrival);
            arrived_.notify_all();
            const auto found = answerers_.find(function);
            if (found != answerers_.end()) {
                answerer = found->second;
            }
            if (arrival.isAsync) {
                answerer = nullptr;
                asyncReply = asyncReplies_[function];
            }
        }
        if (!asyncReply.empty()) {
            ReplyTo(arrival, Nubis::JsonHelper::StringToJson(asyncReply));
        }
        return answerer == nullptr ? R"({"code": 0})" : answerer(arrival.request);
    }

    std::mutex mutex_;
    std::condition_variable arrived_;
    std::map<std::string, Answerer> answerers_;
    std::map<std::string, std::string> asyncReplies_;
    std::map<std::string, std::vector<Arrival>> arrivals_;
};
} // namespace NubisTest

#endif // NUBIS_TEST_FAKE_DRIVE_SERVICE_H
