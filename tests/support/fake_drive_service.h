// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_FAKE_DRIVE_SERVICE_H
#define NUBIS_TEST_FAKE_DRIVE_SERVICE_H

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <json/value.h>

#include "host/ability_registry.h"
#include "ipc_object_stub.h"
#include "json_helper.h"
#include "message_parcel.h"
#include "message_parcel_util.h"

namespace NubisTest {
// A drive service in this process, reached through real parcels: answers each function with the text it was told to, or
// {"code": 0}, and remembers what it was asked. Without an ability version, so that every request comes synchronously.
class FakeDriveService : public OHOS::IPCObjectStub {
public:
    // Before the first kit instance of the user, so that the kit does not start a service of the machine.
    static OHOS::sptr<FakeDriveService> Offer(int32_t userId)
    {
        OHOS::sptr<FakeDriveService> service = new FakeDriveService;
        Host::AbilityRegistry::Offer("com.orvane.tyra.aerostash", "DriveServiceAbility", userId, service);
        return service;
    }

    void Answer(const std::string &function, const std::string &reply)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        answers_[function] = reply;
    }

    // The requests of one function so far.
    std::vector<Json::Value> Requests(const std::string &function)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return requests_[function];
    }

    int OnRemoteRequest(
        uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option) override
    {
        constexpr uint32_t syncRequest = 3;
        if (code != syncRequest || data.ReadInterfaceToken() != u"OHOS.Aerostash.DriveServiceAbility") {
            return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
        }
        const Json::Value request =
            Nubis::JsonHelper::StringToJson(Nubis::MessageParcelUtil::ReadStringFromMessage(data));
        reply.WriteInt32(0);
        Nubis::MessageParcelUtil::WriteStringToMessage(reply, Handle(request));
        return 0;
    }

private:
    std::string Handle(const Json::Value &request)
    {
        const std::string function = Nubis::JsonHelper::GetStringFromJson(request, "function");
        std::lock_guard<std::mutex> lock(mutex_);
        requests_[function].push_back(request);
        auto found = answers_.find(function);
        return found == answers_.end() ? R"({"code": 0})" : found->second;
    }

    std::mutex mutex_;
    std::map<std::string, std::string> answers_;
    std::map<std::string, std::vector<Json::Value>> requests_;
};
} // namespace NubisTest

#endif // NUBIS_TEST_FAKE_DRIVE_SERVICE_H
