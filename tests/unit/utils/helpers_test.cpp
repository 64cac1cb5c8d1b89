// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <regex>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "log.h"
#include "log_capture.h"
#include "uuid_helper.h"
#include "wall_clock.h"

using namespace Nubis;
using testing::StartsWith;

namespace {
class FixedClock : public testing::Test {
protected:
    void SetUp() override
    {
        WallClock::SetSource([] { return int64_t{1700000000999}; });
    }
    void TearDown() override
    {
        WallClock::SetSource(nullptr);
    }
};

std::string lastLine;
void KeepLine(const LogType type, const LogLevel level, const unsigned int domain, const char *tag, const char *message)
{
    lastLine =
        std::to_string(type) + " " + std::to_string(level) + " " + std::to_string(domain) + " " + tag + " " + message;
}
} // namespace

TEST_F(FixedClock, TraceIdsNameTheDemonAndTheSecond)
{
    const std::regex shape("\\d{5}_01_1700000000_\\d{8}");
    const std::pair<int, const char *> prefixes[] = {
        {0, "20000"}, {1, "30000"}, {2, "40000"}, {3, "09000"}, {7, "09000"}, {-1, "09000"}};
    for (const auto &[demon, prefix] : prefixes) {
        const std::string traceId = UuidHelper::GenerateTraceId(static_cast<NBCloudSyncDemon>(demon));
        EXPECT_THAT(traceId, StartsWith(prefix));
        EXPECT_TRUE(std::regex_match(traceId, shape)) << traceId;
    }
    EXPECT_EQ(UuidHelper::TraceDigits({255, 0, 99, 100}), "55009900");
}

TEST(UuidHelper, MakesRandomUuidsThatDiffer)
{
    const std::regex shape("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
    const std::regex plain("[0-9a-f]{32}");
    std::set<std::string> uuids;
    for (int i = 0; i < 100; ++i) {
        const std::string uuid = UuidHelper::GenerateUuid();
        EXPECT_TRUE(std::regex_match(uuid, shape)) << uuid;
        uuids.insert(uuid);
        const std::string withoutDelim = UuidHelper::GenerateUuidWithoutDelim();
        EXPECT_TRUE(std::regex_match(withoutDelim, plain)) << withoutDelim;
        uuids.insert(withoutDelim);
    }
    EXPECT_EQ(uuids.size(), 200U);
}

TEST(Log, GivesPlaceDomainAndTagWithEachText)
{
    NubisTest::LogCapture log;
    LOG_SetCallback(KeepLine);
    NB_LOGI("plain");
    const int line = __LINE__ - 1;
    EXPECT_EQ(lastLine,
        "3 4 " + std::to_string(0xD004315) + " Nubis {helpers_test.cpp:" + std::to_string(line) + " TestBody()} plain");
    NB_LOGE("all eight %{public}d%{public}d%{public}d%{public}d%{public}d%{public}d%{public}d%{public}s", 1, 2, 3, 4, 5,
        6, 7, "8");
    EXPECT_THAT(lastLine, testing::EndsWith("TestBody()} all eight 12345678"));
    EXPECT_THAT(lastLine, StartsWith("3 6 "));
    NB_LOGD("hidden %{private}s", "secret");
    EXPECT_THAT(lastLine, testing::EndsWith("hidden <private>"));
    EXPECT_THAT(lastLine, StartsWith("3 3 "));
}
