// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "securec.h"

namespace {

constexpr size_t TOO_LARGE = 0x80000000;
const std::string BEFORE = "abcdefgh";

enum class Source {
    TEXT,
    NOTHING,
    AHEAD, // two bytes into the destination
    ITSELF,
};

struct Case {
    const char *what;
    size_t destMax;
    Source source;
    size_t count;
    errno_t result;
    std::string after;
};

const void *PointerOf(Source source, const char *dest)
{
    switch (source) {
        case Source::TEXT:
            return "12345";
        case Source::NOTHING:
            return nullptr;
        case Source::AHEAD:
            return dest + 2;
        default:
            return dest;
    }
}

TEST(Securec, CopiesMemory)
{
    const std::string zeros(4, '\0');
    const Case cases[] = {
        {"no room", 0, Source::TEXT, 0, ERANGE, BEFORE},
        {"absurd room", TOO_LARGE, Source::TEXT, 3, ERANGE, BEFORE},
        {"null source", 4, Source::NOTHING, 3, EINVAL_AND_RESET, zeros + "efgh"},
        {"null source, nothing to copy", 4, Source::NOTHING, 0, EINVAL_AND_RESET, zeros + "efgh"},
        {"does not fit", 4, Source::TEXT, 5, ERANGE_AND_RESET, zeros + "efgh"},
        {"overlap", 4, Source::AHEAD, 3, EOVERLAP_AND_RESET, zeros + "efgh"},
        {"neighbours", 4, Source::AHEAD, 2, EOK, "cdcdefgh"},
        {"onto itself", 4, Source::ITSELF, 4, EOK, BEFORE},
        {"exact fit", 4, Source::TEXT, 4, EOK, "1234efgh"},
        {"nothing", 4, Source::TEXT, 0, EOK, BEFORE},
    };
    for (const auto &item : cases) {
        std::string dest = BEFORE;
        EXPECT_EQ(memcpy_s(dest.data(), item.destMax, PointerOf(item.source, dest.data()), item.count), item.result)
            << item.what;
        EXPECT_EQ(dest, item.after) << item.what;
    }
    EXPECT_EQ(memcpy_s(nullptr, 4, "1234", 4), EINVAL);
    EXPECT_EQ(memcpy_s(nullptr, 0, "1234", 4), ERANGE);
    std::string dest = BEFORE;
    EXPECT_EQ(memcpy_s(dest.data() + 2, 4, dest.data(), 3), EOVERLAP_AND_RESET);
}

TEST(Securec, CopiesStrings)
{
    const std::string emptied = std::string(1, '\0') + "bcdefgh";
    const Case cases[] = {
        {"no room", 0, Source::TEXT, 0, ERANGE, BEFORE},
        {"absurd room", TOO_LARGE, Source::TEXT, 0, ERANGE, BEFORE},
        {"null source", 8, Source::NOTHING, 0, EINVAL_AND_RESET, emptied},
        {"no room for the terminator", 5, Source::TEXT, 0, ERANGE_AND_RESET, emptied},
        {"overlap", 8, Source::AHEAD, 0, EOVERLAP_AND_RESET, emptied},
        {"too long and overlapping", 6, Source::AHEAD, 0, ERANGE_AND_RESET, emptied},
        {"onto itself", 9, Source::ITSELF, 0, EOK, BEFORE},
        {"exact fit", 6, Source::TEXT, 0, EOK, std::string("12345\0gh", 8)},
    };
    for (const auto &item : cases) {
        std::string dest = BEFORE;
        const auto *source = static_cast<const char *>(PointerOf(item.source, dest.data()));
        EXPECT_EQ(strcpy_s(dest.data(), item.destMax, source), item.result) << item.what;
        EXPECT_EQ(dest, item.after) << item.what;
    }
    EXPECT_EQ(strcpy_s(nullptr, 8, "x"), EINVAL);
}

TEST(Securec, SetsMemory)
{
    std::string dest = BEFORE;
    EXPECT_EQ(memset_s(dest.data(), 4, 'x', 2), EOK);
    EXPECT_EQ(dest, "xxcdefgh");
    EXPECT_EQ(memset_s(dest.data(), 4, 'y', 5), ERANGE_AND_RESET);
    EXPECT_EQ(dest, "yyyyefgh");
    EXPECT_EQ(memset_s(dest.data(), 0, 'z', 1), ERANGE);
    EXPECT_EQ(memset_s(dest.data(), TOO_LARGE, 'z', 1), ERANGE);
    EXPECT_EQ(memset_s(nullptr, 4, 'z', 1), EINVAL);
    EXPECT_EQ(dest, "yyyyefgh");
}

TEST(Securec, FormatsWithinTheRoom)
{
    struct FormatCase {
        size_t destMax;
        size_t count; // for snprintf_s
        int sprintfResult;
        std::string sprintfAfter;
        int snprintfResult;
        std::string snprintfAfter;
    };
    // Of the text "n=123". What stands behind the terminator does not matter.
    const FormatCase cases[] = {
        {8, 7, 5, "n=123", 5, "n=123"},
        {6, 5, 5, "n=123", 5, "n=123"},
        {5, 4, -1, "", -1, "n=12"},
        {8, 2, 5, "n=123", -1, "n="},
        {8, 0, 5, "n=123", -1, ""},
        {5, 5, -1, "", -1, ""},
        {6, 6, 5, "n=123", 5, "n=123"},
        {5, SIZE_MAX, -1, "", -1, ""},
        {8, SIZE_MAX, 5, "n=123", 5, "n=123"},
        {0, 0, -1, BEFORE, -1, BEFORE},
        {TOO_LARGE, 5, -1, BEFORE, -1, BEFORE},
    };
    for (const auto &item : cases) {
        std::string first = BEFORE;
        std::string second = BEFORE;
        EXPECT_EQ(sprintf_s(first.data(), item.destMax, "%c=%d", 'n', 123), item.sprintfResult) << item.destMax;
        EXPECT_STREQ(first.c_str(), item.sprintfAfter.c_str()) << item.destMax;
        EXPECT_EQ(snprintf_s(second.data(), item.destMax, item.count, "%c=%d", 'n', 123), item.snprintfResult)
            << item.destMax << ' ' << item.count;
        EXPECT_STREQ(second.c_str(), item.snprintfAfter.c_str()) << item.destMax << ' ' << item.count;
    }
    const char *noFormat = nullptr;
    std::string dest = BEFORE;
    EXPECT_EQ(sprintf_s(dest.data(), 8, noFormat, 1), -1);
    EXPECT_EQ(dest[0], '\0');
    dest = BEFORE;
    EXPECT_EQ(snprintf_s(dest.data(), 8, 7, noFormat, 1), -1);
    EXPECT_EQ(dest[0], '\0');
    EXPECT_EQ(sprintf_s(nullptr, 8, "%d", 1), -1);
    EXPECT_EQ(snprintf_s(nullptr, 8, 7, "%d", 1), -1);
}

} // namespace
