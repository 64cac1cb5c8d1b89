// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hilog/log.h"
#include "host/log_level.h"

namespace {

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::IsEmpty;

constexpr unsigned int DOMAIN = 0xD004315;
constexpr const char *HEAD = R"(\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} +\d+ +\d+ )";

std::mutex g_mutex;
std::vector<std::string> g_seen;

void Remember(const LogType, const LogLevel, const unsigned int, const char *tag, const char *msg)
{
    std::lock_guard<std::mutex> lock(g_mutex);
    g_seen.push_back(std::string(tag) + ": " + msg);
}

std::vector<std::string> TakeSeen()
{
    std::lock_guard<std::mutex> lock(g_mutex);
    return std::move(g_seen);
}

// The file that this process logs to: it is looked up when the first message is written.
const std::string &LogFile()
{
    static const std::string *path = [] {
        auto *name = new std::string(std::filesystem::temp_directory_path() / "nubis_hilog_XXXXXX");
        int fd = mkstemp(name->data());
        close(fd);
        setenv("NUBIS_LOG_FILE", name->c_str(), 1);
        return name;
    }();
    return *path;
}

std::vector<std::string> ReadLines()
{
    std::ifstream file(LogFile());
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

template <typename... Args>
std::string Text(const char *format, Args... args)
{
    TakeSeen();
    int size = HiLogPrint(LOG_CORE, LOG_ERROR, DOMAIN, "", format, args...);
    std::vector<std::string> seen = TakeSeen();
    if (seen.size() != 1 || seen.front().size() != static_cast<size_t>(size) + 2) {
        return "not logged as returned";
    }
    return seen.front().substr(2);
}

class HiLog : public testing::Test {
protected:
    void SetUp() override
    {
        LogFile();
        Host::SetLogLevel(LOG_DEBUG);
        LOG_SetCallback(Remember);
        TakeSeen();
    }

    static void TearDownTestSuite()
    {
        std::filesystem::remove(LogFile());
    }
};

TEST_F(HiLog, OnlyPublicArgumentsAreShown)
{
    EXPECT_EQ(Text("%{public}s %{private}s %s %{public}d", "a", "b", "c", 4), "a <private> <private> 4");
    EXPECT_EQ(Text("%d%% of %5.2f for %{private}-8lld, %{public}u", 1, 2.0, 3LL, 4U),
        "<private>% of <private> for <private>, 4");
    // Hidden stars still take their arguments.
    EXPECT_EQ(Text("%*d %.*s %{public}c", 3, 1, 2, "xyz", 'e'), "<private> <private> e");
    EXPECT_EQ(Text("%{public, name}s %{unpublic}s %{}s", "a", "b", "c"), "a <private> <private>");
}

TEST_F(HiLog, FormatsAsPrintfDoes)
{
    EXPECT_EQ(Text("%{public}hhd %{public}hhu %{public}hd %{public}hu", -129, 257, 65535, -1), "127 1 -1 65535");
    EXPECT_EQ(Text("%{public}ld %{public}lld %{public}lu %{public}llx", INT64_MIN, INT64_MAX, UINT64_MAX, UINT64_MAX),
        "-9223372036854775808 9223372036854775807 18446744073709551615 ffffffffffffffff");
    EXPECT_EQ(Text("%{public}zu %{public}zd %{public}jd %{public}td %{public}qd", SIZE_MAX, ssize_t{-1}, intmax_t{-2},
                  ptrdiff_t{-3}, -4LL),
        "18446744073709551615 -1 -2 -3 -4");
    EXPECT_EQ(Text("[%{public}5d] [%{public}-5d] [%{public}05d] [%{public}+d] [%{public}#x] [%{public}o]", 1, 2, 3, 4,
                  255, 8),
        "[    1] [2    ] [00003] [+4] [0xff] [10]");
    EXPECT_EQ(Text("[%{public}*d] [%{public}*d] [%{public}.*s] [%{public}.2s] [%{public}.*s] [%{public}*s]", 4, 1, -4,
                  2, 1, "ab", "cde", -1, "fg", -1, ""),
        "[   1] [2   ] [a] [cd] [fg] [ ]");
    EXPECT_EQ(Text("%{public}.3f %{public}g %{public}Le %{public}08.2f", 1.0, 0.5, 2.5L, -1.5),
        "1.000 0.5 2.500000e+00 -0001.50");
    EXPECT_EQ(
        Text("%{public}s|%{public}p|%{public}c", static_cast<const char *>(nullptr), nullptr, 'x'), "(null)|(nil)|x");
    int untouched = 5;
    EXPECT_EQ(Text("a%{public}nb%{public}d", &untouched, 7), "ab7");
    EXPECT_EQ(untouched, 5);
    errno = ENOENT;
    EXPECT_EQ(Text("%{public}m %{public}d", 1), "No such file or directory 1");
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(HiLog, FormatsThatMakeNoSenseAreTakenAsText)
{
    EXPECT_EQ(Text("%{public}d %{public}y %{public}s", 1, 2), "1 %{public}y %{public}s");
    EXPECT_EQ(Text("%{public}d %{public", 1), "1 %{public");
    EXPECT_EQ(Text("%{public}1$d", 1), "%{public}1$d");
    EXPECT_EQ(Text("%{public}0+- #0+- #5d", 1), "+1   ");
}

TEST_F(HiLog, CutsTextsAndTags)
{
    constexpr size_t LIMIT = 4095;
    const std::string text(LIMIT + 100, 'x');
    EXPECT_EQ(Text("%{public}s", text.c_str()), text.substr(0, LIMIT));
    EXPECT_EQ(Text(text.c_str(), 0), text.substr(0, LIMIT));
    // What is cut off is not looked at either, or logging parts of a large reply would take minutes.
    const std::wstring brokenBehind = std::wstring(LIMIT + 100, L'x') + static_cast<wchar_t>(0x110000);
    EXPECT_EQ(Text("%{public}ls", brokenBehind.c_str()), text.substr(0, LIMIT));
    EXPECT_EQ(Text("%{public}999999999d%{public}d", 1, 2), std::string(LIMIT, ' '));
    EXPECT_EQ(Text("%{public}*d", INT32_MAX, 1), std::string(LIMIT, ' '));
    EXPECT_EQ(Text("%{public}*d", INT32_MIN, 1), "1" + std::string(LIMIT - 1, ' '));
    EXPECT_EQ(Text("%{public}.*f", INT32_MAX, 0.0), "0." + std::string(LIMIT - 2, '0'));
    EXPECT_EQ(Text("%{public}.4094d<%s", 1, "hidden").back(), '<');

    const std::string tag(40, 't');
    HiLogPrint(LOG_APP, LOG_INFO, 1, tag.c_str(), "text");
    EXPECT_THAT(TakeSeen(), ElementsAre(tag.substr(0, 31) + ": text"));
}

TEST_F(HiLog, DropsWhatMayNotBeLogged)
{
    const char *noFormat = nullptr;
    for (const unsigned int domain : {0xCFFFFFFU, 0xD100000U}) {
        EXPECT_LT(HiLogPrint(LOG_CORE, LOG_ERROR, domain, "tag", "not one of the domains"), 0);
    }
    EXPECT_LT(HiLogPrint(LOG_CORE, LOG_ERROR, DOMAIN, nullptr, "no tag"), 0);
    EXPECT_LT(HiLogPrint(LOG_CORE, LOG_ERROR, DOMAIN, "tag", noFormat, 1), 0);
    EXPECT_LT(HiLogPrint(LOG_CORE, LOG_LEVEL_MAX, DOMAIN, "tag", "no level"), 0);
    EXPECT_LT(HiLogPrint(static_cast<LogType>(2), LOG_ERROR, DOMAIN, "tag", "no type"), 0);
    HILOG_ERROR(LOG_CORE, "the default domain and tag are none");
    Host::SetLogLevel(LOG_WARN);
    EXPECT_LT(HiLogPrint(LOG_CORE, LOG_INFO, DOMAIN, "tag", "below the filter"), 0);
    EXPECT_FALSE(HiLogIsLoggable(DOMAIN, "tag", LOG_INFO));
    EXPECT_TRUE(HiLogIsLoggable(DOMAIN, "tag", LOG_WARN));
    EXPECT_FALSE(HiLogIsLoggable(DOMAIN, nullptr, LOG_FATAL));
    size_t linesBefore = ReadLines().size();
    EXPECT_THAT(TakeSeen(), IsEmpty());
    HILOG_IMPL(LOG_CORE, LOG_WARN, 0xD000000, "tag", "first");
    HILOG_IMPL(LOG_CORE, LOG_FATAL, 0xD0FFFFF, "tag", "last");
    EXPECT_THAT(TakeSeen(), ElementsAre("tag: first", "tag: last"));
    EXPECT_EQ(ReadLines().size(), linesBefore + 2);
}

TEST_F(HiLog, WritesWholeLinesWithTheirHeads)
{
    constexpr int THREADS = 4;
    constexpr int MESSAGES = 100;
    const size_t linesBefore = ReadLines().size();
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i) {
        threads.emplace_back([i] {
            for (int message = 0; message < MESSAGES; ++message) {
                HILOG_IMPL(LOG_CORE, LOG_INFO, DOMAIN, "Nubis", "%{public}d/%{public}d%{public}300d", i, message, 0);
            }
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    HILOG_IMPL(LOG_APP, LOG_DEBUG, 0x1234, "tag", "one\n\ntwo\n");
    const std::regex form(std::string(HEAD) + R"(I C04315/Nubis: (\d/\d+) {299}0|)" + HEAD + "(D A01234/tag: .*)");
    std::multiset<std::string> messages;
    const auto lines = ReadLines();
    for (size_t i = linesBefore; i < lines.size(); ++i) {
        std::smatch match;
        ASSERT_TRUE(std::regex_match(lines[i], match, form)) << lines[i];
        messages.insert(match[1].str() + match[2].str());
    }
    EXPECT_EQ(std::set<std::string>(messages.begin(), messages.end()).size(), messages.size());
    EXPECT_EQ(messages.size(), static_cast<size_t>(THREADS * MESSAGES + 3));
    for (const char *line : {"one", "", "two"}) {
        EXPECT_EQ(messages.count("D A01234/tag: " + std::string(line)), 1U) << line;
    }
}

// What follows depends on the environment at the first message, so each case has a process of its own.
class HiLogEnvironment : public testing::Test {
protected:
    HiLogEnvironment()
    {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
    }

    // Leaves with the number of levels that are logged.
    [[noreturn]] static void LogEveryLevel(const char *level, const char *file)
    {
        unsetenv("NUBIS_LOG_LEVEL");
        if (level != nullptr) {
            setenv("NUBIS_LOG_LEVEL", level, 1);
        }
        setenv("NUBIS_LOG_FILE", file, 1);
        LOG_SetCallback(Remember);
        for (LogLevel each : {LOG_DEBUG, LOG_INFO, LOG_WARN, LOG_ERROR, LOG_FATAL}) {
            HILOG_IMPL(LOG_CORE, each, DOMAIN, "Nubis", "level %{public}d", each);
        }
        _exit(static_cast<int>(TakeSeen().size()));
    }
};

TEST_F(HiLogEnvironment, SetsTheLevel)
{
    const std::pair<const char *, int> cases[] = {
        {"debug", 5}, {"info", 4}, {"WARN", 3}, {"error", 2}, {"fatal", 1}, {"none", 0}, {nullptr, 2}, {"loud", 2}};
    for (const auto &[level, logged] : cases) {
        EXPECT_EXIT(LogEveryLevel(level, ""), ExitedWithCode(logged), "") << logged;
    }
}

TEST_F(HiLogEnvironment, WithoutAUsableFileMessagesGoToStderr)
{
    for (const char *file : {"", "/no/such/folder/log"}) {
        EXPECT_EXIT(LogEveryLevel("fatal", file), ExitedWithCode(1), "F C04315/Nubis: level 7\n$");
    }
}

} // namespace
