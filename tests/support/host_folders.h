// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_HOST_FOLDERS_H
#define NUBIS_TEST_HOST_FOLDERS_H

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace NubisTest {
// Fresh folders for everything that the host layer writes and reads, told to this process and its children by the
// environment, so that no test meets what another, or the user, has there. Removed at the end. One at a time.
class HostFolders {
public:
    HostFolders()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "nubis-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder: " + pattern);
        }
        root_ = pattern;
        std::filesystem::create_directory(State(), root_);
        setenv("NUBIS_RUNTIME_DIR", (root_ / "run").c_str(), 1);
        setenv("NUBIS_STATE_DIR", State().c_str(), 1);
        // Empty: no service can be started until a test names a folder of manifests.
        setenv("NUBIS_MANIFEST_PATH", (root_ / "manifests").c_str(), 1);
        setenv("NUBIS_DEVICE_NAME", "test-device", 1);
    }
    ~HostFolders()
    {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    HostFolders(const HostFolders &) = delete;
    HostFolders &operator=(const HostFolders &) = delete;

    const std::filesystem::path &Root() const
    {
        return root_;
    }
    std::filesystem::path State() const
    {
        return root_ / "state";
    }

private:
    std::filesystem::path root_;
};
} // namespace NubisTest

#endif // NUBIS_TEST_HOST_FOLDERS_H
