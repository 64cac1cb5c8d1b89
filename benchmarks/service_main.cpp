// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// The rows of the drive service: prints one line of JSON for each.

#include <csignal>
#include <exception>
#include <iostream>

#include "canned_protocol.h"
#include "host/ability_control.h"
#include "host/paths.h"
#include "host_folders.h"
#include "service_world.h"

namespace {
using namespace NubisBench;

void MeasureAll(const Options &options)
{
    const NubisTest::HostFolders folders;
    if (options.Wants("service-save")) {
        MeasureSave(options, folders.Root());
    }
    if (options.Wants("service-changes")) {
        MeasureChanges(options, folders.Root());
    }
    if (options.Wants("service-clients")) {
        MeasureClients(options, folders.Root());
        const int pid = Host::FindAbility(SERVICE_BUNDLE, SERVICE_ABILITY, Host::DEFAULT_USER_ID).pid;
        if (pid > 0) {
            kill(pid, SIGTERM);
        }
    }
}
} // namespace

int main(int argc, char **argv)
{
    const Options options = ReadOptions(argc, argv);
    try {
        if (options.child.empty()) {
            MeasureAll(options);
        } else {
            SaveSingles(options);
        }
    } catch (const std::exception &failure) {
        std::cerr << "bench-service: " << failure.what() << "\n";
        return 1;
    }
    return 0;
}
