// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <csignal>
#include <fstream>
#include <future>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "child_process.h"
#include "drive_service_process.h"
#include "host/event_channel.h"
#include "row_reader.h"

// The commands about notifications against a real service, with this process as another one that takes part.
namespace NubisTool {
namespace {
using testing::HasSubstr;
using testing::MatchesRegex;

constexpr std::chrono::seconds PATIENCE(60);
constexpr const char *EVENT = "cloudData_notifyDataChange";
constexpr const char *BUNDLE = " --bundle com.example.notes";

class NotificationCommandsTest : public testing::Test {
protected:
    NotificationCommandsTest()
    {
        service_.InstallNotesCatalogue();
    }

    // The output, its last line the exit status.
    std::string Nubis(const std::string &arguments)
    {
        std::string output;
        int status = NubisTest::RunCommand(std::string(NUBIS_TEST_BIN) + "/nubis " + arguments + " 2>&1", output);
        return output + std::to_string(status);
    }

    void Save(const std::string &title)
    {
        EXPECT_THAT(Nubis(std::string("record save --type note --new '{\"title\": \"") + title + "\"}'" + BUNDLE),
            HasSubstr("saved"));
    }

    bool AwaitSubscription()
    {
        auto end = std::chrono::steady_clock::now() + PATIENCE;
        while (Nubis("subscription list").find(EVENT) == std::string::npos) {
            if (std::chrono::steady_clock::now() > end) {
                return false;
            }
        }
        return true;
    }

    static Json::Value NextLine(ChildProcess &program)
    {
        std::optional<std::string> line = program.ReadLine(PATIENCE);
        Json::Value json;
        std::string error;
        EXPECT_TRUE(line && ParseJsonText(*line, json, error)) << line.value_or("no line");
        return json;
    }

    ChildProcess StartWatch(const std::string &options)
    {
        return ChildProcess({{"sh", "-c", "exec " NUBIS_TEST_BIN "/nubis watch " + options}, {}, true, false});
    }

    NubisTest::DriveServiceProcess service_;
};

TEST_F(NotificationCommandsTest, AWatchShowsWhatIsAnnouncedAndRefusesForgeries)
{
    Save("before");
    ChildProcess watch = StartWatch("--json --subscribe --fetch --count 2 --bundle com.example.notes");
    ASSERT_TRUE(AwaitSubscription());
    Save("after");
    Json::Value notification = NextLine(watch);
    EXPECT_TRUE(notification["verified"].asBool());
    EXPECT_EQ(notification["containerName"], "notes");
    EXPECT_EQ(notification["databaseScopes"][0], "private");
    EXPECT_EQ(notification["recordTypes"][0], "note");
    EXPECT_EQ(NextLine(watch)["fields"]["title"], "after");

    std::string error;
    ASSERT_TRUE(Host::PublishEvent(100, EVENT, R"({"data": "{\"bundleName\":\"b\"}", "signV2": "00"})", error));
    Json::Value forged = NextLine(watch);
    EXPECT_FALSE(forged["verified"].asBool());
    EXPECT_THAT(forged["reason"].asString(), HasSubstr("signature"));
    EXPECT_EQ(watch.Wait(PATIENCE), 0);
    EXPECT_THAT(Nubis("subscription list --json"), "[]\n0") << "its own subscription went with it";
}

TEST_F(NotificationCommandsTest, AWatchLeavesSubscriptionsOfOthersAlone)
{
    EXPECT_THAT(Nubis(std::string("subscription add --for 3600") + BUNDLE), HasSubstr("/notes, until "));
    std::string listed = Nubis("subscription list --json");
    // What is sent as soon as it listens proves that it does.
    ChildProcess watch = StartWatch("--raw --subscribe --bundle com.example.notes");
    std::string error;
    auto end = std::chrono::steady_clock::now() + PATIENCE;
    std::optional<std::string> line;
    while (!line && std::chrono::steady_clock::now() < end) {
        ASSERT_TRUE(Host::PublishEvent(100, EVENT, "{}", error)) << error;
        line = watch.ReadLine(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(line, "{}");
    kill(watch.Pid(), SIGINT);
    EXPECT_EQ(watch.Wait(PATIENCE), 0);
    EXPECT_EQ(Nubis("subscription list --json"), listed);
}

TEST_F(NotificationCommandsTest, SubscriptionsAreAddedNotifiedVerifiedAndRemoved)
{
    EXPECT_THAT(Nubis(std::string("subscription add --container notes --container x") + BUNDLE),
        testing::AllOf(HasSubstr("com.example.notes/x: bundle"), HasSubstr("of com.example.notes/notes"),
            testing::EndsWith("\n1")));
    std::string listed = Nubis("subscription list --json");
    Json::Value list;
    std::string error;
    ASSERT_TRUE(ParseJsonText(listed.substr(0, listed.rfind('\n')), list, error)) << listed;
    std::string id = list[0]["id"].asString();

    std::promise<std::string> heard;
    Host::EventListener listener(100, EVENT, [&](const std::string &text) { heard.set_value(text); });
    ASSERT_TRUE(listener.Start(error)) << error;
    EXPECT_THAT(Nubis("subscription notify --trace mine " + id), MatchesRegex("notified .*\n0"));
    auto future = heard.get_future();
    ASSERT_EQ(future.wait_for(PATIENCE), std::future_status::ready);
    std::string file = (service_.Folder() / "notification").string();
    std::string text = future.get();
    std::ofstream(file) << text;
    EXPECT_THAT(Nubis("notify verify " + file), MatchesRegex("valid\n.*types      folder,note\ntrace id   mine\n0"));
    std::ofstream(file) << text.replace(text.find("com.example"), 3, "org");
    EXPECT_THAT(Nubis("notify verify " + file), MatchesRegex("not valid: its signature .*\n1"));

    EXPECT_THAT(Nubis("subscription remove nothing " + id), MatchesRegex("nubis: .*nothing was done\n.*\n1"));
    EXPECT_THAT(Nubis("subscription remove " + id), MatchesRegex("removed .*\n0"));
    EXPECT_EQ(Nubis("subscription list --json"), "[]\n0");
}
} // namespace
} // namespace NubisTool
