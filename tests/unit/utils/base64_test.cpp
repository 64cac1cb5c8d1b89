// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "base64.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

using namespace Nubis;
using testing::ElementsAre;

namespace {
using Bytes = std::vector<uint8_t>;

std::string UrlText(const Bytes &data)
{
    std::string text;
    EXPECT_TRUE(Base64UrlEncode(data, text));
    return text;
}

Bytes UrlBytes(const std::string &text)
{
    Bytes data;
    EXPECT_TRUE(Base64UrlDecode(text, data));
    return data;
}
} // namespace

TEST(Base64, WritesPaddedTextOfTheStandardAlphabet)
{
    std::string text = "old";
    EXPECT_TRUE(Base64Encode(Bytes{0xFB, 0xFF}, text));
    EXPECT_EQ(text, "+/8=");
    const Bytes data = {'a', 'b', 'c'};
    EXPECT_TRUE(Base64Encode(data.data(), 1, text));
    EXPECT_EQ(text, "YQ==");
}

TEST(Base64, LeavesTheOutputAloneWhenThereIsNothingToEncode)
{
    std::string text = "old";
    EXPECT_FALSE(Base64Encode(Bytes(), text));
    EXPECT_FALSE(Base64Encode(nullptr, 0, text));
    EXPECT_EQ(text, "old");
}

TEST(Base64, EmptiesTheOutputWhenNothingCanBeDecoded)
{
    for (const std::string text : {"", "!", "*not base64*", "==="}) {
        Bytes data = {1, 2, 3};
        EXPECT_FALSE(Base64Decode(text, data)) << text;
        EXPECT_TRUE(data.empty()) << text;
    }
}

// Sizes beyond the filter's inner buffer of 1024 characters matter here.
RC_GTEST_PROP(Base64, ComesBackAsItWas, ())
{
    const auto size = *rc::gen::inRange<size_t>(1, 5000);
    const auto data = *rc::gen::container<Bytes>(size, rc::gen::arbitrary<uint8_t>());
    std::string text;
    RC_ASSERT(Base64Encode(data, text));
    RC_ASSERT(text.size() == (size + 2) / 3 * 4);
    RC_ASSERT(text.find('\n') == std::string::npos);
    Bytes decoded = {9};
    RC_ASSERT(Base64Decode(text, decoded));
    RC_ASSERT(decoded == data);
}

RC_GTEST_PROP(Base64, NeverYieldsMoreThanAnyTextHolds, (const std::string &text))
{
    Bytes data;
    const bool decoded = Base64Decode(text, data);
    RC_ASSERT(decoded == !data.empty());
    RC_ASSERT(data.size() <= text.size());
}

TEST(Base64Url, UsesTheSafeAlphabetWithoutPaddingAndAppends)
{
    EXPECT_EQ(UrlText({0xFF}), "_w");
    EXPECT_EQ(UrlText({0xFB, 0xFF}), "-_8");
    std::string text = "K";
    EXPECT_TRUE(Base64UrlEncode({}, text));
    EXPECT_TRUE(Base64UrlEncode({1}, text));
    EXPECT_EQ(text, "KAQ");
}

TEST(Base64Url, EndsSilentlyAtTheFirstForeignCharacter)
{
    EXPECT_THAT(UrlBytes("AQ=="), ElementsAre(1));
    EXPECT_THAT(UrlBytes("AQID/AQID"), ElementsAre(1, 2, 3));
    EXPECT_THAT(UrlBytes("\xff"), ElementsAre());
    Bytes data = {7};
    EXPECT_TRUE(Base64UrlDecode("AQ", data));
    EXPECT_THAT(data, ElementsAre(7, 1));
}

RC_GTEST_PROP(Base64Url, ComesBackAsItWas, (const std::vector<uint8_t> &data))
{
    const std::string text = UrlText(data);
    RC_ASSERT(text.size() == (data.size() * 8 + 5) / 6);
    RC_ASSERT(UrlBytes(text) == data);
}
