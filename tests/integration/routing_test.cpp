// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/value.h>

#include "drive_service_process.h"
#include "nubis_kit.h"

using namespace Nubis;

namespace {
// Which of these the real service answered through the callback object: it then gives the request's uuid back.
const std::vector<std::string> FUNCTIONS = {"fetchRecordWithId", "GetCloudUserInfo", "batchDownloadRecords",
    "saveRecords", "modifyRecords", "fetchAssetStatusWithId", "batchCreateAsset", "updateAssetRevision", "getAppState",
    "deleteRecords", "fetchDatabaseChanges"};
const std::vector<std::string> NONE = {};
const std::vector<std::string> OF_VERSION_2 = {"fetchRecordWithId", "GetCloudUserInfo", "batchDownloadRecords"};
const std::vector<std::string> OF_VERSION_3 = {"fetchRecordWithId", "GetCloudUserInfo", "batchDownloadRecords",
    "saveRecords", "modifyRecords", "fetchAssetStatusWithId", "batchCreateAsset", "updateAssetRevision"};

struct Route {
    // Empty: the service's bundle names none.
    std::string abilityVersion;
    // The service's setting; empty: it has none.
    std::string useAsyncIpc;
    std::vector<std::string> asynchronous;

    friend void PrintTo(const Route &route, std::ostream *out)
    {
        *out << "version " << route.abilityVersion << ", switch " << route.useAsyncIpc;
    }
};

class RoutingTest : public testing::TestWithParam<Route> {
protected:
    Json::Value Ask(Json::Value request)
    {
        Json::Value reply;
        kit_->SendDataToCloudSrv(request, reply, -1);
        return reply;
    }

    void SetSwitch(const std::string &value)
    {
        Json::Value request;
        request["function"] = "setSetting";
        request["name"] = "ohNubisUseAsyncIPC";
        if (value.empty()) {
            request["unset"] = true;
        } else {
            request["value"] = std::stoi(value);
        }
        ASSERT_EQ(Ask(request)["code"], 0);
    }

    NubisTest::DriveServiceProcess service_;
    std::shared_ptr<NubisNative> kit_;
};

TEST_P(RoutingTest, VersionAndSwitchDecideTheWay)
{
    const Route &route = GetParam();
    service_.InstallManifest(route.abilityVersion);
    kit_ = NubisNative::GetInstance(100);
    SetSwitch(route.useAsyncIpc);
    std::vector<std::string> asynchronous;
    for (const auto &function : FUNCTIONS) {
        Json::Value request;
        request["function"] = function;
        const Json::Value reply = Ask(request);
        ASSERT_TRUE(reply.isMember("code")) << function;
        if (reply.isMember("uuid")) {
            asynchronous.push_back(function);
        }
    }
    EXPECT_EQ(asynchronous, route.asynchronous);
    std::cout << "| " << (route.abilityVersion.empty() ? "-1" : route.abilityVersion) << " | "
              << (route.useAsyncIpc.empty() ? "unset" : route.useAsyncIpc) << " | "
              << (asynchronous.empty() ? "none" : testing::PrintToString(asynchronous)) << " |\n";
}

INSTANTIATE_TEST_SUITE_P(All, RoutingTest,
    testing::Values(Route{"", "1", NONE}, Route{"", "0", NONE}, Route{"", "", NONE}, Route{"1", "1", NONE},
        Route{"1", "0", NONE}, Route{"1", "", NONE}, Route{"2", "1", OF_VERSION_2}, Route{"2", "0", NONE},
        Route{"2", "", OF_VERSION_2}, Route{"3", "1", OF_VERSION_3}, Route{"3", "0", NONE},
        Route{"3", "", OF_VERSION_3}),
    [](const testing::TestParamInfo<Route> &instance) {
        const Route &route = instance.param;
        return "Version" + (route.abilityVersion.empty() ? "None" : route.abilityVersion) + "Switch" +
               (route.useAsyncIpc.empty() ? "Unset" : route.useAsyncIpc);
    });
} // namespace
