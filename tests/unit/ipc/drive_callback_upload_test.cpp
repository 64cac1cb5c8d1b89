// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cerrno>
#include <future>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drive_callback_stub.h"
#include "kit_fixture.h"
#include "log_capture.h"

namespace {
using namespace Nubis;
using NubisTest::BUNDLE;
using NubisTest::FakeDriveService;
using NubisTest::JsonText;
using NubisTest::ParseJson;
using testing::Contains;
using testing::ElementsAre;

constexpr const char *THIS_PROCESS = "nubis_transport_test";

// Takes this process its name.
class NamelessProcess {
public:
    NamelessProcess() : first_(program_invocation_name[0])
    {
        program_invocation_name[0] = '\0';
    }
    ~NamelessProcess()
    {
        program_invocation_name[0] = first_;
    }
    NamelessProcess(const NamelessProcess &) = delete;
    NamelessProcess &operator=(const NamelessProcess &) = delete;

private:
    const char first_;
};

class CallbackUploadTest : public NubisTest::KitTest {
protected:
    using Outcome = std::pair<int32_t, std::string>;

    static std::string UploadRequest(const std::string &more = "{}", const std::string &containerName = "main")
    {
        Json::Value request = ParseJson(more);
        request["function"] = "onUploadRecordAssets";
        request["bundleName"] = BUNDLE;
        request["containerName"] = containerName;
        return JsonText(request);
    }

    Outcome Ask(const std::string &request)
    {
        std::string reply;
        const int32_t result = stub_->HandleRemoteRequest(request, reply);
        return {result, reply};
    }

    void Serve(NBUploadAssetCallback callback)
    {
        kit_->SetUploadAssetCallBack(THIS_PROCESS, std::move(callback));
    }

    OHOS::sptr<DriveCallbackStub> stub_ = new DriveCallbackStub(userId_);
};

int ServeAny(const std::string &, std::string &reply)
{
    reply = "served";
    return 0;
}

TEST_F(CallbackUploadTest, AnotherProcessIsServedByTheFileContainer)
{
    kit_->SetUploadAssetCallBack("com.example.other", ServeAny);
    EXPECT_EQ(Ask(UploadRequest()), Outcome(0, "null"));
    EXPECT_EQ(LastRequest("GetCloudAppInfo")["syncDemon"], "1");
    EXPECT_EQ(Ask(UploadRequest(R"({"records": []})")), Outcome(0, ""));
    EXPECT_EQ(Ask(UploadRequest(R"({"records": {}})")), Outcome(0, "null"));

    NubisTest::LogCapture log;
    EXPECT_EQ(Ask(UploadRequest("{}", "unknown")), Outcome(-1, ""));
    EXPECT_THAT(log.TakeErrors(), ElementsAre("Get container failed, check container name failed, bundleName:"
                                              "com.example.notes, containerName:unknown, type:1"));
    NubisNative::GetInstance(userId_, NB_SYNC_DEMON_DATA);
    EXPECT_EQ(Ask(UploadRequest()), Outcome(-1, ""));
    EXPECT_THAT(log.TakeErrors(), ElementsAre("param error, syncDemon:0"));
    EXPECT_EQ(Ask(UploadRequest("{}", "")), Outcome(-1, ""));
    EXPECT_THAT(log.TakeErrors(), ElementsAre("on upload record assets failed, bundlename or containername is null, "
                                              "bundleName:com.example.notes, containerName:"));
}

TEST_F(CallbackUploadTest, TheProcessOfTheCallbackIsServedByIt)
{
    NubisTest::LogCapture log;
    std::string seen;
    Serve([&seen](const std::string &request, std::string &reply) {
        seen = request;
        reply = "done";
        return 0;
    });
    EXPECT_EQ(Ask(UploadRequest(R"({"records": [{}]})", "anything")), Outcome(0, "done"));
    EXPECT_EQ(seen, UploadRequest(R"({"records": [{}]})", "anything"));
    Serve([](auto &...) { return 7; });
    EXPECT_EQ(Ask(UploadRequest()).first, 7);
    log.TakeErrors();
    Serve(nullptr);
    EXPECT_EQ(Ask(UploadRequest()), Outcome(-1, ""));
    EXPECT_THAT(log.TakeErrors(), ElementsAre("on upload record assets failed, no upload asset call back function"));
    EXPECT_EQ(Asked("GetCloudAppInfo"), 0U);
}

TEST_F(CallbackUploadTest, ANamelessProcessPrefersTheCallback)
{
    const NamelessProcess nameless;
    NubisTest::LogCapture log;
    EXPECT_EQ(Ask(UploadRequest()), Outcome(0, "null"));
    EXPECT_THAT(log.TakeErrors(), ElementsAre("on upload record assets processName is empty"));
    kit_->SetUploadAssetCallBack("com.example.other", ServeAny);
    EXPECT_EQ(Ask(UploadRequest()), Outcome(0, "served"));
    EXPECT_THAT(log.TakeErrors(), Contains("on upload record assets processName is empty"));
}

TEST_F(CallbackUploadTest, ProgressIsDeliveredWhileTheCallbackRuns)
{
    NubisTest::LogCapture log;
    for (const char *taskId : {"mine", "pt"}) {
        NBDatabase::AddProgressCallBack(taskId, nullptr, nullptr, std::make_shared<NBProgressMap>());
    }
    std::vector<std::string> meanwhile;
    Serve([&](auto &...) {
        meanwhile = log.Take(LOG_DEBUG);
        return 0;
    });
    Ask(UploadRequest(R"({"taskId": "mine", "traceId": "t", "prepareTraceId": "p"})"));
    EXPECT_THAT(meanwhile, ElementsAre("enable progress callback, taskid:mine"));
    EXPECT_THAT(log.Take(LOG_DEBUG), ElementsAre("disable progress callback, taskid:mine, count:0"));

    Serve([&](auto &...) -> int {
        meanwhile = log.Take(LOG_DEBUG);
        throw std::runtime_error("no disk");
    });
    EXPECT_EQ(Ask(UploadRequest(R"({"traceId": "t", "prepareTraceId": "p"})")).first, -1);
    EXPECT_THAT(meanwhile, ElementsAre("enable progress callback, taskid:pt"));
    EXPECT_TRUE(log.WaitFor("disable progress callback, taskid:pt, count:0"));
    EXPECT_THAT(
        log.TakeErrors(), ElementsAre("handle remote request failed, function [onUploadRecordAssets] threw:no disk"));
    Serve([](auto &...) -> int { throw 5; });
    EXPECT_EQ(Ask(UploadRequest()).first, -1);
}

TEST_F(CallbackUploadTest, TheCallbackMayBlockAndReplaceItself)
{
    Serve([this](const std::string &, std::string &reply) {
        const auto container = kit_->GetContainer(BUNDLE, "main");
        Serve(nullptr);
        std::promise<int> saved;
        container->GetPrivateDatabase()->SaveRecords(nullptr, {}, NB_SAVE_OVERWRITE,
            [&saved](auto, auto, auto, const NBError &error) { saved.set_value(error.GetLocalErrorCode()); });
        reply = "saved " + std::to_string(saved.get_future().get());
        return 0;
    });
    // As the service does it: while it serves a request of this very user.
    service_->AnswerWith("modifyRecords", [this](const Json::Value &) {
        const auto callback = service_->WaitFor("modifyRecords", 1)[0].callback;
        Json::Value answer;
        answer["uploaded"] = FakeDriveService::CallBack(callback, UploadRequest());
        return JsonText(answer);
    });
    Json::Value reply;
    EXPECT_FALSE(kit_->SendDataToCloudSrv(ParseJson(R"({"function": "modifyRecords"})"), reply, 60).HasError());
    EXPECT_EQ(reply["uploaded"], "saved 0");
    EXPECT_EQ(Ask(UploadRequest()).first, -1);
}
} // namespace
