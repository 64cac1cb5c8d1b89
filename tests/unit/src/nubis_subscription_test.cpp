// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kit_fixture.h"
#include "log_capture.h"
#include "nb_context.h"

namespace {
using namespace Nubis;
using NubisTest::BUNDLE;
using NubisTest::JsonText;
using NubisTest::ParseJson;
using testing::ElementsAre;

class SubscriptionTest : public NubisTest::KitTest {
protected:
    SubscriptionTest() : container_(std::make_shared<NBContainer>(BUNDLE, "main", kit_, 1))
    {
        kit_->GetUserInfoFromJson(ParseJson(R"({"userInfo": {"pushKeyId": "key-7"}})"), userInfo_);
    }

    // The promises are shared, for a second call to end the test program.
    static NBSubscriptionResult Save(const std::shared_ptr<NBContainer> &container)
    {
        NBSubscription subscription{5000000000};
        const auto saved = std::make_shared<std::promise<NBSubscriptionResult>>();
        const auto context = NubisTest::ContextOf("t", "p");
        container->SaveSubscription(
            context, subscription, [=](auto handedBack, auto asked, NBSubscriptionResult &result) {
                EXPECT_EQ(handedBack, context);
                EXPECT_EQ(asked, container);
                saved->set_value(result);
            });
        return saved->get_future().get();
    }

    using ErrorCall = void (NBContainer::*)(std::shared_ptr<NBContext>, std::string, NBErrorCallback);

    static NBError Ask(NBContainer &container, ErrorCall call, const std::shared_ptr<NBContext> &context = nullptr)
    {
        const auto answered = std::make_shared<std::promise<NBError>>();
        (container.*call)(context, "s-1", [=](auto handedBack, const NBError &error) {
            EXPECT_EQ(handedBack, context);
            answered->set_value(error);
        });
        return answered->get_future().get();
    }

    using BatchCall = void (NubisNative::*)(
        std::shared_ptr<NBContext>, std::vector<NBContainerSubscription> &, NBBatchSubscriptionCallback);
    using BatchOutcome = std::pair<std::vector<NBContainerSubscriptionResult>, NBError>;

    BatchOutcome Batch(BatchCall call)
    {
        std::vector<NBContainerSubscription> subscriptions{{BUNDLE, "main", "i1", 1}, {"b", "c", "i2", -5000000000}};
        const auto answered = std::make_shared<std::promise<BatchOutcome>>();
        (kit_.get()->*call)(nullptr, subscriptions, [=](auto, const auto &results, const NBError &error) {
            answered->set_value({results, error});
        });
        return answered->get_future().get();
    }

    NBUserInfo userInfo_;
    std::shared_ptr<NBContainer> container_;
};

TEST_F(SubscriptionTest, SavingSaysWhereAndHowToNotify)
{
    service_->Answer("saveSubscription", R"({"id": "s-1", "expirationTime": 4999999999})");
    NBSubscriptionResult result = Save(container_);
    EXPECT_FALSE(result.error.HasError());
    EXPECT_EQ(result.id, "s-1");
    EXPECT_EQ(result.expirationTime, 4999999999);
    Json::Value expected = ParseJson(R"({"bundleName": "com.example.notes", "containerName": "main",
        "expirationTime": 5000000000, "saName": "cloudFile_notifyDataChange", "signVersion": 2, "keyId": "key-7"})");
    EXPECT_EQ(LastRequest("saveSubscription")["traceId"], "t");
    EXPECT_EQ(LastRequest("saveSubscription")["syncDemon"], "1");
    EXPECT_EQ(OwnMembers("saveSubscription", {"prepareTraceId"}), expected);

    NubisNative::GetInstance(userId_, NB_SYNC_DEMON_NONE);
    service_->Answer("saveSubscription", R"({"id": 5, "expirationTime": "soon"})");
    result = Save(container_);
    EXPECT_FALSE(result.error.HasError());
    EXPECT_EQ(result.id, "");
    EXPECT_EQ(result.expirationTime, 0);
    for (const char *name : {"saName", "signVersion", "keyId"}) {
        expected.removeMember(name);
    }
    EXPECT_EQ(OwnMembers("saveSubscription", {"prepareTraceId"}), expected);

    service_->Answer("saveSubscription", R"({"code": 9, "error": {"description": "no"}, "id": "s-2"})");
    result = Save(container_);
    EXPECT_EQ(result.error.GetServerErrorCode(), 9);
    EXPECT_EQ(result.id, "");
}

TEST_F(SubscriptionTest, DeletingAndAskingForANotificationNameTheSubscription)
{
    const Json::Value expected =
        ParseJson(R"({"bundleName": "com.example.notes", "containerName": "main", "id": "s-1"})");
    for (const auto &[function, call] :
        std::map<std::string, ErrorCall>{
            {"deleteSubscription", &NBContainer::DeleteSubscription}, {"changesNotify", &NBContainer::ChangesNotify}}) {
        for (const int code : {0, 9}) {
            service_->Answer(function, R"({"error": {}, "code": )" + std::to_string(code) + "}");
            EXPECT_EQ(Ask(*container_, call, std::make_shared<NBContext>()).GetServerErrorCode(), code) << function;
        }
        EXPECT_NE(LastRequest(function)["traceId"], "") << "the kit adds one";
        EXPECT_EQ(LastRequest(function)["syncDemon"], "1");
        EXPECT_EQ(OwnMembers(function), expected);
    }
}

TEST_F(SubscriptionTest, AContainerWithoutAKitSendsNothing)
{
    const auto orphan = std::make_shared<NBContainer>(BUNDLE, "main", nullptr, 0);
    NubisTest::LogCapture log;
    EXPECT_EQ(Save(orphan).error.GetLocalErrorCode(), 22);
    EXPECT_THAT(log.TakeErrors(), ElementsAre("save subscription failed, nubis is null"));
    EXPECT_EQ(Ask(*orphan, &NBContainer::DeleteSubscription).GetLocalErrorCode(), 22);
    EXPECT_THAT(log.TakeErrors(), ElementsAre("del subscription failed, nubis is null"));
    EXPECT_EQ(Ask(*orphan, &NBContainer::ChangesNotify).GetLocalErrorCode(), 22);
    EXPECT_THAT(log.TakeErrors(), ElementsAre("change notify failed, nubis is null"));
}

TEST_F(SubscriptionTest, ABatchHasOneResultForEachItem)
{
    service_->Answer("batchSaveSubscription", R"({"subscriptions": [
        {"bundleName": "com.example.notes", "containerName": "main", "id": "i1", "expirationTime": 7},
        {"code": 7, "bundleName": "b", "containerName": "c", "id": "not read"},
        {"code": 8, "error": {"code": 1004, "description": "no such bundle"}}, "text"]})");
    auto [results, error] = Batch(&NubisNative::BatchSaveSubscription);
    EXPECT_FALSE(error.HasError());
    ASSERT_EQ(results.size(), 4u);
    EXPECT_FALSE(results[0].error.HasError());
    EXPECT_EQ(results[0].bundleName + results[0].containerName + results[0].id, "com.example.notesmaini1");
    EXPECT_EQ(results[0].expirationTime, 7);
    EXPECT_EQ(results[1].error.GetLocalErrorCode(), 24);
    EXPECT_EQ(results[1].bundleName + results[1].containerName + results[1].id, "bc");
    EXPECT_EQ(results[2].error.GetServerErrorCode(), 1004);
    EXPECT_FALSE(results[3].error.HasError());
    EXPECT_EQ(OwnMembers("batchSaveSubscription"),
        ParseJson(R"({"subscriptions": [{"bundleName": "com.example.notes", "containerName": "main",
        "expirationTime": 1, "saName": "cloudFile_notifyDataChange", "signVersion": 2, "keyId": "key-7"},
        {"bundleName": "b", "containerName": "c", "expirationTime": -5000000000,
        "saName": "cloudFile_notifyDataChange", "signVersion": 2, "keyId": "key-7"}]})"));

    service_->Answer("batchDeleteSubscription", R"({"subscriptions": []})");
    EXPECT_FALSE(Batch(&NubisNative::BatchDeleteSubscription).second.HasError());
    EXPECT_EQ(OwnMembers("batchDeleteSubscription"), ParseJson(R"({"subscriptions": [
        {"id": "i1", "bundleName": "com.example.notes", "containerName": "main"},
        {"id": "i2", "bundleName": "b", "containerName": "c"}]})"));
}

TEST_F(SubscriptionTest, ABatchReplyWithoutResultsIsAnError)
{
    NubisTest::LogCapture log;
    const auto failure = [&](BatchCall call, const std::string &function, const std::string &reply) {
        service_->Answer(function, reply);
        const auto [results, error] = Batch(call);
        EXPECT_TRUE(results.empty());
        EXPECT_EQ(error.GetLocalErrorCode(), 3);
        return log.TakeErrors();
    };
    for (const char *reply : {"[]", "{}"}) {
        EXPECT_THAT(failure(&NubisNative::BatchSaveSubscription, "batchSaveSubscription", reply),
            ElementsAre("batch save subscription failed, no subscriptions node"));
        EXPECT_THAT(failure(&NubisNative::BatchDeleteSubscription, "batchDeleteSubscription", reply),
            ElementsAre("batch del subscription failed, no subscriptions node"));
    }
    const char *reply = R"({"subscriptions": {}})";
    EXPECT_THAT(failure(&NubisNative::BatchSaveSubscription, "batchSaveSubscription", reply),
        ElementsAre("batch save subscription failed, subscriptions is not array"));
    EXPECT_THAT(failure(&NubisNative::BatchDeleteSubscription, "batchDeleteSubscription", reply),
        ElementsAre("batch del subscription failed, subscriptions is not array"));

    service_->Answer("batchSaveSubscription", R"({"code": 5, "error": {}, "subscriptions": [{}]})");
    const auto [results, error] = Batch(&NubisNative::BatchSaveSubscription);
    EXPECT_TRUE(results.empty());
    EXPECT_EQ(error.GetServerErrorCode(), 5);
}

TEST_F(SubscriptionTest, WhateverTheServiceAnswersTheCallbackComes)
{
    std::vector<Json::Value> replies = NubisTest::HostileJson();
    Json::Value items(Json::arrayValue);
    for (Json::Value &item : NubisTest::SpoilEachMember(ParseJson(
             R"({"code": 7, "error": {}, "bundleName": "b", "containerName": "c", "id": "i", "expirationTime": 1})"))) {
        items.append(std::move(item));
    }
    replies.emplace_back()["subscriptions"] = items;
    for (const Json::Value &reply : replies) {
        service_->Answer("saveSubscription", JsonText(reply));
        service_->Answer("batchSaveSubscription", JsonText(reply));
        Save(container_);
        Batch(&NubisNative::BatchSaveSubscription);
    }
}
} // namespace
