// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cstring>
#include <string>

#include "note_builder.h"
#include "notes_test.h"

using namespace Nubis;
using namespace NubisTest;

namespace {
// What the operations of one client promise in the face of others.
class LocksTest : public NotesTest {
protected:
    static int SaveFromAnotherProcess(const std::string &recordId, std::string &output)
    {
        output.clear();
        return RunCommand(std::string(NUBIS_TEST_BIN) +
                              "/nubis record save --bundle com.example.notes --type note --new '{\"recordId\": \"" +
                              recordId + "\", \"title\": \"theirs\"}' 2>&1",
            output);
    }
};

TEST_F(LocksTest, ALockKeepsOthersOutWhileItIsHeld)
{
    NBLock lock;
    ASSERT_FALSE(Database()->GetLock(lock).HasError());
    EXPECT_GT(lock.lockInterval, 0);
    EXPECT_EQ(Database()->GetLockSessionId(), lock.lockSessionId);

    std::string output;
    EXPECT_NE(SaveFromAnotherProcess("n1", output), 0);
    EXPECT_THAT(output, testing::HasSubstr("locked by another session"));
    const auto shared = Container()->GetSharedDatabase();
    EXPECT_EQ(Save(shared, {Note("x").Id("s1")}).error.GetServerErrorCode(), 1012);
    EXPECT_TRUE(AllSaved(Save(Database(), {Note("mine").Id("n2")})));
    NBLock again = lock;
    ASSERT_FALSE(Database()->GetLock(again).HasError());
    EXPECT_EQ(again.lockSessionId, lock.lockSessionId);

    ASSERT_FALSE(Database()->DeleteLock(lock).HasError());
    EXPECT_EQ(SaveFromAnotherProcess("n1", output), 0) << output;
    EXPECT_EQ(TitleOf(FetchById(Database(), "note", "n1").record), "theirs");
}

TEST_F(LocksTest, AnAtomicChangeIsSeenAsAWholeOrNotAtAll)
{
    ASSERT_TRUE(AllSaved(Save(Database(), {Folder("f").Id("f1"), Note("a").Id("n1")})));
    const NBRecord lost = Note("lost").Id("n3").With("folder", InFolder("nowhere"));

    const auto refused = Modify(Database(), {Note("b").Id("n2"), lost}, {Note("").Id("n1").Existing(1)}, true);

    EXPECT_FALSE(refused.error.HasError());
    EXPECT_EQ(refused.saved.at("n2").GetServerErrorCode(), 1111);
    EXPECT_THAT(refused.saved.at("n3").GetErrorMsg(), testing::HasSubstr("nowhere"));
    EXPECT_EQ(refused.deleted.at("n1").GetServerErrorCode(), 1111);
    EXPECT_EQ(AllChanges(Database()).records.size(), 2U);

    const auto done =
        Modify(Database(), {Note("b").Id("n2")}, {Note("").Id("n1").Existing(1), Folder("").Id("f1")}, true);
    EXPECT_FALSE(
        done.saved.at("n2").HasError() || done.deleted.at("n1").HasError() || done.deleted.at("f1").HasError());
    EXPECT_TRUE(FetchById(Database(), "note", "n1").error.IsServerError());
    EXPECT_EQ(TitleOf(FetchById(Database(), "note", "n2").record), "b");
}

TEST_F(LocksTest, RecordsAreCopiedAndPreShared)
{
    ASSERT_TRUE(AllSaved(Save(Database(), {Note("a").Id("n1").With("stars", NBRecordField(3))})));
    NBRecord target = RecordBuilder("note").With("title", NBRecordField("b"));

    const auto copied = Copy(Database(), {{target, "n1"}, {target, "nobody"}});

    EXPECT_FALSE(copied.error.HasError());
    ASSERT_EQ(copied.results.size(), 2U);
    int made = 0;
    for (const auto &[id, result] : copied.results) {
        if (!result.HasError()) {
            ++made;
            const NBRecord copy = FetchById(Database(), "note", id).record;
            EXPECT_EQ(JsonOf(copy), JsonOf(Note("b").With("stars", NBRecordField(3))));
            EXPECT_FALSE(copy.GetShared());
            EXPECT_TRUE(PreShare(Database(), "note", id).record.GetShared());
            EXPECT_TRUE(FetchById(Database(), "note", id).record.GetShared());
        }
    }
    EXPECT_EQ(made, 1);
    EXPECT_TRUE(PreShare(Database(), "note", "nobody").error.IsServerError());
}

TEST_F(LocksTest, KeysAndTheTokenOutliveTheService)
{
    const auto keys = Database()->GetUserKey("");
    const std::string common = Database()->GetCommonKey(1, 2);
    const std::string token = Database()->GetAT();
    EXPECT_EQ(keys->userId, "100");
    EXPECT_EQ(common.size(), 64U);
    EXPECT_NE(Database()->GetCommonKey(2, 1), common);
    EXPECT_FALSE(token.empty());
    Service().Kill();
    while (FetchById(Database(), "note", "n1").error.IsLocalError()) {
    }

    EXPECT_EQ(Database()->GetCommonKey(1, 2), common);
    EXPECT_EQ(Database()->GetAT(), token);
    Database()->GetServiceKey();
    const auto kept = Database()->GetUserKey("");
    EXPECT_EQ(std::memcmp(kept->efek, keys->efek, sizeof(keys->efek)), 0);
    EXPECT_STREQ(kept->sfekUuid, keys->sfekUuid);
}
} // namespace
