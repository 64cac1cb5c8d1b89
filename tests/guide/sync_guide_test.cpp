// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// What docs/guide shows of subscriptions, locks and errors; a region between two marks of a name is a snippet of it.

#include <chrono>
#include <future>
#include <memory>
#include <sstream>
#include <string>

#include <json/json.h>

#include "host/event_channel.h"
#include "note_builder.h"
#include "notes_test.h"
#include "nubis_async.h"

using namespace Nubis;
using NubisTest::AllSaved;
using NubisTest::Note;

namespace {
constexpr std::chrono::seconds PATIENCE(60);

//! [explain]
// What went wrong, in one line; empty for a success.
std::string Explain(const NBError &error)
{
    if (error.IsLocalError()) {
        return "local error " + std::to_string(error.GetLocalErrorCode());
    }
    if (!error.IsServerError()) {
        return "";
    }
    std::string text = std::to_string(error.GetServerErrorCode()) + ": " + error.GetErrorMsg();
    for (const NBErrorDetail &detail : error.GetErrorDetails()) {
        text += " (" + detail.reason + " at " + detail.errorPos + ")";
    }
    return text;
}
//! [explain]

using SyncGuide = NubisTest::NotesTest;

TEST_F(SyncGuide, ChangesAreToldAndVerified)
{
    auto kit = Kit();
    auto container = Container();
    auto told = std::make_shared<std::promise<NBRecordChangeEvent>>();
    //! [listen]
    NBUserInfo user;
    kit->GetCloudUserInfo(user, false); // fetches the push key; notifications are verified with it

    Host::EventListener listener(100, kit->GetCloudSyncSaName(), [kit, told](const std::string &text) {
        Json::Value notification;
        std::string problem;
        std::istringstream stream(text);
        if (!Json::parseFromStream(Json::CharReaderBuilder(), stream, &notification, &problem) ||
            kit->VerifyNotificationFromJson(notification).HasError()) {
            return; // nobody who may tell us anything
        }
        NBRecordChangeEvent event;
        kit->ResolveNotificationEvent(text, event);
        told->set_value(event);
    });
    std::string error;
    const bool isListening = listener.Start(error);
    //! [listen]
    ASSERT_TRUE(isListening) << error;
    //! [subscribe]
    NBSubscription wanted;
    wanted.expirationTime = 0; // as long as the service grants
    NBSubscriptionResult subscription = Async::SaveSubscription(container, wanted).Start().get();
    //! [subscribe]
    ASSERT_EQ(Explain(subscription.error), "");

    ASSERT_TRUE(AllSaved(NubisTest::Save(Database(), {Note("a").Id("n1")})));
    auto event = told->get_future();
    ASSERT_EQ(event.wait_for(PATIENCE), std::future_status::ready);
    EXPECT_EQ(event.get().recordTypes, std::vector<std::string>{"note"});
}

TEST_F(SyncGuide, ALockIsHeldForAWhile)
{
    auto database = Database();
    auto copyHere = [&] { ASSERT_TRUE(AllSaved(NubisTest::Save(database, {Note("a").Id("n1")}))); };
    //! [lock]
    NBLock lock;
    NBError error = database->GetLock(lock);
    if (!error.HasError()) {
        // From here on others are refused. Renew in time: GetLock with the same `lock`, within lock.lockInterval seconds.
        copyHere();
        error = database->DeleteLock(lock);
    }
    //! [lock]
    EXPECT_EQ(Explain(error), "");
    EXPECT_EQ(database->GetLockSessionId(), "");
    NBLock unknown{0, "nobody's"};
    EXPECT_EQ(Explain(database->DeleteLock(unknown)), "");
    ASSERT_FALSE(database->GetLock(lock).HasError());
    EXPECT_EQ(Explain(Container()->GetSharedDatabase()->GetLock(unknown)).substr(0, 5), "1012:");
}
} // namespace
