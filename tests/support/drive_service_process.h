// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_DRIVE_SERVICE_PROCESS_H
#define NUBIS_TEST_DRIVE_SERVICE_PROCESS_H

#include <filesystem>
#include <string>

#include "host_folders.h"

namespace NubisTest {
constexpr char TEST_BUNDLE[] = "com.example.notes";
constexpr char TEST_CONTAINER[] = "notes";

// A world of its own for one test, with a real drive service in it that is started on demand, by the first connection,
// as on a real host. One at a time.
class DriveServiceProcess {
public:
    DriveServiceProcess();
    // Kills the service if it runs and removes the folders.
    ~DriveServiceProcess();
    DriveServiceProcess(const DriveServiceProcess &) = delete;
    DriveServiceProcess &operator=(const DriveServiceProcess &) = delete;

    // Puts a catalogue of the bundle TEST_BUNDLE in force: the record types of tests/integration/notes_catalogue.json.
    void InstallNotesCatalogue();

    // A manifest that names this version of the service, or none when it is empty. Before the first connection.
    void InstallManifest(const std::string &abilityVersion);

    // -1 when none runs.
    int Pid() const;
    // SIGKILL, and returns when the process is gone.
    void Kill();

    const std::filesystem::path &Folder() const
    {
        return folders_.Root();
    }

private:
    HostFolders folders_;
};

// Runs a shell command; its output goes to `output`. Returns the exit status, -1 when a signal ended it.
int RunCommand(const std::string &command, std::string &output);
} // namespace NubisTest

#endif // NUBIS_TEST_DRIVE_SERVICE_PROCESS_H
