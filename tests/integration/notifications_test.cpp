// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include <json/value.h>

#include "host/event_channel.h"
#include "json_samples.h"
#include "nb_context.h"
#include "note_builder.h"
#include "notes_test.h"

using namespace Nubis;
using namespace NubisTest;
using testing::ElementsAre;

namespace {
constexpr std::chrono::seconds PATIENCE(60);

int64_t NowMs()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

// A client that listens for the notifications of its demon.
class NotificationsTest : public NotesTest {
protected:
    void SetUp() override
    {
        NotesTest::SetUp();
        ASSERT_FALSE(Kit()->GetCloudUserInfo(user_, false).HasError());
        listener_ =
            std::make_unique<Host::EventListener>(100, Kit()->GetCloudSyncSaName(), [this](const std::string &text) {
                std::lock_guard<std::mutex> lock(mutex_);
                heard_.push_back(text);
                changed_.notify_all();
            });
        std::string error;
        ASSERT_TRUE(listener_->Start(error)) << error;
    }

    void TearDown() override
    {
        listener_.reset();
    }

    NBSubscriptionResult Subscribe(int64_t expirationTime)
    {
        auto promise = std::make_shared<std::promise<NBSubscriptionResult>>();
        NBSubscription subscription{expirationTime};
        Container()->SaveSubscription(std::make_shared<NBContext>(), subscription,
            [promise](auto, auto, NBSubscriptionResult &result) { promise->set_value(result); });
        return Outcome(*promise);
    }

    NBError NotifyMe(const std::string &id, const std::string &prepareTraceId = "")
    {
        auto promise = std::make_shared<std::promise<NBError>>();
        auto context = std::make_shared<NBContext>();
        context->SetPrepareTarceId(prepareTraceId);
        Container()->ChangesNotify(context, id, [promise](auto, const NBError &error) { promise->set_value(error); });
        return Outcome(*promise);
    }

    std::vector<NBContainerSubscriptionResult> Batch(
        void (NubisNative::*operation)(
            std::shared_ptr<NBContext>, std::vector<NBContainerSubscription> &, NBBatchSubscriptionCallback),
        std::vector<NBContainerSubscription> items)
    {
        auto promise = std::make_shared<std::promise<std::vector<NBContainerSubscriptionResult>>>();
        (Kit().get()->*operation)(std::make_shared<NBContext>(), items,
            [promise](auto, const std::vector<NBContainerSubscriptionResult> &results, const NBError &error) {
                EXPECT_FALSE(error.HasError());
                promise->set_value(results);
            });
        return Outcome(*promise);
    }

    // The notifications up to one that comes of this user action.
    std::vector<NBRecordChangeEvent> AwaitEvents(const std::string &prepareTraceId)
    {
        std::vector<NBRecordChangeEvent> events;
        for (size_t i = 0; events.empty() || events.back().prepareTraceId != prepareTraceId; ++i) {
            Kit()->ResolveNotificationEvent(Await(i), events.emplace_back());
        }
        return events;
    }

    // The notification of this index.
    std::string Await(size_t index)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!changed_.wait_for(lock, PATIENCE, [&] { return heard_.size() > index; })) {
            throw std::runtime_error("the notification did not come");
        }
        return heard_[index];
    }

    int Verify(const Json::Value &notification)
    {
        return Kit()->VerifyNotificationFromJson(notification).GetLocalErrorCode();
    }

    NBUserInfo user_;

private:
    template <typename Value>
    static Value Outcome(std::promise<Value> &promise)
    {
        auto future = promise.get_future();
        if (future.wait_for(PATIENCE) != std::future_status::ready) {
            throw std::runtime_error("the callback did not come");
        }
        return future.get();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> heard_;
    std::unique_ptr<Host::EventListener> listener_;
};

TEST_F(NotificationsTest, AChangeOfAnotherProcessIsToldAndOnlyItselfVerifies)
{
    const NBSubscriptionResult subscription = Subscribe(NowMs() + 3600000);
    ASSERT_FALSE(subscription.error.HasError()) << subscription.error.GetErrorMsg();
    // What was subscribed outlives the service.
    Service().Kill();
    std::string output;
    ASSERT_EQ(RunCommand(std::string(NUBIS_TEST_BIN) + "/nubis record save --bundle com.example.notes --type note "
                                                       "--new '{\"recordId\": \"n1\", \"title\": \"theirs\"}' 2>&1",
                  output),
        0)
        << output;

    const std::string text = Await(0);
    const Json::Value notification = ParseJson(text);
    EXPECT_EQ(Verify(notification), 0);
    NBRecordChangeEvent event;
    EXPECT_FALSE(Kit()->ResolveNotificationEvent(text, event).HasError());
    EXPECT_EQ(event.accountId, user_.userId);
    EXPECT_EQ(event.bundleName, TEST_BUNDLE);
    EXPECT_EQ(event.containerName, TEST_CONTAINER);
    EXPECT_THAT(event.databaseScopes, ElementsAre(NB_DATABASE_PRIVATE));
    EXPECT_THAT(event.recordTypes, ElementsAre("note"));
    EXPECT_EQ(event.properties["subscriptionId"], subscription.id);

    for (const std::string &name : notification.getMemberNames()) {
        const bool isProtected = name != "x-ov-trace-id";
        Json::Value changed = notification;
        changed[name] = "0" + notification[name].asString();
        EXPECT_EQ(Verify(changed), isProtected ? 24 : 0) << name;
        changed.removeMember(name);
        EXPECT_EQ(Verify(changed) != 0, isProtected) << name;
    }
    ASSERT_FALSE(NotifyMe(subscription.id).HasError());
    Json::Value mixed = ParseJson(Await(1));
    EXPECT_EQ(Verify(mixed), 0);
    mixed["data"] = notification["data"];
    EXPECT_EQ(Verify(mixed), 24);
}

TEST_F(NotificationsTest, ABatchAnswersEachItemForItself)
{
    const int64_t expirationTime = NowMs() + 3600000;
    const auto saved = Batch(&NubisNative::BatchSaveSubscription,
        {{TEST_BUNDLE, TEST_CONTAINER, "", expirationTime}, {TEST_BUNDLE, "nowhere", "", expirationTime}});
    ASSERT_EQ(saved.size(), 2U);
    EXPECT_FALSE(saved[0].error.HasError());
    EXPECT_EQ(saved[0].expirationTime, expirationTime);
    EXPECT_TRUE(saved[1].error.IsServerError());
    EXPECT_EQ(saved[1].containerName, "nowhere");

    const auto deleted = Batch(&NubisNative::BatchDeleteSubscription,
        {{TEST_BUNDLE, TEST_CONTAINER, "nobody's", 0}, {TEST_BUNDLE, TEST_CONTAINER, saved[0].id, 0}});
    ASSERT_EQ(deleted.size(), 2U);
    EXPECT_EQ(deleted[0].error.GetServerErrorCode(), 1013);
    EXPECT_FALSE(deleted[1].error.HasError());
    EXPECT_EQ(NotifyMe(saved[0].id).GetServerErrorCode(), 1013);
}

TEST_F(NotificationsTest, ASubscriptionThatHasExpiredIsOver)
{
    EXPECT_EQ(Subscribe(NowMs() - 1).error.GetServerErrorCode(), 1003);
    const NBSubscriptionResult brief = Subscribe(NowMs() + 300);
    ASSERT_FALSE(brief.error.HasError());
    NBError error;
    const auto end = std::chrono::steady_clock::now() + PATIENCE;
    while (!error.HasError() && std::chrono::steady_clock::now() < end) {
        error = NotifyMe(brief.id);
    }
    EXPECT_EQ(error.GetServerErrorCode(), 1013);
    EXPECT_TRUE(AllSaved(Save(Database(), {Note("unheard").Id("n1")})));

    ASSERT_FALSE(NotifyMe(Subscribe(NowMs() + 3600000).id, "last").HasError());
    for (const NBRecordChangeEvent &event : AwaitEvents("last")) {
        EXPECT_THAT(event.databaseScopes, ElementsAre(NB_DATABASE_PRIVATE, NB_DATABASE_SHARED)) << "asked for";
    }
}
} // namespace
