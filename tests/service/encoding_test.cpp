// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "util/encoding.h"

#include <gtest/gtest.h>

#include <rapidcheck/gtest.h>

namespace DriveService {

namespace {

TEST(EncodingTest, KnownTextsEncodeAsTheStandardsSay)
{
    EXPECT_EQ(Base64Encode("f"), "Zg==");
    EXPECT_EQ(Base64Encode("fo"), "Zm8=");
    EXPECT_EQ(Base64Encode("foobar"), "Zm9vYmFy");
    EXPECT_EQ(Base64UrlEncode("\xfb\xff\xfe!"), "-__-IQ");
    EXPECT_EQ(HexEncode(std::string("\0\xab\x7f", 3)), "00ab7f");
    EXPECT_EQ(HexEncode(Sha256("abc")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(BigEndian64(0x0102030405060708), std::string("\1\2\3\4\5\6\7\x8"));
}

TEST(EncodingTest, Base64IsToldFromOtherTexts)
{
    for (const char *good : {"", "AAAA", "+/==", "AAEC/w=="}) {
        EXPECT_TRUE(IsBase64(good)) << good;
    }
    for (const char *bad : {"A", "AAA", "====", "A===", "AA=A", "AA-_", "AAAA\n"}) {
        EXPECT_FALSE(IsBase64(bad)) << bad;
    }
    EXPECT_FALSE(Base64UrlDecode("ab+c"));
}

TEST(EncodingTest, Utf8IsToldFromOtherBytes)
{
    for (const char *good : {"", "a", "ö", "漢", "😀", "\xf4\x8f\xbf\xbf"}) {
        EXPECT_TRUE(IsUtf8(good)) << good;
    }
    for (const char *bad : {"\x80", "\xc3", "\xc3(", "\xc0\x80", "\xe0\x80\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80",
             "\xff", "a\xf0\x9f\x98"}) {
        EXPECT_FALSE(IsUtf8(bad)) << HexEncode(bad);
        EXPECT_TRUE(IsUtf8(ToUtf8(bad))) << HexEncode(bad);
    }
    EXPECT_EQ(ToUtf8("a\xed\xb4\xb4"
                     "ö\xc3"),
        "a\ufffd\ufffd\ufffdö\ufffd");
}

RC_GTEST_PROP(EncodingTest, UrlSafeBase64ReadsBack, (const std::string &bytes))
{
    RC_ASSERT(Base64UrlDecode(Base64UrlEncode(bytes)) == bytes);
    RC_ASSERT(IsBase64(Base64Encode(bytes)));
}

} // namespace

} // namespace DriveService
