// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// What docs/guide shows of the host layer; a region between two marks of a name is a snippet of it.

#include <chrono>
#include <memory>
#include <string>

#include "ffrt.h"
#include "host/ability_registry.h"
#include "host/faults.h"
#include "host/manual_clock.h"
#include "ipc_object_stub.h"
#include "message_option.h"
#include "message_parcel.h"
#include "note_builder.h"
#include "notes_test.h"

using namespace Nubis;
using NubisTest::Note;

namespace {
//! [service]
// A sync service that knows one user and nothing else.
class TinyService : public OHOS::IPCObjectStub {
public:
    int OnRemoteRequest(
        uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option) override
    {
        constexpr uint32_t SYNC_REQUEST = 3;
        if (code != SYNC_REQUEST || data.ReadInterfaceToken() != u"OHOS.Aerostash.DriveServiceAbility") {
            return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
        }
        const int32_t length = data.ReadInt32();
        const void *bytes = length > 0 ? data.ReadRawData(static_cast<size_t>(length)) : nullptr;
        const std::string request = bytes == nullptr ? "" : std::string(static_cast<const char *>(bytes), length);
        const std::string answer = request.find("\"GetCloudUserInfo\"") == std::string::npos
                                       ? R"({"code": 0})"
                                       : R"({"code": 0, "userInfo": {"userId": "tester", "cloudStatus": 1}})";
        reply.WriteInt32(0);
        reply.WriteInt32(static_cast<int32_t>(answer.size()));
        reply.WriteRawData(answer.data(), answer.size());
        return 0;
    }
};
//! [service]

TEST(HostGuide, AServiceInTheProcessIsFoundBeforeAnyOther)
{
    constexpr int USER = 101;
    //! [offer]
    // Before the first kit of the user, or that has started the service of the machine already.
    Host::AbilityRegistry::Offer("com.orvane.tyra.aerostash", "DriveServiceAbility", USER, new TinyService);

    NBUserInfo user;
    NBError error = NubisNative::GetInstance(USER)->GetCloudUserInfo(user, false);
    //! [offer]
    EXPECT_FALSE(error.HasError());
    EXPECT_EQ(user.userId, "tester");
}

TEST(HostGuide, AMinuteTakesNoTime)
{
    bool hasRung = false;
    //! [clock]
    Host::ManualClock clock;
    ffrt::submit([&hasRung] {
        ffrt::this_task::sleep_for(std::chrono::minutes(1));
        hasRung = true;
    });
    clock.Advance(std::chrono::seconds(59));
    const bool tooEarly = hasRung;
    clock.Advance(std::chrono::seconds(1)); // returns when all that is due has run
    //! [clock]
    EXPECT_FALSE(tooEarly);
    EXPECT_TRUE(hasRung);
}

using FaultGuide = NubisTest::NotesTest;

TEST_F(FaultGuide, ALostReplyLeavesOpenWhatWasDone)
{
    auto database = Database();
    auto save = [&database] {
        //! [faults]
        Host::FaultPlan plan;
        plan.lostReply = 1000; // of a thousand
        Host::FaultScope faults(plan);
        return NubisTest::Save(database, {Note("a").Id("n1")});
        //! [faults]
    };
    auto saved = save();
    EXPECT_EQ(saved.error.GetLocalErrorCode(), NB_LOCAL_IPC_FAILED);
    // What was lost may have been the word that the request came; the service is at it yet then.
    std::string title;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (title.empty() && std::chrono::steady_clock::now() < end) {
        title = NubisTest::TitleOf(NubisTest::FetchById(database, "note", "n1").record);
    }
    EXPECT_EQ(title, "a");
}
} // namespace
