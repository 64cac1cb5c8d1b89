// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// A test like any other: the service that it asks is there, knows the catalogue, and is empty, because CMakeLists.txt
// says nubis_add_service_test.

#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

#include "best_notes.h"
#include "nubis_async.h"

using namespace Nubis;

namespace {
class BestNotesTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NE(container_, nullptr) << "the service does not know com.example.notes";
    }

    void Write(const std::string &title, int stars)
    {
        NBRecord note;
        note.SetRecordType("note");
        note.SetNewCreate(true);
        note.SetRecordData({{"title", NBRecordField(title)}, {"stars", NBRecordField(stars)}});
        const auto saved = Async::SaveRecord(database_, note, NB_SAVE_OVERWRITE).Start().get();
        ASSERT_FALSE(saved.error.HasError() || saved.result.HasError()) << title;
    }

    const std::shared_ptr<NBContainer> container_ =
        NubisNative::GetInstance(100, NB_SYNC_DEMON_DATA)->GetDefaultContainer("com.example.notes");
    const std::shared_ptr<NBDatabase> database_ = container_ == nullptr ? nullptr : container_->GetPrivateDatabase();
};

TEST_F(BestNotesTest, AreThoseWithTheMostStars)
{
    Write("Rome", 4);
    Write("Taxes", 1);
    Write("Oslo", 5);
    Write("Cork", 4);
    EXPECT_EQ(BestNotes(database_, 2), (std::vector<std::string>{"Oslo", "Cork"}));
}

TEST_F(BestNotesTest, FailWithoutADatabase)
{
    EXPECT_THROW(BestNotes(nullptr, 2), std::system_error);
}
} // namespace
