// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_SERVICE_PROGRAM_H
#define NUBIS_TOOL_SERVICE_PROGRAM_H

#include <chrono>
#include <optional>
#include <string>

#include "host/ability_control.h"
#include "nubis_kit.h"
#include "temp_dir.h"

namespace NubisTool {

constexpr const char *SERVICE_BUNDLE = "com.orvane.tyra.aerostash";

// What the manifest says of the drive service; nothing when there is none that can be read.
std::optional<Host::ManifestAbility> DescribedService(int user);

// The drive service's program: beside this one, else the one that the service's manifest names. Throws CommandError when
// there is none.
std::string FindServiceProgram(int user);

// Where the service keeps its data: as the manifest says, else the service's usual folder.
std::string ServiceDataFolder(int user);

struct ServiceStatus {
    bool running = false;
    int pid = -1;
    std::string socketPath;
};

ServiceStatus FindService(int user);

// Connects, which starts the service when it does not run. Throws CommandError with the reason when that fails.
ServiceStatus StartService(Nubis::NubisNative &kit);

// Asks the service to end and waits until it has. False when it did not run. Throws when it does not end in time.
bool StopService(int user, std::chrono::milliseconds time);

// A service of its own in fresh folders: the folders are put into this process's environment, where its children find
// them, and the service is started. When the object goes, the service is stopped and the folders are removed. To be made
// under an InterruptGuard, by a process that does not use the library itself.
class FreshService {
public:
    explicit FreshService(int user);
    ~FreshService();
    FreshService(const FreshService &) = delete;
    FreshService &operator=(const FreshService &) = delete;

    const TempDir &Folder() const
    {
        return folder_;
    }

    ServiceStatus Status() const
    {
        return status_;
    }

private:
    int user_;
    TempDir folder_;
    ServiceStatus status_;
};

} // namespace NubisTool

#endif
