// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "securec.h"

namespace {

constexpr size_t TOO_LARGE = 0x80000000;
const std::string BEFORE = "abcdefgh";

const std::string ZEROS(4, '\0');
const std::string EMPTIED = std::string(1, '\0') + "bcdefgh";
constexpr const char *TEXT = "12345";

// What comes of a copy into BEFORE.
struct Case {
    const char *what;
    size_t destMax;
    // The text "12345", null, or a place in the destination.
    const char *source;
    size_t count;
    errno_t result;
    std::string after;
};

// Filled anew for each case.
char g_dest[9];

TEST(Securec, CopiesMemory)
{
    const char *ahead = g_dest + 2;
    const Case cases[] = {
        {"no room", 0, TEXT, 0, ERANGE, BEFORE},
        {"absurd room", TOO_LARGE, TEXT, 3, ERANGE, BEFORE},
        {"null source", 4, nullptr, 3, EINVAL_AND_RESET, ZEROS + "efgh"},
        {"null source, nothing to copy", 4, nullptr, 0, EINVAL_AND_RESET, ZEROS + "efgh"},
        {"does not fit", 4, TEXT, 5, ERANGE_AND_RESET, ZEROS + "efgh"},
        {"overlap", 4, ahead, 3, EOVERLAP_AND_RESET, ZEROS + "efgh"},
        {"neighbours", 4, ahead, 2, EOK, "cdcdefgh"},
        {"onto itself", 4, g_dest, 4, EOK, BEFORE},
        {"exact fit", 4, TEXT, 4, EOK, "1234efgh"},
        {"nothing", 4, TEXT, 0, EOK, BEFORE},
    };
    for (const auto &item : cases) {
        BEFORE.copy(g_dest, BEFORE.size());
        EXPECT_EQ(memcpy_s(g_dest, item.destMax, item.source, item.count), item.result) << item.what;
        EXPECT_EQ(std::string(g_dest, BEFORE.size()), item.after) << item.what;
    }
    EXPECT_EQ(memcpy_s(nullptr, 4, "1234", 4), EINVAL);
    EXPECT_EQ(memcpy_s(nullptr, 0, "1234", 4), ERANGE);
    EXPECT_EQ(memcpy_s(g_dest + 2, 4, g_dest, 3), EOVERLAP_AND_RESET);
}

TEST(Securec, CopiesStrings)
{
    const char *ahead = g_dest + 2;
    const Case cases[] = {
        {"no room", 0, TEXT, 0, ERANGE, BEFORE},
        {"absurd room", TOO_LARGE, TEXT, 0, ERANGE, BEFORE},
        {"null source", 8, nullptr, 0, EINVAL_AND_RESET, EMPTIED},
        {"no room for the terminator", 5, TEXT, 0, ERANGE_AND_RESET, EMPTIED},
        {"overlap", 8, ahead, 0, EOVERLAP_AND_RESET, EMPTIED},
        {"too long and overlapping", 6, ahead, 0, ERANGE_AND_RESET, EMPTIED},
        {"onto itself", 9, g_dest, 0, EOK, BEFORE},
        {"exact fit", 6, TEXT, 0, EOK, std::string("12345\0gh", 8)},
    };
    for (const auto &item : cases) {
        BEFORE.copy(g_dest, BEFORE.size());
        EXPECT_EQ(strcpy_s(g_dest, item.destMax, item.source), item.result) << item.what;
        EXPECT_EQ(std::string(g_dest, BEFORE.size()), item.after) << item.what;
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
    EXPECT_EQ(snprintf_s(dest.data(), 8, 7, noFormat, 1), -1);
    EXPECT_EQ(sprintf_s(nullptr, 8, "%d", 1), -1);
    EXPECT_EQ(snprintf_s(nullptr, 8, 7, "%d", 1), -1);
}

} // namespace
