// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_PROXY_FIXTURE_H
#define NUBIS_TEST_PROXY_FIXTURE_H

#include <future>
#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "drive_service_proxy.h"
#include "fake_drive_service.h"
#include "json_samples.h"

namespace NubisTest {
struct SendOutcome {
    int32_t status = 0;
    std::string reply;
    Json::Value request;
};

// A fake service for a user of its own, and requests to it.
class ProxyTest : public testing::Test {
protected:
    ProxyTest() : userId_(NextUser())
    {}
    ~ProxyTest() override
    {
        FakeDriveService::Withdraw(userId_);
    }

    // Each time for a user of its own, because a user's switch is fetched but once a day. Without a switch the service
    // has no such parameter.
    std::unique_ptr<Nubis::DriveServiceProxy> Connect(
        const Host::AbilityRegistry::Metadata &metadata = {}, std::optional<bool> useAsyncIpc = std::nullopt)
    {
        FakeDriveService::Withdraw(userId_);
        userId_ = NextUser();
        service_ = FakeDriveService::Offer(userId_, metadata);
        if (useAsyncIpc.has_value()) {
            service_->Answer(
                "getSysParameters", *useAsyncIpc ? R"({"parameters": [{"key": "ohNubisUseAsyncIPC", "value": 1}]})"
                                                 : R"({"parameters": [{"key": "ohNubisUseAsyncIPC", "value": 0}]})");
        }
        auto proxy = std::make_unique<Nubis::DriveServiceProxy>(userId_);
        // The greeting after the connection, so that it does not mix with what the test sends.
        service_->WaitFor("getAppState", 1);
        return proxy;
    }

    static SendOutcome Send(
        Nubis::DriveServiceProxy &proxy, const std::string &function, int timeout = -1, const std::string &id = "t1")
    {
        SendOutcome outcome;
        outcome.request["function"] = function;
        outcome.status = proxy.SendData(outcome.request, outcome.reply, id, function, timeout);
        return outcome;
    }

    static std::future<SendOutcome> SendAside(
        Nubis::DriveServiceProxy &proxy, const std::string &function, int timeout = -1, const std::string &id = "t1")
    {
        return std::async(
            std::launch::async, [&proxy, function, timeout, id]() { return Send(proxy, function, timeout, id); });
    }

    static int NextUser()
    {
        static int user = 2000;
        return ++user;
    }

    int userId_;
    OHOS::sptr<FakeDriveService> service_;
};
} // namespace NubisTest

#endif // NUBIS_TEST_PROXY_FIXTURE_H
