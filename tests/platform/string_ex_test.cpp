// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <string>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "string_ex.h"

namespace {

TEST(StringEx, ConvertsEveryLengthOfSequence)
{
    const std::string utf8 =
        std::string("a\0\x7f\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", 19) +
        "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
    const std::u16string utf16(u"a\0\x7f\x80\x7ff\x800\xd7ff\xe000\xffff\xd800\xdc00\xdbff\xdfff", 13);
    EXPECT_EQ(OHOS::Str8ToStr16(utf8), utf16);
    EXPECT_EQ(OHOS::Str16ToStr8(utf16), utf8);
}

TEST(StringEx, InvalidInputGivesAnEmptyString)
{
    const char *const invalid8[] = {
        "ok\x80",           // tail without a lead
        "ok\xC3",           // lead without a tail
        "\xE2\x82",         // cut
        "\xE2\x82\x41",     // interrupted
        "\xC0\xAF",         // overlong
        "\xE0\x9F\xBF",     // overlong
        "\xF0\x8F\xBF\xBF", // overlong
        "\xED\xA0\x80",     // a surrogate
        "\xF4\x90\x80\x80", // beyond U+10FFFF
        "\xF8\x88\x80\x80", // no such lead
    };
    for (const char *text : invalid8) {
        EXPECT_EQ(OHOS::Str8ToStr16(text), u"") << testing::PrintToString(std::string(text));
    }
    const std::u16string invalid16[] = {
        {u'a', 0xD800}, {0xDC00, u'a'}, {0xD800, u'a'}, {0xD800, 0xD800}, {0xDBFF, 0xE000}};
    for (const auto &text : invalid16) {
        EXPECT_EQ(OHOS::Str16ToStr8(text), "");
    }
}

// Anything at all either is refused or comes back as it was.
RC_GTEST_PROP(StringEx, TextsComeBackOrAreRefused, (const std::string &bytes, const std::vector<uint16_t> &units))
{
    const std::u16string wide = OHOS::Str8ToStr16(bytes);
    RC_ASSERT(wide.empty() || OHOS::Str16ToStr8(wide) == bytes);
    const std::u16string given(units.begin(), units.end());
    const std::string narrow = OHOS::Str16ToStr8(given);
    RC_ASSERT(narrow.empty() || OHOS::Str8ToStr16(narrow) == given);
}

} // namespace
