// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "log_capture.h"
#include "message_parcel_util.h"

namespace {
using Nubis::MessageParcelUtil;
using testing::ElementsAre;

RC_GTEST_PROP(MessageParcelUtilTest, TextsComeBackAsTheyWere, (const std::string &text, int32_t after))
{
    OHOS::MessageParcel parcel;
    MessageParcelUtil::WriteStringToMessage(parcel, text + "x");
    parcel.WriteInt32(after);
    RC_ASSERT(MessageParcelUtil::ReadStringFromMessage(parcel) == text + "x");
    RC_ASSERT(parcel.ReadInt32() == after);
}

TEST(MessageParcelUtilTest, LengthStandsBeforeTheRawData)
{
    OHOS::MessageParcel parcel;
    MessageParcelUtil::WriteStringToMessage(parcel, "abc");
    EXPECT_EQ(parcel.ReadInt32(), 3);
    const void *raw = parcel.ReadRawData(3);
    ASSERT_NE(raw, nullptr);
    EXPECT_EQ(std::string(static_cast<const char *>(raw), 3), "abc");
}

TEST(MessageParcelUtilTest, EmptyTextIsRefusedOnBothSides)
{
    NubisTest::LogCapture log;
    OHOS::MessageParcel parcel;
    MessageParcelUtil::WriteStringToMessage(parcel, "");
    EXPECT_EQ(MessageParcelUtil::ReadStringFromMessage(parcel), "");
    EXPECT_THAT(
        log.TakeErrors(), ElementsAre("save string failed, save raw failed, len:0", "read string failed, len:0"));
}

TEST(MessageParcelUtilTest, LengthsThatCannotBeGiveNoText)
{
    NubisTest::LogCapture log;
    for (const int32_t length : {-1, INT32_MIN, 134217729}) {
        OHOS::MessageParcel parcel;
        parcel.WriteInt32(length);
        parcel.WriteRawData("abc", 3);
        EXPECT_EQ(MessageParcelUtil::ReadStringFromMessage(parcel), "") << length;
    }
    EXPECT_EQ(log.TakeErrors().size(), 3U);
    for (const int32_t length : {2, 4, 134217728}) {
        OHOS::MessageParcel parcel;
        parcel.WriteInt32(length);
        parcel.WriteRawData("abc", 3);
        EXPECT_EQ(MessageParcelUtil::ReadStringFromMessage(parcel), "") << length;
    }
    OHOS::MessageParcel nothing;
    EXPECT_EQ(MessageParcelUtil::ReadStringFromMessage(nothing), "");
    EXPECT_THAT(log.TakeErrors(), testing::Contains("read raw failed, buf is nullptr").Times(3));
}
} // namespace
