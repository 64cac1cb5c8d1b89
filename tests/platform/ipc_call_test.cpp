// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <cstring>
#include <malloc.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "ipc_test_support.h"

using namespace IpcTest;
using OHOS::IRemoteObject;
using OHOS::MessageOption;
using OHOS::MessageParcel;
using OHOS::sptr;

namespace {

class IpcCallTest : public PlacesTest {};

std::vector<uint8_t> Pattern(size_t size)
{
    std::vector<uint8_t> bytes(size);
    for (size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<uint8_t>(i * 31 + (i >> 13));
    }
    return bytes;
}

bool WriteEverything(MessageParcel &parcel, const std::vector<uint8_t> &block, const sptr<IRemoteObject> &object)
{
    bool written = parcel.WriteInterfaceToken(u"test.token") && parcel.WriteInt32(-5) && parcel.WriteInt64(1LL << 40) &&
                   parcel.WriteBool(true) && parcel.WriteString(std::string("a\0b", 3)) &&
                   parcel.WriteString16(u"h\u00e9") && parcel.WriteInt32(static_cast<int32_t>(block.size())) &&
                   (block.empty() || parcel.WriteRawData(block.data(), block.size())) &&
                   parcel.WriteRemoteObject(object);
    return written && !parcel.WriteRemoteObject(nullptr);
}

void ExpectEverything(MessageParcel &parcel, const std::vector<uint8_t> &block, const sptr<IRemoteObject> &object)
{
    EXPECT_EQ(parcel.ReadRemoteObject(), nullptr);
    EXPECT_EQ(parcel.ReadInterfaceToken(), u"test.token");
    EXPECT_EQ(parcel.GetInterfaceToken(), u"test.token");
    EXPECT_EQ(parcel.ReadInt32(), -5);
    EXPECT_EQ(parcel.ReadInt64(), 1LL << 40);
    EXPECT_TRUE(parcel.ReadBool());
    EXPECT_EQ(parcel.ReadString(), std::string("a\0b", 3));
    EXPECT_EQ(parcel.ReadString16(), u"h\u00e9");
    ASSERT_EQ(parcel.ReadInt32(), static_cast<int32_t>(block.size()));
    if (!block.empty()) {
        const void *data = parcel.ReadRawData(block.size());
        ASSERT_NE(data, nullptr);
        EXPECT_EQ(memcmp(data, block.data(), block.size()), 0);
        EXPECT_EQ(parcel.GetRawData(), data);
        EXPECT_EQ(parcel.GetRawDataSize(), block.size());
    }
    EXPECT_EQ(parcel.ReadRemoteObject(), object);
    EXPECT_EQ(parcel.ReadRemoteObject(), nullptr);
    EXPECT_EQ(parcel.GetReadableBytes(), 0U);
}

// Everything, there and back.
void ExpectEcho(
    const sptr<IRemoteObject> &ability, const std::vector<uint8_t> &block, const sptr<IRemoteObject> &object)
{
    MessageParcel reply;
    const auto write = [&](MessageParcel &data) { EXPECT_TRUE(WriteEverything(data, block, object)); };
    ASSERT_EQ(Call(ability, ECHO, write, reply), 0);
    ExpectEverything(reply, block, object);
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Places, IpcCallTest, testing::Values(Place::THIS_PROCESS, Place::OTHER_PROCESS), NameOf);

TEST_P(IpcCallTest, ParcelsArriveAsWritten)
{
    EXPECT_TRUE(ability_->IsProxyObject());
    EXPECT_EQ(ability_->GetObjectDescriptor(), u"test.ITestAbility");
    constexpr size_t inlineLimit = 32 * 1024;
    for (size_t size : {size_t(0), size_t(1), inlineLimit, inlineLimit + 1, size_t(70000), size_t(128) << 20}) {
        SCOPED_TRACE(size);
        ExpectEcho(ability_, Pattern(size), new TestAbility());
    }
}

TEST_P(IpcCallTest, ResultReachesTheCallerOnlyWithoutReplyData)
{
    auto result = [this](int32_t value, bool withData) {
        return Call(ability_, RESULT, [=](MessageParcel &data) {
            data.WriteInt32(value);
            data.WriteBool(withData);
        });
    };
    EXPECT_EQ(result(1234, false), 1234);
    EXPECT_EQ(result(-7, false), -7);
    EXPECT_EQ(result(1234, true), 0);
    EXPECT_EQ(Call(ability_, 9999), 305);
}

TEST_P(IpcCallTest, ObjectsKeepTheirIdentity)
{
    sptr<IRemoteObject> mine = new TestAbility();
    sptr<IRemoteObject> made = Make(ability_);
    ASSERT_NE(made, nullptr);
    // Its own object, sent back: the service gives the same one, and so do we get the same proxy.
    for (const auto &object : {mine, made, ability_}) {
        Keep(ability_, "name", object);
        EXPECT_EQ(Give(ability_, "name"), object);
    }
    // An ability that keeps itself would never end.
    Keep(ability_, "name", nullptr);
    EXPECT_EQ(Give(ability_, "name"), nullptr);
}

TEST_P(IpcCallTest, BigParcelsCarryObjectsOfTheSmallLane)
{
    // The object is known from a small parcel; the large ones travel on another connection.
    sptr<IRemoteObject> object = Make(ability_);
    std::vector<uint8_t> block = Pattern(100000);
    ExpectEcho(ability_, block, object);
    ExpectEcho(ability_, block, new TestAbility());
    // A call to that object takes the other lane when it is large.
    EXPECT_EQ(Call(object, 5, [&](MessageParcel &data) { data.WriteRawData(block.data(), block.size()); }), 305);
}

TEST_P(IpcCallTest, ObjectsLiveWhileTheFarSideHoldsThem)
{
    int32_t before = CallForInt(ability_, COUNT);
    {
        // The one without a reader ends with its parcel.
        MessageParcel unread;
        ASSERT_EQ(Call(ability_, MAKE, {}, unread), 0);
        sptr<IRemoteObject> kept = Make(ability_);
        EXPECT_EQ(CallForInt(ability_, COUNT), before + 2);
    }
    EXPECT_TRUE(Await([&] { return CallForInt(ability_, COUNT) == before; }));

    sptr<IRemoteObject> object = new TestAbility();
    OHOS::wptr<IRemoteObject> weak = object;
    Keep(ability_, "name", object);
    object = nullptr;
    EXPECT_NE(weak.promote(), nullptr);
    Keep(ability_, "name", nullptr);
    EXPECT_TRUE(Await([&] { return weak.promote() == nullptr; }));
}

TEST_P(IpcCallTest, NestedCallsRunWhileTheOuterOneWaits)
{
    MessageParcel reply;
    sptr<IRemoteObject> mine = new TestAbility();
    const auto write = [&](MessageParcel &data) {
        data.WriteRemoteObject(mine);
        data.WriteInt32(5);
    };
    ASSERT_EQ(Call(ability_, CALL_BACK, write, reply), 0);
    EXPECT_EQ(reply.ReadInt32(), 5 + 4 + 3 + 2 + 1);
}

TEST_P(IpcCallTest, ManyThreadsCallBesideLargeParcels)
{
    constexpr int threads = 12;
    constexpr int rounds = 40;
    std::vector<uint8_t> block = Pattern(16 << 20);
    std::atomic<bool> done{false};
    std::thread large([&] {
        do {
            ExpectEcho(ability_, block, ability_);
        } while (!done);
    });
    std::vector<std::thread> callers;
    std::atomic<int> good{0};
    for (int i = 0; i < threads; ++i) {
        callers.emplace_back([&, i] {
            for (int round = 0; round < rounds; ++round) {
                int32_t value = i * rounds + round + 1;
                good += Call(ability_, RESULT, [=](MessageParcel &data) { data.WriteInt32(value); }) == value ? 1 : 0;
            }
        });
    }
    for (auto &caller : callers) {
        caller.join();
    }
    done = true;
    large.join();
    EXPECT_EQ(good, threads * rounds);
}

TEST_P(IpcCallTest, LargeBlocksAreGivenBackOnceSent)
{
    constexpr size_t size = size_t{4} << 20;
    auto inUse = [] {
        struct mallinfo2 info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    std::vector<uint8_t> block = Pattern(size);
    size_t before = inUse();
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(Call(ability_, 9999, [&](MessageParcel &data) { data.WriteRawData(block.data(), size); }), 305);
    }
    // Some of the last ones may still be on the way.
    EXPECT_LT(inUse(), before + 8 * size);
}

TEST_P(IpcCallTest, BlockedHandlersDoNotHoldUpOthers)
{
    constexpr int blocked = 40;
    std::vector<std::thread> waiting;
    std::atomic<int> good{0};
    for (int i = 0; i < blocked; ++i) {
        waiting.emplace_back(
            [&] { good += Call(ability_, BLOCK, [](MessageParcel &data) { data.WriteString("gate"); }) == 0 ? 1 : 0; });
    }
    EXPECT_EQ(Call(ability_, AWAIT_BLOCKED, [](MessageParcel &data) { data.WriteInt32(blocked); }), 0);
    EXPECT_EQ(Call(ability_, UNBLOCK, [](MessageParcel &data) { data.WriteString("gate"); }), 0);
    for (auto &thread : waiting) {
        thread.join();
    }
    EXPECT_EQ(good, blocked);
}

TEST_P(IpcCallTest, AsynchronousRequestsDoNotWait)
{
    MessageParcel data;
    MessageParcel reply;
    MessageOption option(MessageOption::TF_ASYNC);
    data.WriteString("async");
    EXPECT_EQ(ability_->SendRequest(BLOCK, data, reply, option), 0);
    EXPECT_EQ(Call(ability_, AWAIT_BLOCKED, [](MessageParcel &parcel) { parcel.WriteInt32(1); }), 0);
    EXPECT_EQ(Call(ability_, UNBLOCK, [](MessageParcel &parcel) { parcel.WriteString("async"); }), 0);
    EXPECT_EQ(Call(ability_, AWAIT_BLOCKED, [](MessageParcel &parcel) { parcel.WriteInt32(0); }), 0);
}

TEST_P(IpcCallTest, HandlersKnowTheirCaller)
{
    MessageParcel reply;
    ASSERT_EQ(Call(ability_, WHO, {}, reply), 0);
    EXPECT_EQ(reply.ReadInt32(), getpid());
    EXPECT_EQ(reply.ReadInt32(), static_cast<int>(geteuid()));
    EXPECT_EQ(reply.ReadString(), "test-device");
    EXPECT_EQ(reply.ReadInt32() == getpid(), GetParam() == Place::THIS_PROCESS);
}

TEST_P(IpcCallTest, FileDescriptorsTravel)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    MessageParcel reply;
    const auto write = [&](MessageParcel &data) { EXPECT_TRUE(data.WriteFileDescriptor(ends[1])); };
    ASSERT_EQ(Call(ability_, WRITE_TO, write, reply), 0);
    close(ends[1]);
    EXPECT_TRUE(reply.ReadBool());
    char text[8] = {};
    // The end of the pipe shows that no copy of the writing end stays open.
    EXPECT_EQ(read(ends[0], text, sizeof(text)), 5);
    EXPECT_STREQ(text, "hello");
    EXPECT_EQ(read(ends[0], text, sizeof(text)), 0);
    close(ends[0]);
}
