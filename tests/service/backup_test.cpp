// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <fstream>
#include <future>
#include <map>
#include <sstream>
#include <thread>
#include <utility>

#include <sys/stat.h>

#include "account/settings.h"
#include "host/event_channel.h"
#include "host/paths.h"
#include "service_fixture.h"
#include "util/encoding.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

using testing::HasSubstr;

void WriteText(const std::filesystem::path &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary) << text;
}

// Changes a file and its digest in the manifest, as somebody who means it would.
void Forge(const std::string &folder, const std::string &name, const std::string &from, const std::string &to)
{
    std::string text = ReadText(folder + "/" + name);
    std::string before = HexEncode(Sha256(text));
    text.replace(text.find(from), from.size(), to);
    WriteText(folder + "/" + name, text);
    std::string manifest = ReadText(folder + "/manifest.json");
    WriteText(folder + "/manifest.json", manifest.replace(manifest.find(before), 64, HexEncode(Sha256(text))));
}

class BackupTest : public ServiceTest {
protected:
    // Something of everything that a service keeps.
    void Fill()
    {
        Save(List({NewPerson("p1", R"({'name': 'Zoë \n \u0000', 'age': -7, 'height': 0.1, 'tags': ['a', 'b']})"),
            NewPerson("p2"), NewPerson("p3", "{'name': 'gone'}")}));
        Delete("p3");
        Save(List({J(R"({'recordId': 'm', 'recordType': 'media', 'isNew': true, 'baseVersion': 0, 'attachments':
            [{'assetName': 'a', 'size': 3, 'sha256': 'ab'}]})"),
            J(R"({'recordId': 'g', 'recordType': 'group', 'isNew': true, 'baseVersion': 0, 'title': 't'})")}));
        Ask("saveSubscription", J("{'signVersion': 2, 'saName': 'told'}"));
        Ask("setSetting", J("{'name': 'checkAlive', 'value': 0}"));
        for (const char *made : {"getServiceKey", "getAccessToken", "getRecordIdRules", "GetCloudUserInfo"}) {
            EXPECT_THAT(Ask(made), Succeeds());
        }
        commonKey_ = Ask("getCommonKey", J("{'dataType': 1, 'keyType': 2}"))["key"].asString();
    }

    // Another service on fresh data takes the place of this one.
    void Move(const std::string &name)
    {
        service_.reset();
        service_ =
            std::make_unique<ServiceInstance>(folder_.Path() + "/" + name, 100, [this] { return nowMs_.load(); });
    }

    Json::Value Export(const std::string &folder)
    {
        return Ask("exportData", Members({{"folder", folder}}));
    }
    Json::Value Import(const std::string &folder, bool replace = false)
    {
        return Ask("importData", Members({{"folder", folder}, {"replace", replace}}));
    }

    const std::string a_ = folder_.Path() + "/a";
    const std::string b_ = folder_.Path() + "/b";
    std::string commonKey_;
};

TEST_F(BackupTest, WhatIsImportedIsExportedAsTheSameBytes)
{
    Fill();
    Json::Value reply = Export(a_);
    ASSERT_THAT(reply, Succeeds());
    EXPECT_EQ(reply["backup"]["files"][1]["entries"], 5) << "the deleted one is among them";
    EXPECT_EQ(Bytes(a_).size(), 7u);
    for (const auto &entry : std::filesystem::recursive_directory_iterator(a_)) {
        struct stat info {};
        stat(entry.path().c_str(), &info);
        EXPECT_EQ(info.st_mode & 0777, entry.is_directory() ? 0700u : 0600u) << entry.path();
    }
    EXPECT_THAT(ReadText(a_ + "/settings.jsonl"),
        testing::AllOf(HasSubstr(commonKey_), testing::Not(HasSubstr("accessToken"))));
    Json::Value person = Fetch("p1");
    std::string cursor = Ask("getStartCursor")["startCursor"].asString();

    Move("other");
    ASSERT_THAT(Import(a_), Succeeds());
    ASSERT_THAT(Export(b_ + "/"), Succeeds());
    EXPECT_EQ(Bytes(b_), Bytes(a_));
    EXPECT_EQ(Fetch("p1"), person);
    EXPECT_THAT(Find("name=Ann"), testing::ElementsAre("p2"));
    EXPECT_THAT(Ask("fetchDatabaseChanges", Members({{"cursor", cursor}})),
        FailsWith(ErrorCode::INVALID_CURSOR, "or to its data before an import", "cursor"));
    EXPECT_EQ(Ask("fetchDatabaseChanges")["changes"].size(), 5u);
    EXPECT_THAT(SaveOne(NewPerson("p4", "{'name': 'new'}")), Succeeds());

    // What a running service serves and knows is not lost by going back.
    Ask("saveSubscription", J("{'signVersion': 2, 'saName': 'later'}"));
    EXPECT_THAT(Import(a_), FailsWith(ErrorCode::INVALID_ARGUMENT, "there are records already", "replace"));
    cursor = Ask("getStartCursor")["startCursor"].asString();
    ASSERT_TRUE(service_->GetNotifier().Finish(std::chrono::seconds(60)));
    std::promise<void> told;
    Host::EventListener listener(Host::DEFAULT_USER_ID, "told", [&, isFirst = true](const std::string &) mutable {
        if (std::exchange(isFirst, false)) {
            told.set_value();
        }
    });
    std::string error;
    ASSERT_TRUE(listener.Start(error)) << error;
    ASSERT_THAT(Import(a_, true), Succeeds());
    EXPECT_EQ(told.get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready)
        << "who follows hears that everything may have changed";
    EXPECT_THAT(Fetch("p4"), FailsWith(ErrorCode::RECORD_NOT_FOUND, "p4", "recordId"));
    SaveOne(NewPerson("p5", "{'name': 'as far as before'}"));
    EXPECT_EQ(Ask("fetchDatabaseChanges", Members({{"cursor", cursor}}))["code"], 1008);
    EXPECT_EQ(Ask("getSubscriptions")["subscriptions"].size(), 2u);
}

TEST_F(BackupTest, AFailedExportLeavesTheOldOneAndNothingElse)
{
    Fill();
    ASSERT_THAT(Export(a_), Succeeds());
    auto before = Bytes(a_);
    SaveOne(NewPerson("p4", "{'name': 'new'}"));
    SqliteConnection connection(DataPaths(folder_.Path(), 100).database);
    connection.Execute("UPDATE record SET data = '{' WHERE record_id = 'p4'");
    EXPECT_THAT(Export(a_), FailsWith(ErrorCode::STORE_FAILED, "the data of record \"p4\" is damaged", ""));
    EXPECT_EQ(Bytes(a_), before);
    connection.Execute("DELETE FROM record WHERE record_id = 'p4'");
    ASSERT_THAT(Export(a_), Succeeds());
    EXPECT_NE(Bytes(a_), before) << "the sequence has gone on";

    std::filesystem::create_directory(b_);
    ASSERT_THAT(Export(b_), Succeeds()) << "an empty folder is a place for one";
    std::filesystem::remove(b_ + "/manifest.json");
    EXPECT_THAT(Export(b_), FailsWith(ErrorCode::INVALID_ARGUMENT, b_ + " is there and is no backup", "folder"));
    WriteCatalogueFile("broken.json", "{");
    EXPECT_THAT(Export(a_), FailsWith(ErrorCode::INTERNAL_ERROR, "broken.json is broken; mend or remove it", ""));
    std::filesystem::remove(DataPaths::CatalogueOf(folder_.Path()) + "/broken.json");
    EXPECT_THAT(Export("a"), FailsWith(ErrorCode::INVALID_ARGUMENT, "expected the absolute path", "folder"));
    EXPECT_THAT(Export(folder_.Path() + "/none/a"), FailsWith(ErrorCode::INTERNAL_ERROR, "/none/a: No such file", ""));
    for (const auto &entry : std::filesystem::directory_iterator(folder_.Path())) {
        EXPECT_NE(entry.path().filename().string().front(), '.') << entry.path();
    }
}

TEST_F(BackupTest, ADamagedOrForeignFolderChangesNothing)
{
    Fill();
    ASSERT_THAT(Export(a_), Succeeds());
    auto before = Bytes(a_);
    std::string cursor = Ask("getStartCursor")["startCursor"].asString();
    struct Damage {
        std::function<void()> make;
        std::string text;
    };
    auto forge = [this](
                     const char *name, const char *from, const char *to) { return [=] { Forge(b_, name, from, to); }; };
    const std::vector<Damage> damages{
        {[&] { std::filesystem::remove(b_ + "/manifest.json"); }, "is no backup: manifest.json: No such file"},
        {[&] { WriteText(b_ + "/manifest.json", R"({"format": "x"})"); }, "the manifest of something else"},
        {[&] { WriteText(b_ + "/manifest.json", R"({"format": "nubis-drive-backup", "version": 2})"); },
            "is a backup of version 2, this program knows versions up to 1; use a newer program"},
        {[&] { std::filesystem::remove(b_ + "/assets.jsonl"); }, "assets.jsonl: cannot open"},
        {[&] { std::filesystem::resize_file(b_ + "/records.jsonl", 700); }, "records.jsonl: "},
        {[&] {
             std::string text = ReadText(b_ + "/records.jsonl");
             WriteText(b_ + "/records.jsonl", text.replace(text.find("Ann"), 3, "Eve"));
         },
            "records.jsonl: its SHA-256 is not that of the manifest"},
        {forge("records.jsonl", "\"p2\"", "\"p1\""), "records.jsonl: line 4: it has a key of a row before it"},
        {forge("records.jsonl", "\"sequence\":2,", "\"sequence\":99,"), "impossible version or sequence: \"p2\""},
        {forge("records.jsonl", "\"deleted\"", "\"removed\""), "line 1: member \"deleted\" is missing"},
        {forge("settings.jsonl", "commonKey/1/2", "lock/x/y"), "a setting of this name is in no backup"},
        {forge("catalogue/com.example.people.json", "\"person\"", "5"), "catalogue/com.example.people.json: "},
    };
    for (const Damage &damage : damages) {
        std::filesystem::remove_all(b_);
        std::filesystem::copy(a_, b_, std::filesystem::copy_options::recursive);
        damage.make();
        EXPECT_THAT(Import(b_, true), FailsWith(ErrorCode::INVALID_ARGUMENT, damage.text, "folder"));
    }
    Ask("getLock");
    EXPECT_THAT(Import(a_, true), FailsWith(ErrorCode::LOCK_HELD, "container \"people\"", ""));
    ASSERT_THAT(Export(b_), Succeeds()) << "b is still a backup to the eye, and replaced";
    EXPECT_EQ(Bytes(b_), before);
    EXPECT_THAT(Ask("fetchDatabaseChanges", Members({{"cursor", cursor}})), Succeeds());
}

TEST_F(BackupTest, WritersGoOnWhileOthersExportAndImport)
{
    constexpr int WRITERS = 3;
    constexpr int LEAST_SAVES = 30;
    Fill();
    ASSERT_THAT(Export(a_), Succeeds());
    std::atomic<bool> imported{false};
    std::vector<std::vector<std::string>> saved(WRITERS);
    std::vector<std::thread> writers;
    writers.reserve(WRITERS);
    std::atomic<int> begun{0};
    for (int i = 0; i < WRITERS; ++i) {
        writers.emplace_back([&, i] {
            for (int count = 0; count < LEAST_SAVES || !imported; ++count) {
                saved[i].push_back("w" + std::to_string(i) + "-" + std::to_string(count));
                SaveOne(NewPerson(saved[i].back(), "{'name': '" + saved[i].back() + "'}"));
                ++begun;
            }
            saved[i].push_back("last" + std::to_string(i));
            SaveOne(NewPerson(saved[i].back(), "{'name': '" + saved[i].back() + "'}"));
        });
    }
    while (begun < WRITERS) {
        std::this_thread::yield();
    }
    EXPECT_THAT(Export(b_), Succeeds());
    EXPECT_THAT(Import(a_, true), Succeeds());
    imported = true;
    for (std::thread &writer : writers) {
        writer.join();
    }
    for (const std::vector<std::string> &ids : saved) {
        bool isAfter = false;
        for (const std::string &id : ids) {
            bool isThere = Fetch(id)["code"] == 0 || Fetch(id).isMember("recordId");
            EXPECT_TRUE(isThere || !isAfter) << id << " is lost, although it was saved after one that is there";
            isAfter = isAfter || isThere;
        }
        EXPECT_TRUE(isAfter);
    }
    Move("other");
    EXPECT_THAT(Import(b_), Succeeds()) << "what was exported under load is whole";
}

TEST_F(BackupTest, ACatalogueThatCouldNotBeWrittenIsWrittenByTheNextService)
{
    Fill();
    ASSERT_THAT(Export(a_), Succeeds());
    Move("other");
    WriteText(folder_.Path() + "/other/catalogue", "in the way");
    EXPECT_THAT(Import(a_), FailsWith(ErrorCode::INTERNAL_ERROR, "imported, but not its catalogue", ""));
    EXPECT_THROW(Move("other"), std::runtime_error);
    std::filesystem::remove(folder_.Path() + "/other/catalogue");
    Move("other");
    ASSERT_THAT(Export(b_), Succeeds());
    EXPECT_EQ(Bytes(b_), Bytes(a_));
}

} // namespace

} // namespace DriveService
