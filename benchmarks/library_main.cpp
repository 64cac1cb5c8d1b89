// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// The rows of the library: prints one line of JSON for each.

#include <exception>
#include <functional>
#include <iostream>
#include <map>

#include <malloc.h>

#include "library_world.h"

namespace {
using namespace NubisBench;

// Else what is measured is mostly whose turn it is to give memory back to the system and to get it again.
void KeepMemory()
{
    constexpr int most = 1 << 30;
    constexpr int largestMapped = 1 << 25;
    mallopt(M_TRIM_THRESHOLD, most);
    mallopt(M_MMAP_THRESHOLD, largestMapped);
}

void RunAsChild(const Options &options)
{
    const std::map<std::string, std::function<void()>> parts = {
        {"save-in-library", [&] { SaveInLibrary(options); }},
        {"save-in-parts", [&] { SaveInParts(options); }},
        {"keep-pending", [&] { KeepPending(options); }},
        {"start-library", StartLibrary},
        {"start-program", StartProgram},
        {"stay-idle", [&] { StayIdle(options); }},
    };
    parts.at(options.child)();
}

void MeasureAll(const Options &options)
{
    KeepMemory();
    MeasureRequests(options);
    MeasureBatches(options);
    MeasureLoad(options);
    MeasureMemory(options);
    MeasureLife(options);
}
} // namespace

int main(int argc, char **argv)
{
    const Options options = ReadOptions(argc, argv);
    try {
        const LibraryWorld world;
        if (!options.child.empty()) {
            RunAsChild(options);
            return 0;
        }
        MeasureAll(options);
    } catch (const std::exception &failure) {
        std::cerr << "bench-library: " << failure.what() << "\n";
        return 1;
    }
    return 0;
}
