// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <functional>
#include <iterator>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "ipc_test_ability.h"
#include "message_option.h"
#include "message_parcel.h"

using OHOS::MessageOption;
using OHOS::MessageParcel;
using OHOS::sptr;

TEST(MessageParcelTest, RawDataFollowsItsRules)
{
    constexpr size_t inlineLimit = 32 * 1024;
    constexpr size_t largest = 128 * 1024 * 1024;
    std::vector<uint8_t> bytes(largest + 1, 7);
    MessageParcel parcel;
    EXPECT_FALSE(parcel.WriteRawData(nullptr, 5) || parcel.WriteRawData(bytes.data(), 0));
    EXPECT_FALSE(parcel.WriteRawData(bytes.data(), largest + 1));
    EXPECT_EQ(parcel.GetRawData(), nullptr);
    EXPECT_EQ(parcel.GetRawDataCapacity(), largest);
    // Small blocks lie among the values, as often as there is room.
    for (int i = 0; i < 6; ++i) {
        EXPECT_TRUE(parcel.WriteRawData(bytes.data(), inlineLimit));
    }
    EXPECT_FALSE(parcel.WriteRawData(bytes.data(), inlineLimit));
    EXPECT_EQ(parcel.GetDataSize(), 6 * (inlineLimit + 4));
    // One large block, and then none at all.
    EXPECT_TRUE(parcel.WriteRawData(bytes.data(), largest));
    EXPECT_EQ(parcel.GetDataSize(), 6 * (inlineLimit + 4) + 4);
    EXPECT_FALSE(parcel.WriteRawData(bytes.data(), 1) || parcel.WriteRawData(bytes.data(), inlineLimit + 1));
    EXPECT_NE(parcel.ReadRawData(inlineLimit), nullptr);
    EXPECT_EQ(parcel.ReadRawData(inlineLimit - 1), nullptr);
    EXPECT_EQ(parcel.ReadRawData(0), nullptr);
    ASSERT_TRUE(parcel.RewindRead(6 * (inlineLimit + 4)));
    EXPECT_NE(parcel.ReadRawData(largest), nullptr);
    EXPECT_EQ(parcel.GetRawDataSize(), largest);
    EXPECT_EQ(parcel.ReadRawData(5), nullptr);
}

TEST(MessageParcelTest, TokensHaveTheirForm)
{
    MessageParcel parcel;
    ASSERT_TRUE(parcel.WriteInterfaceToken(u"abc"));
    EXPECT_EQ(parcel.ReadInt32(), 0x100);
    EXPECT_EQ(parcel.ReadInt32(), 0);
    EXPECT_EQ(parcel.ReadString16(), u"abc");
    MessageParcel other;
    other.WriteInt32(5);
    EXPECT_EQ(other.ReadInterfaceToken(), u"");
    EXPECT_EQ(other.GetInterfaceToken(), u"");
}

TEST(MessageParcelTest, ObjectsAndDescriptorsStandAtTheirPlace)
{
    MessageParcel parcel;
    sptr<OHOS::IRemoteObject> object = new IpcTest::TestAbility();
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_FALSE(parcel.WriteRemoteObject(nullptr));
    EXPECT_FALSE(parcel.WriteFileDescriptor(-1));
    EXPECT_EQ(parcel.GetDataSize(), 0U);
    EXPECT_TRUE(object->Marshalling(parcel));
    EXPECT_TRUE(parcel.WriteInt32(77));
    EXPECT_TRUE(parcel.WriteFileDescriptor(ends[0]));
    EXPECT_EQ(parcel.ReadFileDescriptor(), -1);
    EXPECT_EQ(OHOS::IRemoteObject::Unmarshalling(parcel), object);
    EXPECT_EQ(parcel.ReadRemoteObject(), nullptr);
    EXPECT_EQ(parcel.ReadInt32(), 77);
    int copy = parcel.ReadFileDescriptor();
    EXPECT_GE(copy, 0);
    EXPECT_NE(copy, ends[0]);
    for (int fd : {copy, ends[0], ends[1]}) {
        EXPECT_EQ(close(fd), 0);
    }
    // What is written over an object takes its place.
    ASSERT_TRUE(parcel.RewindWrite(0));
    EXPECT_TRUE(parcel.WriteInt64(5));
    ASSERT_TRUE(parcel.RewindRead(0));
    EXPECT_EQ(parcel.ReadRemoteObject(), nullptr);
    EXPECT_EQ(parcel.ReadInt64(), 5);
}

TEST(MessageOptionTest, FlagsAddUpAndWaitTimesAreBounded)
{
    MessageOption option;
    option.SetFlags(MessageOption::TF_ASYNC);
    option.SetFlags(MessageOption::TF_ACCEPT_FDS);
    EXPECT_EQ(option.GetFlags(), 0x11);
    for (auto [given, expected] : {std::pair(0, 8), {-1, 8}, {1, 1}, {3000, 3000}, {3001, 3000}}) {
        option.SetWaitTime(given);
        EXPECT_EQ(option.GetWaitTime(), expected);
        EXPECT_EQ(MessageOption(0, given).GetWaitTime(), expected);
    }
}

RC_GTEST_PROP(MessageParcelProperty, ReadingAnythingIsSafe, (std::vector<uint8_t> bytes, std::vector<uint8_t> steps))
{
    MessageParcel parcel;
    parcel.WriteUnpadBuffer(bytes.data(), bytes.size());
    const std::function<bool(uint8_t)> reads[] = {
        [&](uint8_t) { return parcel.ReadRemoteObject() == nullptr; },
        [&](uint8_t) { return parcel.ReadFileDescriptor() == -1; },
        [&](uint8_t) { return parcel.ReadInterfaceToken().size() <= bytes.size(); },
        [&](uint8_t step) { return parcel.ReadRawData(step) == nullptr || step <= bytes.size(); },
        [&](uint8_t step) { return parcel.ReadRawData(size_t(256) << step % 56) == nullptr || bytes.size() >= 256; },
        [&](uint8_t step) { return parcel.ReadUnpadBuffer(step % 5) == nullptr || !bytes.empty(); },
    };
    for (uint8_t step : steps) {
        RC_ASSERT(reads[step % std::size(reads)](step));
        RC_ASSERT(parcel.GetReadPosition() <= parcel.GetDataSize());
    }
}
