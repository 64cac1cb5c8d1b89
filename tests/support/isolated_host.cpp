// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Linked into every test of the library's inside: none of them may find the services and data of the user who runs it.

#include <memory>

#include <gtest/gtest.h>

#include "host_folders.h"

namespace {
class IsolatedHost : public testing::Environment {
public:
    void SetUp() override
    {
        folders_ = std::make_unique<NubisTest::HostFolders>();
    }
    void TearDown() override
    {
        folders_.reset();
    }

private:
    std::unique_ptr<NubisTest::HostFolders> folders_;
};

[[maybe_unused]] testing::Environment *const ISOLATED_HOST = testing::AddGlobalTestEnvironment(new IsolatedHost);
} // namespace
