// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <cstdlib>
#include <future>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <sys/stat.h>

#include "note_builder.h"
#include "notes_test.h"

using namespace Nubis;
using namespace NubisTest;

namespace {
class ServiceLifeTest : public NotesTest {};

// Calls fail until the notice of the service's death has arrived; the next one connects anew.
template <typename Call>
auto OnceConnected(const Call &call)
{
    auto outcome = call();
    while (outcome.error.IsLocalError()) {
        outcome = call();
    }
    return outcome;
}

TEST_F(ServiceLifeTest, WhatWasAcknowledgedIsThereAfterTheServiceWasKilled)
{
    ASSERT_TRUE(AllSaved(Save(Database(), {Note("kept").Id("n1")})));
    const int pid = Service().Pid();
    Service().Kill();

    const auto fetched = OnceConnected([this] { return FetchById(Database(), "note", "n1"); });

    ASSERT_FALSE(fetched.error.HasError());
    EXPECT_EQ(TitleOf(fetched.record), "kept");
    EXPECT_NE(Service().Pid(), pid);
}

TEST_F(ServiceLifeTest, EveryCallOfManyThreadsCallsBackOnceWhileTheServiceDies)
{
    constexpr int THREADS = 16;
    constexpr int SAVES = 12;
    std::atomic<int> callbacks{0};
    std::atomic<int> saved{0};
    std::vector<std::promise<void>> done(static_cast<size_t>(THREADS) * SAVES);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREADS; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < SAVES; ++i) {
                const size_t number = static_cast<size_t>(thread) * SAVES + static_cast<size_t>(i);
                Database()->SaveRecord(std::make_shared<NBContext>(), Note("t").Id("id" + std::to_string(number)),
                    NB_SAVE_OVERWRITE,
                    [&, number](auto, auto, std::string, NBRecordOperResult result, const NBError &) {
                        callbacks.fetch_add(1);
                        saved.fetch_add(result.HasError() ? 0 : 1);
                        done[number].set_value();
                    });
            }
        });
    }
    done.front().get_future().wait();
    Service().Kill();
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (size_t i = 1; i < done.size(); ++i) {
        ASSERT_EQ(done[i].get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready);
    }

    EXPECT_EQ(callbacks.load(), THREADS * SAVES);
    const auto changes = OnceConnected([this] { return AllChanges(Database()); });
    EXPECT_GE(changes.records.size(), static_cast<size_t>(saved.load()));
}

TEST_F(ServiceLifeTest, ACallbackMayCallTheLibraryAndWait)
{
    std::promise<std::string> title;
    Database()->SaveRecord(std::make_shared<NBContext>(), Note("inside").Id("n"), NB_SAVE_OVERWRITE,
        [&](auto, std::shared_ptr<NBDatabase> database, std::string id, NBRecordOperResult, const NBError &) {
            title.set_value(TitleOf(FetchById(database, "note", id).record));
        });

    EXPECT_EQ(title.get_future().get(), "inside");
}

TEST_F(ServiceLifeTest, AnotherDeviceSeesTheRecordsOfThisOne)
{
    ASSERT_TRUE(AllSaved(Save(Database(), {Note("from here").Id("n1")})));

    std::string output;
    const std::string nubis = std::string("NUBIS_DEVICE_NAME=other ") + NUBIS_TEST_BIN + "/nubis ";
    ASSERT_EQ(RunCommand(nubis + "record get --bundle com.example.notes --type note n1 --json", output), 0) << output;
    EXPECT_THAT(output, testing::HasSubstr("from here"));
    output.clear();
    ASSERT_EQ(RunCommand(nubis + "record save --bundle com.example.notes --type note --new "
                                 "'{\"recordId\": \"n2\", \"title\": \"from there\"}' 2>&1",
                  output),
        0)
        << output;

    const auto fetched = FetchById(Database(), "note", "n2");
    EXPECT_EQ(TitleOf(fetched.record), "from there");
    EXPECT_EQ(fetched.record.GetRecordModifiedInfo().deviceName, "other");
}

TEST_F(ServiceLifeTest, FoldersAndSocketsAreTheUsersOwn)
{
    ASSERT_TRUE(AllSaved(Save(Database(), {Note("x").Id("n1")})));
    int checked = 0;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(Service().Folder())) {
        struct stat status {};
        ASSERT_EQ(lstat(entry.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 077U, 0U) << entry.path() << " is open to others";
        ++checked;
    }
    EXPECT_GT(checked, 5);
}

TEST(ServiceAbsent, WithoutAServiceEveryCallFailsAsNotConnected)
{
    DriveServiceProcess world;
    setenv("NUBIS_MANIFEST_PATH", world.Folder().c_str(), 1);
    const auto kit = NubisNative::GetInstance(100, NB_SYNC_DEMON_DATA);
    NBUserInfo info;

    EXPECT_EQ(kit->GetCloudUserInfo(info, false).GetLocalErrorCode(), NB_LOCAL_NOT_CONNECTED);
    EXPECT_EQ(kit->GetDefaultContainer(TEST_BUNDLE), nullptr);
}
} // namespace
