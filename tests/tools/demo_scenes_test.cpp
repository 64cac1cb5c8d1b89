// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "demo_arrival.h"
#include "demo_forger.h"
#include "demo_scenes.h"
#include "host_folders.h"
#include "nubis_kit.h"
#include "record_json.h"
#include "row_reader.h"

// The scenes on a stage where everything is as it should be, and on stages where one thing is not.
namespace NubisTool {
namespace {

Json::Value Parsed(const std::string &text)
{
    Json::Value value;
    std::string error;
    EXPECT_TRUE(ParseJsonText(text, value, error)) << error;
    return value;
}

// The service and what the devices of the demo hold, unless it does what is `wrong`.
class World {
public:
    explicit World(std::string wrong) : wrong_(std::move(wrong))
    {
        for (const char *id : {"1", "2"}) {
            records_[id] = Parsed(R"({"version": 1, "fields": {"name": "n", "officialName": "o"}})");
            records_[id]["recordId"] = id;
        }
    }

    Json::Value Obey(const std::string &device, const Json::Value &order)
    {
        const std::string name = order["order"].asString();
        Json::Value answer(Json::objectValue);
        if (name == "save") {
            return Save(device, order);
        }
        if (name == "await") {
            std::swap(answer, arrivals_[device]);
            answer["late"] =
                answer["actions"].get(order["action"].asString(), 0).asUInt() < order["notifications"].asUInt() ||
                answer["refused"].size() < order["refusals"].asUInt();
        } else if (name == "pick") {
            for (const auto &record : records_) {
                answer["records"].append(record.second);
            }
        } else if (name == "read" || name == "fetch") {
            answer = records_[order["recordId"].asString()];
        } else if (name == "lock") {
            lockedBy_ = device;
            answer["interval"] = 60;
        } else if (name == "unlock") {
            lockedBy_.clear();
        } else if (name == "subscribe") {
            isSubscribed_ = Is("sends without a subscription");
            answer["subscription"] = "s1";
        } else if (name == "subscribe anew") {
            isSubscribed_ = true;
            answer["subscription"] = "s2";
        } else if (name == "notify me") {
            answer["notified"] = isSubscribed_;
            answer["reason"] = isSubscribed_ ? "" : "UNKNOWN_SUBSCRIPTION";
        }
        return answer;
    }

    void Publish(const std::string &text)
    {
        Json::Value &arrival = arrivals_["B"];
        const bool isInTime = isSubscribed_ || Is("believes for ever");
        if ((text == GENUINE && isInTime) || Is("believes forgeries")) {
            arrival["actions"]["last"] = 1;
            arrival["requests"] = 1;
            arrival["records"] = Is("reads again") ? 1 : 0;
        } else {
            arrival["refused"].append("forged or expired");
            arrival["requests"] = Is("reads all the same") ? 1 : 0;
        }
    }

    static constexpr const char *GENUINE =
        R"({"data":"{\"recordTypes\":\"[\\\"Country\\\"]\"}","signV2":"00","x-ov-trace-id":""})";

private:
    bool Is(const std::string &wrong) const
    {
        return wrong_ == wrong;
    }

    Json::Value Save(const std::string &device, const Json::Value &order)
    {
        Json::Value &record = records_[order["record"]["recordId"].asString()];
        const Json::Value &fields = order["record"]["fields"];
        Json::Value answer;
        answer["saved"] = false;
        if (!lockedBy_.empty() && device != lockedBy_ && !Is("ignores locks")) {
            answer["reason"] = "LOCK_HELD";
            return answer;
        }
        if (order["policy"] == 0 && order["record"]["version"] != record["version"] && !Is("ignores versions")) {
            answer["reason"] = "VERSION_CONFLICT";
            return answer;
        }
        if ((order["policy"] == 2 && !Is("merges what overwrites")) || (order["policy"] == 1 && Is("overwrites all"))) {
            record["fields"] = Json::Value(Json::objectValue);
        }
        for (const std::string &name : fields.getMemberNames()) {
            record["fields"][name] = fields[name];
        }
        record["version"] = record["version"].asUInt() + 1;
        answer["saved"] = true;
        Announce(record["recordId"], order["action"].asString());
        return answer;
    }

    void Announce(const Json::Value &recordId, const std::string &action)
    {
        if (!isSubscribed_ && Is("forgets the unannounced")) {
            return;
        }
        for (const char *device : {"A", "B"}) {
            arrivals_[device]["changed"].append(recordId);
            if (isSubscribed_) {
                arrivals_[device]["actions"][action] = 1;
            }
        }
    }

    std::string wrong_;
    std::map<std::string, Json::Value> records_;
    std::map<std::string, Json::Value> arrivals_;
    std::string lockedBy_;
    bool isSubscribed_ = true;
};

class FakeDevice : public DemoDevice {
public:
    FakeDevice(World &world, std::string name) : world_(world), name_(std::move(name))
    {}

    Json::Value Do(const Json::Value &order) override
    {
        return world_.Obey(name_, order);
    }

private:
    World &world_;
    std::string name_;
};

// Whether what is judged holds, and what the report says of it.
template <typename Judge>
bool Holds(Judge &&judge, std::string &said)
{
    std::istringstream in;
    std::ostringstream out;
    Console console{in, out, out, false};
    DemoReport report(console, false);
    report.Step("only");
    judge(report);
    said = out.str();
    return report.Held();
}

TEST(DemoScenes, HoldOnlyWhereNothingIsWrong)
{
    const DemoForger forger;
    const std::vector<std::function<void(DemoStage &)>> scenes = {
        [&forger](DemoStage &stage) { PlayForgeryScene(stage, forger); }, PlayExpiryScene, PlayConflictScene,
        PlayLockScene};
    // For each wrong the scene that must notice.
    const std::map<std::string, size_t> wrongs = {{"believes forgeries", 0}, {"reads again", 0},
        {"reads all the same", 0}, {"sends without a subscription", 1}, {"believes for ever", 1},
        {"forgets the unannounced", 1}, {"ignores versions", 2}, {"overwrites all", 2}, {"merges what overwrites", 2},
        {"ignores locks", 3}};
    auto play = [&scenes](const std::string &wrong, size_t scene, std::string &said) {
        return Holds(
            [&](DemoReport &report) {
                World world(wrong);
                FakeDevice first(world, "A");
                FakeDevice second(world, "B");
                DemoStage stage(report, first, second);
                stage.publish = [&world](const std::string &text) { world.Publish(text); };
                stage.lastNotification = World::GENUINE;
                stage.lastAction = "last";
                scenes[scene](stage);
            },
            said);
    };
    std::string said;
    for (size_t scene = 0; scene < scenes.size(); ++scene) {
        EXPECT_TRUE(play("", scene, said)) << said;
    }
    for (const auto &[wrong, scene] : wrongs) {
        EXPECT_FALSE(play(wrong, scene, said)) << wrong << said;
    }
}

TEST(DemoArrival, MustBeAnnouncedCompleteAndNothingBesides)
{
    const Json::Value sent = Parsed(R"({"transactions": 2, "types": ["Country"], "added": ["a"], "removed": ["b"]})");
    const std::string good = R"({"actions": {"x": 2}, "announced": ["private/Country"], "asked": ["private/Country"],
        "requests": 2, "records": 2, "added": ["a"], "removed": ["b"], "changed": [], "late": false})";
    const std::map<std::string, std::string> wrongs = {{"unannounced", R"({"actions": {"x": 1}})"},
        {"another's change", R"({"actions": {"x": 2, "y": 1}})"}, {"a refused one", R"({"refused": ["forged"]})"},
        {"asked for too much", R"({"asked": ["private/Country", "private/Language"]})"},
        {"asked for too little", R"({"asked": []})"}, {"lost", R"({"added": []})"}, {"twice", R"({"records": 3})"},
        {"surplus", R"({"changed": ["c"], "records": 3})"}, {"late", R"({"late": true})"}};
    std::string said;
    auto judge = [&sent, &said](const Json::Value &arrival) {
        return Holds([&](DemoReport &report) { CheckArrival(report, sent, "x", arrival); }, said);
    };
    EXPECT_TRUE(judge(Parsed(good))) << said;
    for (const auto &[wrong, members] : wrongs) {
        Json::Value arrival = Parsed(good);
        const Json::Value changes = Parsed(members);
        for (const std::string &name : changes.getMemberNames()) {
            arrival[name] = changes[name];
        }
        EXPECT_FALSE(judge(arrival)) << wrong << said;
    }
}

// Otherwise what the demo calls signed with another key would be refused for being no signature at all.
TEST(DemoForger, SignsAsTheServiceDoesButForItsKey)
{
    NubisTest::HostFolders folders;
    auto kit = Nubis::NubisNative::GetInstance(100);
    DemoForger forger;
    Json::Value reply;
    reply["userInfo"]["pushKeyValue"] = forger.PublicKey();
    Nubis::NBUserInfo user;
    kit->GetUserInfoFromJson(reply, user);
    const Json::Value forgery = forger.Sign(Parsed(World::GENUINE));
    EXPECT_FALSE(kit->VerifyNotificationFromJson(forgery).HasError());
    EXPECT_TRUE(kit->VerifyNotificationFromJson(WithAnnounced(forgery, "Language")).HasError());
    EXPECT_TRUE(kit->VerifyNotificationFromJson(DemoForger().Sign(forgery)).HasError());
}
} // namespace
} // namespace NubisTool
