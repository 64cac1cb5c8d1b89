// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_NOTES_TEST_H
#define NUBIS_TEST_NOTES_TEST_H

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drive_service_process.h"
#include "nb_container.h"
#include "nubis_kit.h"

namespace NubisTest {
// A real drive service of its own with the test bundle's catalogue, and the library connected to it.
class NotesTest : public testing::Test {
protected:
    void SetUp() override
    {
        service_.InstallNotesCatalogue();
        kit_ = Nubis::NubisNative::GetInstance(USER, Nubis::NB_SYNC_DEMON_DATA);
        container_ = kit_->GetDefaultContainer(TEST_BUNDLE);
        ASSERT_NE(container_, nullptr);
    }

    DriveServiceProcess &Service()
    {
        return service_;
    }
    std::shared_ptr<Nubis::NubisNative> Kit() const
    {
        return kit_;
    }
    std::shared_ptr<Nubis::NBContainer> Container() const
    {
        return container_;
    }
    std::shared_ptr<Nubis::NBDatabase> Database() const
    {
        return container_->GetPrivateDatabase();
    }

private:
    static constexpr int USER = 100;
    DriveServiceProcess service_;
    std::shared_ptr<Nubis::NubisNative> kit_;
    std::shared_ptr<Nubis::NBContainer> container_;
};
} // namespace NubisTest

#endif // NUBIS_TEST_NOTES_TEST_H
