// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// The rows of the library: prints one line of JSON for each.

#include <exception>
#include <functional>
#include <iostream>
#include <map>

#include "library_world.h"

namespace {
using namespace NubisBench;

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
