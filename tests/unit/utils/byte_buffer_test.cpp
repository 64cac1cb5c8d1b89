// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "byte_buffer.h"

#include <array>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "log_capture.h"

using namespace Nubis;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(ByteBuffer, KeepsWhatStandsBeforeTheFirstBadPairAndLogsTheRest)
{
    NubisTest::LogCapture log;
    EXPECT_THAT(ByteBuffer::HexStringToValueArray("0aFz12"), ElementsAre(0x0A));
    EXPECT_THAT(log.TakeErrors(), ElementsAre("hex string to value array failed, string:Fz12"));

    ByteBuffer buffer;
    buffer.FromHexString("01");
    buffer.FromHexString("ff0gaa");
    EXPECT_THAT(log.TakeErrors(), ElementsAre("bytebuffer form hex string failed, string:0gaa"));
    std::array<uint8_t, 2> bytes = {};
    EXPECT_TRUE(buffer.GetByteArray(bytes.data(), bytes.size()));
    EXPECT_THAT(bytes, ElementsAre(0x01, 0xFF));
}

TEST(ByteBuffer, IgnoresACharacterWithoutAPartner)
{
    NubisTest::LogCapture log;
    EXPECT_THAT(ByteBuffer::HexStringToValueArray("abc"), ElementsAre(0xAB));
    EXPECT_THAT(ByteBuffer::HexStringToValueArray("abz"), ElementsAre(0xAB));
    EXPECT_THAT(ByteBuffer::HexStringToValueArray("a"), IsEmpty());
    EXPECT_THAT(ByteBuffer::HexStringToValueArray(""), IsEmpty());
    EXPECT_THAT(log.TakeErrors(), IsEmpty());
}

TEST(ByteBuffer, CopiesOutOnlyWhatFits)
{
    ByteBuffer buffer;
    std::array<uint8_t, 3> bytes = {9, 9, 9};
    EXPECT_TRUE(buffer.GetByteArray(nullptr, 0));
    buffer.FromByteArray(nullptr, 0);
    const std::array<uint8_t, 3> source = {1, 2, 3};
    buffer.FromByteArray(source.data(), source.size());
    EXPECT_FALSE(buffer.GetByteArray(bytes.data(), 2));
    EXPECT_FALSE(buffer.GetByteArray(nullptr, 3));
    EXPECT_TRUE(buffer.GetByteArray(bytes.data(), 3));
    EXPECT_EQ(bytes, source);
}

TEST(ByteBuffer, DigestsTheBytesAndEncodesTheTextOfTheDigest)
{
    ByteBuffer buffer;
    EXPECT_EQ(buffer.GetBufSha256(), "");
    EXPECT_EQ(buffer.GetBufSha256Base64(), "");
    buffer.FromHexString("616263");
    EXPECT_EQ(buffer.GetBufSha256(), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(buffer.GetBufSha256Base64(),
        "YmE3ODE2YmY4ZjAxY2ZlYTQxNDE0MGRlNWRhZTIyMjNiMDAzNjFhMzk2MTc3YTljYjQxMGZmNjFmMjAwMTVhZA==");
}

RC_GTEST_PROP(ByteBuffer, HexComesBackAsItWas, (const std::vector<uint8_t> &bytes))
{
    std::string text = ByteBuffer::ToHexString(bytes.data(), bytes.size());
    RC_ASSERT(text.find_first_not_of("0123456789abcdef") == std::string::npos);
    RC_ASSERT(ByteBuffer::HexStringToValueArray(text) == bytes);
}
