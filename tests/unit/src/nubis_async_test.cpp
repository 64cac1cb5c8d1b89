// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nubis_async.h"

#include <chrono>
#include <exception>
#include <future>
#include <set>
#include <system_error>

#include <gtest/gtest.h>

#include "kit_fixture.h"

namespace {
using namespace Nubis;
using NubisTest::Note;
constexpr std::chrono::seconds PATIENCE(60);

// A coroutine that starts at once and that nobody waits for.
struct Detached {
    struct promise_type {
        Detached get_return_object()
        {
            return {};
        }
        std::suspend_never initial_suspend() noexcept
        {
            return {};
        }
        std::suspend_never final_suspend() noexcept
        {
            return {};
        }
        void return_void()
        {}
        void unhandled_exception()
        {
            std::terminate();
        }
    };
};

class AsyncTest : public NubisTest::DatabaseTest {};

struct Story {
    Async::RecordsResult refused;
    Async::RecordsResult saved;
    Async::FetchResult fetched;
    Async::ChangesResult changes;
    Async::SubscriptionResult subscribed;
    Async::BatchSubscriptionResult unsubscribed;
    Async::DoneResult notified;
};

// Everything lives in the frame of the coroutine, which ends on a worker of the library.
Detached Tell(std::shared_ptr<NBContainer> container, std::promise<Story> &told)
{
    auto database = container->GetPrivateDatabase();
    Story story;
    const std::vector<NBRecord> nameless{Note("no id").AsNew()};
    story.refused = co_await Async::SaveRecords(database, nameless, NB_SAVE_OVERWRITE);
    //! [coroutine]
    const std::vector<NBRecord> notes{Note("a").Id("n1")};
    const std::vector<std::string> wanted{"title", "stars"};
    story.saved = co_await Async::SaveRecords(database, notes, NB_SAVE_OVERWRITE);
    story.fetched = co_await Async::FetchRecordWithId(database, "note", "n1", wanted);
    //! [coroutine]
    const std::vector<NBContainerSubscription> ended{{"b", "c", "s1", 0}};
    story.changes = co_await Async::FetchDatabaseChanges(database, "", {}, 10, "");
    story.subscribed = co_await Async::SaveSubscription(container, {5000});
    story.unsubscribed = co_await Async::BatchDeleteSubscription(container->GetNubis(), ended);
    story.notified = co_await Async::ChangesNotify(container, "s1");
    told.set_value(std::move(story));
}

TEST_F(AsyncTest, ACoroutineGetsEachOutcomeInTurn)
{
    service_->Answer(
        "saveRecords", R"({"records": [{"code": 0, "recordId": "n1", "recordType": "note", "version": 3}]})");
    service_->Answer("fetchRecordWithId", R"({"code": 0, "recordId": "n1", "recordType": "note", "version": 4})");
    service_->Answer("fetchDatabaseChanges", R"({"changes": [], "nextCursor": "c2"})");
    service_->Answer("saveSubscription", R"({"id": "s1", "expirationTime": 4000})");
    service_->Answer("batchDeleteSubscription", R"({"subscriptions": [{"id": "s1", "code": 0}]})");
    service_->Answer("changesNotify", R"({"code": 1013, "error": {"code": 1013, "description": "unknown"}})");
    SetRules();
    std::promise<Story> told;
    Tell(container_, told);
    auto future = told.get_future();
    ASSERT_EQ(future.wait_for(PATIENCE), std::future_status::ready);
    const Story story = future.get();
    EXPECT_EQ(story.refused.error.GetLocalErrorCode(), NB_LOCAL_EMPTY_REPLY);
    EXPECT_FALSE(story.saved.error.HasError());
    EXPECT_EQ(story.saved.results.at("n1").GetRecord().GetVersion(), 3U);
    EXPECT_EQ(story.fetched.recordId, "n1");
    EXPECT_EQ(story.fetched.record.GetVersion(), 4U);
    EXPECT_EQ(story.changes.cursor, "c2");
    EXPECT_TRUE(story.changes.hasMore);
    EXPECT_EQ(story.subscribed.id, "s1");
    EXPECT_EQ(story.unsubscribed.results.size(), 1U);
    EXPECT_EQ(story.notified.error.GetServerErrorCode(), 1013);
}

TEST_F(AsyncTest, RefusedOperationsComeToTheSameEnd)
{
    SetRules();
    size_t called = 0;
    Async::SaveRecord(database_, Note("no id").AsNew(), NB_SAVE_OVERWRITE).Then([&called](Async::RecordResult result) {
        ++called;
        EXPECT_EQ(result.error.GetLocalErrorCode(), NB_LOCAL_EMPTY_REPLY);
    });
    EXPECT_EQ(called, 1U);
    EXPECT_EQ(Asked("saveRecords"), 0U);
    auto nowhere = Async::FetchRecords(nullptr, "note", {}, 10, "").Start();
    ASSERT_EQ(nowhere.wait_for(PATIENCE), std::future_status::ready);
    EXPECT_EQ(nowhere.get().error.GetLocalErrorCode(), NB_LOCAL_EMPTY_REPLY);
    // Nobody listens, and nobody minds.
    Async::DeleteRecords(database_, {}, NB_SAVE_OVERWRITE).Then(nullptr);
}

TEST(ErrorCodeTest, EveryErrorIsAStandardOne)
{
    EXPECT_FALSE(ToErrorCode({}));
    const std::error_code local = ToErrorCode(NBError(NB_LOCAL_NOT_CONNECTED));
    EXPECT_EQ(local, NB_LOCAL_NOT_CONNECTED);
    EXPECT_EQ(local, std::errc::not_connected);
    EXPECT_NE(local, std::error_code(1, ServiceErrorCategory()));
    EXPECT_EQ(local.message(), "there is no connection to the cloud-drive service");
    NBError error;
    error.SetServerError(1013);
    EXPECT_EQ(ToErrorCode(error), std::error_code(1013, ServiceErrorCategory()));
    error.SetServerError(0);
    EXPECT_EQ(ToErrorCode(error), NB_LOCAL_UNEXPECTED_REPLY);
    error.SetLocalError(NB_LOCAL_BAD_DATA);
    EXPECT_EQ(ToErrorCode(error), NB_LOCAL_BAD_DATA);
    std::set<std::string> messages;
    for (const int code : {0, 1, 2, 3, 11, 22, 23, 24}) {
        messages.insert(LocalErrorCategory().message(code));
    }
    EXPECT_EQ(messages.size(), 8U);
}
} // namespace
