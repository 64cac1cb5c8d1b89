// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <csignal>
#include <functional>
#include <set>
#include <thread>

#include <sys/resource.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ev_client_core_inner_api.h"
#include "event_lines.h"
#include "host/event_log.h"

namespace {
using EvCloud::ConfigOptions;
using EvCloud::EvClientCoreInnerApi;
using NubisTest::EventState;
using NubisTest::TextsOf;
using Texts = std::unordered_map<std::string, std::string>;

std::shared_ptr<EvCloud::EventTypeConfig> TypeConfig(int32_t type)
{
    auto config = std::make_shared<EvCloud::EventTypeConfig>();
    config->eventType = type;
    config->reportUrl = "https://report.example/" + std::to_string(type);
    config->reportParams = {{"userId", "ann"}};
    return config;
}

ConfigOptions GoodOptions(const std::string &tag)
{
    ConfigOptions options;
    options.instanceTag = tag;
    options.appId = "com.example.app";
    options.eventTypeConfigs = {TypeConfig(1), TypeConfig(2)};
    options.databasePath = "/data/events/";
    options.serviceId = 1301;
    return options;
}

TEST(EvClientTest, LineHoldsTheEventAndTheConfigurationOfItsType)
{
    EventState state;
    ASSERT_EQ(EvClientCoreInnerApi::SetConfigOptions(GoodOptions("Tag_1")), EvCloud::EV_OK);
    const Texts fields{{"text", "two\nlines, \"quoted\" \\ \xc3\xa4"}, {"bytes", "\xff"}, {"empty", ""}};
    ASSERT_EQ(EvClientCoreInnerApi::OnEvent("Tag_1", "CloudDrive", 2, fields), EvCloud::EV_OK);

    auto events = state.Read("Tag_1");
    ASSERT_EQ(events.size(), 1U);
    EXPECT_GT(events[0]["time"].asInt64(), 0);
    events[0].removeMember("time");
    Json::Value expected;
    expected["appId"] = "com.example.app";
    expected["serviceId"] = 1301;
    expected["databasePath"] = "/data/events/";
    expected["reportUrl"] = "https://report.example/2";
    expected["reportParams"]["userId"] = "ann";
    expected["eventId"] = "CloudDrive";
    expected["eventType"] = 2;
    expected["fields"]["text"] = "two\nlines, \"quoted\" \\ \xc3\xa4";
    expected["fields"]["bytes"] = "\xef\xbf\xbd";
    expected["fields"]["empty"] = "";
    EXPECT_EQ(events[0], expected);

    namespace fs = std::filesystem;
    EXPECT_EQ(fs::status(state.FileOf("Tag_1").parent_path()).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(state.FileOf("Tag_1")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST(EvClientTest, BadConfigurationIsRefusedAndLeavesTheFormerOne)
{
    struct Case {
        const char *what;
        std::function<void(ConfigOptions &)> spoil;
        int32_t code;
    };
    const std::vector<Case> cases = {
        {"no app", [](ConfigOptions &o) { o.appId.clear(); }, EvCloud::EV_BAD_APP_ID},
        {"one type", [](ConfigOptions &o) { o.eventTypeConfigs.pop_back(); }, EvCloud::EV_BAD_EVENT_TYPE_CONFIG},
        {"null type", [](ConfigOptions &o) { o.eventTypeConfigs[1] = nullptr; }, EvCloud::EV_BAD_EVENT_TYPE_CONFIG},
        {"type twice", [](ConfigOptions &o) { o.eventTypeConfigs[1]->eventType = 1; },
            EvCloud::EV_BAD_EVENT_TYPE_CONFIG},
        {"unknown type", [](ConfigOptions &o) { o.eventTypeConfigs[1]->eventType = 3; },
            EvCloud::EV_BAD_EVENT_TYPE_CONFIG},
        {"no url", [](ConfigOptions &o) { o.eventTypeConfigs[0]->reportUrl.clear(); },
            EvCloud::EV_BAD_EVENT_TYPE_CONFIG},
        {"no parameters", [](ConfigOptions &o) { o.eventTypeConfigs[0]->reportParams.clear(); },
            EvCloud::EV_BAD_EVENT_TYPE_CONFIG},
        {"no path", [](ConfigOptions &o) { o.databasePath.clear(); }, EvCloud::EV_BAD_DATABASE_PATH},
        {"relative path", [](ConfigOptions &o) { o.databasePath = "data/"; }, EvCloud::EV_BAD_DATABASE_PATH},
        {"no service", [](ConfigOptions &o) { o.serviceId = 0; }, EvCloud::EV_BAD_SERVICE_ID},
    };
    EventState state;
    ASSERT_EQ(EvClientCoreInnerApi::SetConfigOptions(GoodOptions("kept")), EvCloud::EV_OK);
    for (const auto &one : cases) {
        auto options = GoodOptions("kept");
        one.spoil(options);
        EXPECT_EQ(EvClientCoreInnerApi::SetConfigOptions(options), one.code) << one.what;
    }
    for (const std::string &tag : {std::string(), std::string(129, 'a'), std::string("a/b"), std::string(".hidden")}) {
        EXPECT_EQ(EvClientCoreInnerApi::SetConfigOptions(GoodOptions(tag)), EvCloud::EV_BAD_INSTANCE_TAG) << tag;
        EXPECT_EQ(EvClientCoreInnerApi::OnEvent(tag, "CloudDrive", 1, {}), EvCloud::EV_NOT_CONFIGURED) << tag;
    }
    EXPECT_EQ(EvClientCoreInnerApi::OnEvent("kept", "CloudDrive", 1, {}), EvCloud::EV_OK);
    ASSERT_EQ(state.Read("kept").size(), 1U);
    EXPECT_EQ(state.Read("kept")[0]["serviceId"], 1301);
}

TEST(EvClientTest, EventsThatCannotBeReportedSaySoAndLeaveNothing)
{
    EventState state;
    EXPECT_EQ(EvClientCoreInnerApi::OnEvent("nobody", "CloudDrive", 1, {}), EvCloud::EV_NOT_CONFIGURED);
    ASSERT_EQ(EvClientCoreInnerApi::SetConfigOptions(GoodOptions("strict")), EvCloud::EV_OK);
    EXPECT_EQ(EvClientCoreInnerApi::OnEvent("strict", "", 1, {}), EvCloud::EV_BAD_EVENT);
    EXPECT_EQ(EvClientCoreInnerApi::OnEvent("strict", "CloudDrive", 0, {}), EvCloud::EV_BAD_EVENT);
    EXPECT_FALSE(std::filesystem::exists(state.FileOf("strict")));

    std::ofstream(state.Path() / "events") << "in the way of the folder";
    EXPECT_EQ(EvClientCoreInnerApi::OnEvent("strict", "CloudDrive", 1, {}), EvCloud::EV_NOT_STORED);
}

TEST(EvClientTest, LaterConfigurationHoldsForLaterEvents)
{
    EventState state;
    auto options = GoodOptions("changed");
    ASSERT_EQ(EvClientCoreInnerApi::SetConfigOptions(options), EvCloud::EV_OK);
    // The client has a copy: what the caller does to its own shared part is not seen.
    options.eventTypeConfigs[0]->reportParams["userId"] = "bob";
    ASSERT_EQ(EvClientCoreInnerApi::OnEvent("changed", "CloudDrive", 1, {}), EvCloud::EV_OK);
    ASSERT_EQ(EvClientCoreInnerApi::SetConfigOptions(options), EvCloud::EV_OK);
    ASSERT_EQ(EvClientCoreInnerApi::OnEvent("changed", "CloudDrive", 1, {}), EvCloud::EV_OK);
    auto events = state.Read("changed");
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0]["reportParams"]["userId"], "ann");
    EXPECT_EQ(events[1]["reportParams"]["userId"], "bob");
}

TEST(EvClientTest, AFullFileIsPutAsideAndOneOldOneIsKept)
{
    EventState state;
    ASSERT_EQ(EvClientCoreInnerApi::SetConfigOptions(GoodOptions("full")), EvCloud::EV_OK);
    auto report = [](size_t bytes) {
        return EvClientCoreInnerApi::OnEvent("full", "CloudDrive", 1, {{"filling", std::string(bytes, 'x')}});
    };
    ASSERT_EQ(report(0), EvCloud::EV_OK);
    const size_t frame = std::filesystem::file_size(state.FileOf("full"));
    EXPECT_EQ(report(Host::MAX_EVENT_LINE_BYTES - frame + 1), EvCloud::EV_BAD_EVENT);
    const size_t perFile = Host::MAX_EVENT_LOG_BYTES / Host::MAX_EVENT_LINE_BYTES;
    for (size_t i = 0; i < 2 * perFile + 1; ++i) {
        ASSERT_EQ(report(Host::MAX_EVENT_LINE_BYTES - frame), EvCloud::EV_OK);
    }
    EXPECT_EQ(std::filesystem::file_size(Host::OldEventLogPath("full")), Host::MAX_EVENT_LOG_BYTES);
    EXPECT_EQ(state.Read("full").size(), 2U) << "the first, small one came before a file of full lines, less one";
    for (const auto &entry : std::filesystem::directory_iterator(state.FileOf("full").parent_path())) {
        EXPECT_LE(entry.file_size(), Host::MAX_EVENT_LOG_BYTES) << entry.path();
    }
}

TEST(EvClientTest, ALineThatWasCutSpoilsNoOther)
{
    EventState state;
    ASSERT_EQ(EvClientCoreInnerApi::SetConfigOptions(GoodOptions("cut")), EvCloud::EV_OK);
    auto report = [] { return EvClientCoreInnerApi::OnEvent("cut", "CloudDrive", 1, {{"name", "a"}}); };
    ASSERT_EQ(report(), EvCloud::EV_OK);
    const size_t oneLine = std::filesystem::file_size(state.FileOf("cut"));
    // As a full disk does it; one that may not write at all gets a signal besides.
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    signal(SIGXFSZ, SIG_IGN);
    const rlimit within{oneLine + oneLine / 2, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &within), 0);
    EXPECT_EQ(report(), EvCloud::EV_NOT_STORED);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(std::filesystem::file_size(state.FileOf("cut")), oneLine) << "what did not fit was taken back";

    // As a process does it that is killed while it writes.
    std::ofstream(state.FileOf("cut"), std::ios::app) << R"({"eventId": "Clou)";
    EXPECT_EQ(report(), EvCloud::EV_OK);
    std::ifstream file(state.FileOf("cut"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[1], R"({"eventId": "Clou)");
    EXPECT_EQ(lines[2].size() + 1, oneLine);
}

TEST(EvClientTest, ManyThreadsReportWholeLinesOnceEach)
{
    constexpr int threadCount = 8;
    constexpr int eventCount = 100;
    EventState state;
    ASSERT_EQ(EvClientCoreInnerApi::SetConfigOptions(GoodOptions("busy")), EvCloud::EV_OK);
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([thread] {
            for (int i = 0; i < eventCount; ++i) {
                EvClientCoreInnerApi::SetConfigOptions(GoodOptions("busy"));
                const std::string name = std::to_string(thread) + "." + std::to_string(i);
                EvClientCoreInnerApi::OnEvent(
                    "busy", "CloudDrive", 1, {{"name", name}, {"filling", std::string(3000, 'x')}});
            }
        });
    }
    std::for_each(threads.begin(), threads.end(), [](std::thread &thread) { thread.join(); });
    std::set<std::string> names;
    for (const auto &event : state.Read("busy")) {
        EXPECT_TRUE(names.insert(event["fields"]["name"].asString()).second);
    }
    EXPECT_EQ(names.size(), static_cast<size_t>(threadCount * eventCount));
}

} // namespace
