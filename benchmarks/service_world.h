// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_BENCH_SERVICE_WORLD_H
#define NUBIS_BENCH_SERVICE_WORLD_H

#include <cstdint>
#include <filesystem>
#include <string>

#include "harness.h"
#include "service_instance.h"

// The drive service with the notes of the benchmarks, without IPC.
namespace NubisBench {
// Puts a catalogue of the bundle into a data folder.
void WriteCatalogue(const std::filesystem::path &dataFolder);
std::filesystem::path DatabaseOf(const std::filesystem::path &dataFolder);

// Requests to save the notes first, first + 1 ... as new ones, and the folders to which they refer.
std::string SaveNotesRequest(size_t first, size_t count);
std::string SaveFoldersRequest();
// A request for a page of changes; an empty cursor begins at the beginning.
std::string ChangesRequest(size_t count, const std::string &cursor);

// A service in this process on a data folder of its own, with the folders saved. Whatever fails throws.
class Service {
public:
    explicit Service(const std::filesystem::path &dataFolder);

    // The text of the reply.
    std::string Ask(const std::string &request);
    // Stands for the place in the sequence of changes.
    std::string CursorAt(int64_t sequence);

private:
    DriveService::ServiceInstance instance_;
};

// Throws when the reply, or one of its records, is a refusal.
void CheckReply(const std::string &reply);

// The rows, and what a child does.
void MeasureSave(const Options &options, const std::filesystem::path &folder);
void MeasureChanges(const Options &options, const std::filesystem::path &folder);
void MeasureClients(const Options &options, const std::filesystem::path &folder);
void SaveSingles(const Options &options);
} // namespace NubisBench

#endif // NUBIS_BENCH_SERVICE_WORLD_H
