// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <sstream>
#include <string>

#include "end_to_end_fixture.h"
#include "row_reader.h"

namespace NubisTool {
namespace {
using testing::HasSubstr;

constexpr const char *BUNDLE = " --bundle com.example.notes ";
constexpr const char *DATABASE = " --bundle com.example.notes --type note ";

TEST_F(EndToEndTest, WhatIsImportedIsWhatIsReadBack)
{
    Put("notes.csv", "title,stars,tags,done\n\"Milk, \"\"fresh\"\"\",5,\"[\"\"a\"\",\"\"b\"\"]\",true\n日本語,,,0\n");
    ASSERT_EQ(RunLines(std::string("nubis record import --id-field title notes.csv >/dev/null") + DATABASE +
                       "&& nubis record query --json --order -stars" + DATABASE),
        0)
        << Errors();
    Json::Value records = Out();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0]["recordId"].asString(), "Milk, \"fresh\"");
    EXPECT_EQ(records[0]["fields"]["stars"].asInt(), 5);
    EXPECT_EQ(records[0]["fields"]["tags"][1].asString(), "b");
    EXPECT_TRUE(records[0]["fields"]["done"].asBool());
    EXPECT_EQ(records[1]["recordId"].asString(), "日本語");
    EXPECT_FALSE(records[1]["fields"].isMember("stars"));

    // What one service shows, another takes.
    Put("shown.json", out_);
    ASSERT_EQ(RunLines(std::string("nubis record import shown.json >/dev/null") + DATABASE +
                       "&& nubis record get 日本語 --json" + DATABASE),
        0)
        << Errors();
    EXPECT_EQ(Out()[0]["fields"], records[1]["fields"]);
}

TEST_F(EndToEndTest, ReferencesFindTheirRecordsWhateverTheirOrder)
{
    std::string rows;
    for (int i = 40; i > 0; --i) {
        std::string number = std::to_string(i);
        rows += "{\"recordId\": \"f" + number + "\", \"title\": \"t" + number + "\"" +
                (i > 1 ? ", \"parent\": \"f" + std::to_string(i - 1) + "\"" : "") + "}\n";
    }
    Put("folders.jsonl", rows);
    ASSERT_EQ(RunLines("nubis record import --bundle com.example.notes --type folder folders.jsonl --json"), 0)
        << Errors();
    EXPECT_EQ(Out()["saved"].asInt(), 40);
    EXPECT_EQ(Out()["requests"].asInt(), 40);
}

TEST_F(EndToEndTest, BadRowsAreNamedAndNothingIsSent)
{
    Put("bad.jsonl", "{\"title\": \"good\"}\n{\"title\": 7}\n{\"stars\": 1}\n");
    EXPECT_EQ(RunLines(std::string("nubis record import bad.jsonl") + DATABASE + "; s=$?; nubis record query --json" +
                       DATABASE + "; exit $s"),
        1);
    EXPECT_EQ(Out().size(), 0U);
    EXPECT_THAT(Errors(), HasSubstr("bad.jsonl:2: field title: expected a text"));
    EXPECT_THAT(Errors(), HasSubstr("bad.jsonl:3: field title: expected a value"));
}

TEST_F(EndToEndTest, RefusedRecordsAreNamedAndTheOthersSaved)
{
    Put("notes.jsonl",
        "{\"recordId\": \"a\", \"title\": \"x\"}\n{\"recordId\": \"b\", \"title\": \"y\", \"folder\": \"no\"}\n");
    EXPECT_EQ(RunLines(std::string("nubis record import notes.jsonl --json") + DATABASE), 1);
    EXPECT_EQ(Out()["saved"].asInt(), 1);
    EXPECT_EQ(Out()["refused"][0]["recordId"].asString(), "b");
    EXPECT_EQ(Out()["refused"][0]["line"].asInt(), 2);
    EXPECT_THAT(Errors(), HasSubstr("next: save the record that it refers to first"));

    EXPECT_EQ(RunLines(std::string("nubis record save --new --id a '{\"title\": \"1\"}' >/dev/null") + DATABASE +
                       "&& nubis record import --existing notes.jsonl >/dev/null" + DATABASE +
                       "; nubis record import notes.jsonl --json" + DATABASE),
        1);
    EXPECT_THAT(Errors(), HasSubstr("next: overwrite records that are there with `nubis record import --existing`"));
    ASSERT_EQ(Out()["refused"].size(), 2U);
    EXPECT_THAT(Out()["refused"][0]["reason"].asString(), HasSubstr("RECORD_EXISTS"));
}

TEST_F(EndToEndTest, ChangesGoOnFromTheirCursorAndFollowUntilEnded)
{
    std::string lines = "B='--bundle com.example.notes'\n"
                        "save() { nubis record save $B --type note \"$@\" >/dev/null || exit 98; }\n"
                        "save '{\"recordId\": \"n\", \"title\": \"one\"}' --new\n"
                        "cursor=$(nubis changes $B --json | sed -n 's/.*\"cursor\":\"\\([^\"]*\\)\".*/\\1/p')\n"
                        "nubis changes $B --since \"$cursor\" --follow --interval 0.02 --json >followed & follower=$!\n"
                        "save '{\"recordId\": \"n\", \"title\": \"two\"}'\n"
                        "i=0; until grep -q two followed || [ $i -gt 5000 ]; do i=$((i+1)); done\n"
                        "kill -TERM $follower; wait $follower || exit 97\n"
                        "cat followed\n";
    ASSERT_EQ(RunLines(lines), 0) << Errors();
    std::istringstream followed(out_);
    std::vector<Row> shown = ReadRows(followed, "followed", RowFormat::JSON);
    ASSERT_EQ(shown.size(), 2U) << out_;
    EXPECT_EQ(shown[0].values["fields"]["title"].asString(), "two");
    EXPECT_EQ(shown[0].values["version"].asInt(), 2);
    EXPECT_TRUE(shown[1].values["cursor"].isString());
}

TEST_F(EndToEndTest, SavePoliciesAreTheServices)
{
    std::string save = std::string("nubis record save --id n ") + DATABASE;
    EXPECT_EQ(
        RunLines(save + "--new '{\"title\": \"a\", \"stars\": 1}' && " + save + "'{\"stars\": 2}' && " + save +
                 "--policy unchanged '{\"version\": 1, \"stars\": 3}' || " + save +
                 "--policy overwrite '{\"title\": \"b\"}' --json >/dev/null && nubis record get n --json" + DATABASE),
        0);
    EXPECT_THAT(Errors(), HasSubstr("VERSION_CONFLICT"));
    EXPECT_THAT(out_, testing::StartsWith("saved note n, version 1\nsaved note n, version 2\n["));
    EXPECT_THAT(out_, testing::Not(HasSubstr("stars")));
}

TEST_F(EndToEndTest, SettingsAreChangedUnsetAndReset)
{
    ASSERT_EQ(RunLines("nubis config set ohNubisUseAsyncIPC 0 >/dev/null && nubis config unset checkAlive >/dev/null &&"
                       "nubis config set flowControl '{\"flowThreshold\": 5}' && nubis config reset flowControl &&"
                       "nubis config get checkAlive && nubis config get ohNubisUseAsyncIPC"),
        0)
        << Errors();
    const std::string lines = "flowControl is now {\"flowThreshold\":5}\n"
                              "flowControl is now {\"flowSpeedLimit\":0,\"flowThreshold\":0} (the default)\nunset\n0\n";
    EXPECT_EQ(out_, lines);

    EXPECT_EQ(RunLines("nubis config set flowControl fast || nubis config get noSuch"), 1);
    EXPECT_THAT(
        Errors(), HasSubstr("flowSpeedLimit\" and \"flowThreshold\", integers from 0 to 4294967295, came text"));
    EXPECT_THAT(Errors(), HasSubstr("there is no setting \"noSuch\"\n  next: see `nubis config list`"));
    EXPECT_EQ(RunLines("nubis config set flowControl '{flowThreshold: 5}'"), 2);
    EXPECT_EQ(RunLines("nubis config list"), 0);
    EXPECT_THAT(out_, HasSubstr("ohNubisUseAsyncIPC    1 "));
}

TEST_F(EndToEndTest, DeletedRecordsAreGoneAndTheirTombstonesTravel)
{
    EXPECT_EQ(RunLines(std::string("save() { nubis record save --new --id $1 '{\"title\": \"x\"}' >/dev/null") +
                       DATABASE + "; }\nsave a && save b && save c\nnubis record delete a --if-version 5" + DATABASE +
                       "\nnubis record delete a b nothing" + DATABASE + "\nnubis record get a" + DATABASE +
                       "\nnubis changes --bundle com.example.notes --json | grep -c '\"deleted\":true'"),
        0);
    EXPECT_EQ(out_, "deleted 0 records\ndeleted 2 records\n2\n");
    EXPECT_THAT(Errors(), HasSubstr("a: record \"a\" has version 1"));
    EXPECT_THAT(Errors(), HasSubstr("nothing: record \"nothing\" does not exist"));
    EXPECT_THAT(Errors(), HasSubstr("RECORD_"));
}

TEST_F(EndToEndTest, CataloguesAreCheckedByTheServiceItself)
{
    Put("broken.json", R"({"bundleName": "x", "appId": 5})");
    EXPECT_EQ(RunLines("nubis catalogue check broken.json; echo $?; nubis catalogue check \"$NOTES\" && "
                       "nubis catalogue show com.example.notes --json >show && nubis catalogue list"),
        0);
    EXPECT_THAT(Errors(), testing::AllOf(HasSubstr("broken.json: appId"), HasSubstr("\n  next: correct the file")));
    EXPECT_THAT(out_, testing::StartsWith("1\n"));
    EXPECT_THAT(out_, HasSubstr("com.example.notes  notes-1"));
    EXPECT_EQ(RunLines("nubis catalogue show unknown"), 1);
    EXPECT_THAT(Errors(), HasSubstr("no bundle unknown"));
    EXPECT_EQ(RunLines("nubis catalogue switches com.example.notes unknown"), 1);
    EXPECT_THAT(Errors(), HasSubstr("no bundle unknown"));
}

TEST_F(EndToEndTest, WhatTheServiceSettlesForABundleIsShown)
{
    Put("extra.json", R"({"bundleName": "com.example.extra", "appId": "x", "schemaGroupVersion": 1, "switchStatus": 2,
        "configParams": {"theme": "dark"}, "defaultContainer": {"name": "c", "schema": {"version": 1, "recordTypes": []},
        "recordIdRule": {"rootId": "top"}}})");
    EXPECT_EQ(
        RunLines("nubis catalogue apply extra.json >/dev/null && nubis catalogue params com.example.extra --json && "
                 "nubis catalogue switches com.example.extra --json && "
                 "nubis record new-ids --root --bundle com.example.extra && "
                 "nubis record new-ids --count 3 --bundle com.example.extra | sort -u | wc -l"),
        0)
        << Errors();
    EXPECT_EQ(out_, "{\n  \"theme\": \"dark\"\n}\n{\n  \"com.example.extra\": 2\n}\ntop\n3\n");
}

TEST_F(EndToEndTest, ExecGivesBackTheStatusAndLeavesNothing)
{
    EXPECT_EQ(RunLines("nubis service status --json; exit 7"), 7);
    EXPECT_TRUE(Out()["running"].asBool());
    EXPECT_FALSE(std::filesystem::exists(Out()["socket"].asString()));
    EXPECT_FALSE(std::filesystem::exists(Out()["dataFolder"].asString()));
    EXPECT_FALSE(std::filesystem::exists("/proc/" + Out()["pid"].asString() + "/exe"));
    EXPECT_EQ(RunLines("nubis service stop && nubis service stop && nubis user info --json"), 0) << Errors();
    EXPECT_THAT(out_, HasSubstr("the service has stopped\nthe service was not running\n{"));
}

TEST_F(EndToEndTest, ExecThatIsInterruptedWhileTheServiceStartsLeavesNoService)
{
    std::filesystem::create_directory("manifests");
    // The service interrupts everyone who waits for it, as a terminal does, before it comes up.
    Put("manifests/serve", "echo $$ >$FOLDER/service\nkill -INT -$(cat $FOLDER/group)\n"
                           "exec nubis-drive-service --data $1 --user $2 --idle-seconds 60\n");
    Put("manifests/com.orvane.tyra.aerostash.json",
        R"({"bundleName": "com.orvane.tyra.aerostash", "abilities": [{"name": "DriveServiceAbility",
            "exec": ["sh", "${manifestDir}/serve", "${state}/drive", "${user}"]}]})");
    EXPECT_EQ(NubisTest::RunCommand("export FOLDER=$PWD NUBIS_MANIFEST_PATH=$PWD/manifests\n"
                                    "setsid -w sh -c 'echo $$ >group; exec nubis service exec -- echo ran' 2>errors\n"
                                    "status=$?; test -e /proc/$(cat service)/exe && exit 99; exit $status",
                  out_),
        130);
    EXPECT_EQ(out_, "");
    EXPECT_THAT(Errors(), HasSubstr("interrupted while the fresh service was being started"));
}

TEST_F(EndToEndTest, WhatCannotBeRunIsToldAsShellsDo)
{
    EXPECT_EQ(NubisTest::RunCommand("nubis service exec -- no-such-program 2>errors", out_), 127);
    EXPECT_THAT(Errors(), HasSubstr("cannot start no-such-program"));
    EXPECT_EQ(RunLines("nubis lock exec --bundle com.example.notes -- \"$NOTES\""), 126);
}

TEST_F(EndToEndTest, BashCompletesWhatTheCommandsTake)
{
    Put("notes.csv", "title\n");
    const std::vector<std::pair<std::string, std::string>> lines = {{"rec", "record"}, {"record mod", "modify"},
        {"record query --sc", "--scope"}, {"record query --scope ", "private public shared"},
        {"record query --scope = pri", "private"}, {"record save --policy =", "merge overwrite unchanged"},
        {"record query --bundle ", ""}, {"record query --json --li", "--limit"}, {"record import no", "notes.csv"},
        {"report send e", "end"}, {"crid encode -n 1", "1 10"}, {"lock exec --bundle b -- cat no", "notes.csv"},
        {"demo-", ""}};
    std::string script = "source <(nubis completion bash)\n";
    for (const auto &[line, expected] : lines) {
        const std::string last = line.back() == ' ' ? " ''" : "";
        script += "COMP_WORDS=(nubis " + line + last + "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); " +
                  "_nubis 2>/dev/null; echo \"" + line + ": ${COMPREPLY[*]}\"\n";
    }
    Put("complete", script);
    ASSERT_EQ(NubisTest::RunCommand("bash complete", out_), 0);
    std::istringstream completed(out_);
    for (const auto &[line, expected] : lines) {
        std::string text;
        std::getline(completed, text);
        EXPECT_EQ(text, line + ": " + expected);
    }
}

TEST_F(EndToEndTest, ABackupBringsBackWhatWasThere)
{
    EXPECT_EQ(RunLines(std::string("save() { echo \"{\\\"title\\\": \\\"$1\\\"}\" | nubis record save") + DATABASE +
                       ">/dev/null; }\n"
                       "save kept && nubis service export $PWD/one >/dev/null && save late || exit 98\n"
                       "nubis service import $PWD/one && exit 97\n"
                       "nubis service import $PWD/one --replace >/dev/null || exit 96\n"
                       "nubis service export two >/dev/null && diff -r one two && nubis record query --json" +
                       DATABASE),
        0)
        << Errors();
    ASSERT_EQ(Out().size(), 1U);
    EXPECT_EQ(Out()[0]["fields"]["title"].asString(), "kept");
    EXPECT_THAT(Errors(), HasSubstr("--replace"));
}

TEST_F(EndToEndTest, SecretsAreWrittenOnlyOnRequest)
{
    for (const char *secret : {"key common --data-type 1 --key-type 2", "token"}) {
        const std::string command = std::string("nubis ") + secret + BUNDLE;
        ASSERT_EQ(
            RunLines("secret=$(" + command + "--show) || exit 98\n" + command +
                     "--json >shown; grep -q \"$secret\" shown && exit 97\n"
                     "grep -q $(printf %s \"$secret\" | sha256sum | cut -c1-64) shown && printf %s $secret | wc -c"),
            0)
            << Errors();
        EXPECT_THAT(out_, testing::AnyOf("64\n", "43\n")) << secret;
    }
    ASSERT_EQ(RunLines(std::string("nubis key service --show --json >one") + BUNDLE +
                       "&& nubis key user --show --json >two" + BUNDLE + "&& cmp one two && cat one"),
        0)
        << Errors();
    Json::Value keys = Out();
    ASSERT_EQ(keys.size(), 2U);
    EXPECT_EQ(keys[0]["secret"].asString().size(), 34U);
    EXPECT_EQ(keys[1]["secret"].asString().size(), 66U);
    EXPECT_EQ(keys[1]["id"].asString().size(), 32U);
}

TEST_F(EndToEndTest, MilestonesAreKeptAndListedNewestLast)
{
    const std::string send = "nubis report send --bundle com.example.notes ";
    ASSERT_EQ(RunLines(send + "prepare >/dev/null && " + send +
                       "end --trace run_1 --error-code 7 --error-message full records=12 pn=mine &&"
                       "echo broken >>$NUBIS_STATE_DIR/events/NubisSDK_100.jsonl && nubis report list &&"
                       "nubis report list --limit 1 --json >last && nubis report list --json --trace run_1 >run_1 &&"
                       "grep -c traceID last run_1"),
        0)
        << Errors();
    EXPECT_THAT(out_, testing::StartsWith("reported cloudsync_sync_end, trace run_1\n"));
    EXPECT_THAT(out_, testing::ContainsRegex("sync_prepare(.|\n)*O&M .*sync_end .* run_1 +7 +full +records=12\n"
                                             ".* operation .*sync_end .*\nlast:1\nrun_1:2\n$"));
    EXPECT_THAT(Errors(), HasSubstr("a field \"pn\" of its own; yours was left out"));
    EXPECT_THAT(Errors(), HasSubstr("left out what is no event: 1 line"));
    EXPECT_THAT(Errors(), HasSubstr("there are 3 older ones"));

    // The library says nothing of events that cannot be kept.
    EXPECT_EQ(RunLines("mkdir $NUBIS_STATE_DIR/events; ln -s nowhere $NUBIS_STATE_DIR/events/NubisSDK_100.jsonl; " +
                       send + "start"),
        1);
    EXPECT_THAT(Errors(), HasSubstr("the event client did not keep the report"));
}

TEST_F(EndToEndTest, TheDemoHolds)
{
    ASSERT_TRUE(std::filesystem::exists("/usr/share/iso-codes/json")) << "install Debian's package iso-codes";
    EXPECT_EQ(NubisTest::RunCommand("nubis demo --json 2>errors", out_), 0) << Errors();
    EXPECT_TRUE(Out()["held"].asBool()) << out_;
    EXPECT_EQ(Errors(), "");
}
} // namespace
} // namespace NubisTool
