// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_BENCH_LIBRARY_WORLD_H
#define NUBIS_BENCH_LIBRARY_WORLD_H

#include <memory>
#include <string>
#include <vector>

#include "harness.h"
#include "host_folders.h"
#include "nb_database.h"
#include "notes.h"
#include "nubis_kit.h"
#include "transport_client.h"

// The library with the service of the benchmarks behind it, in a process of its own, over the real transport.
namespace NubisBench {
// By the way of their requests; see canned_service.cpp.
constexpr int32_t SYNC_USER = 100;
constexpr int32_t ASYNC_USER = 101;

// Folders of its own, and a manifest that names the service of the benchmarks. Children share those of the first process.
class LibraryWorld {
public:
    LibraryWorld();

private:
    std::unique_ptr<NubisTest::HostFolders> folders_;
};

// One user's kit and its private database, beside a bare connection to the same service. Whatever fails throws.
class Library {
public:
    explicit Library(int32_t userId);

    const TransportClient &Transport() const
    {
        return transport_;
    }
    const std::shared_ptr<Nubis::NBDatabase> &Database() const
    {
        return database_;
    }

    // Each waits until the library has called back, and returns the seconds from the call to the callback: waking the
    // one who waits is no work of the library's.
    double Fetch(const std::string &recordId) const;
    double Save(std::vector<Nubis::NBRecord> &&records) const;
    double FetchChanges(size_t expected) const;
    // A request of the kit, which waits for the reply by itself.
    void Echo() const;

    // The text that the library sends for the operation.
    template <typename Operation>
    std::string RequestOf(const std::string &function, Operation &&operation) const
    {
        transport_.Capture(function);
        operation();
        return transport_.Captured();
    }

private:
    TransportClient transport_;
    std::shared_ptr<Nubis::NubisNative> kit_;
    std::shared_ptr<Nubis::NBDatabase> database_;
};

// The rows, by what they measure.
void MeasureRequests(const Options &options);
void MeasureBatches(const Options &options);
void MeasureLoad(const Options &options);
void MeasureMemory(const Options &options);
void MeasureLife(const Options &options);

// What a child of the same name does.
void SaveInLibrary(const Options &options);
void SaveInParts(const Options &options);
void KeepPending(const Options &options);
void StartLibrary();
void StartProgram();
void StayIdle(const Options &options);
} // namespace NubisBench

#endif // NUBIS_BENCH_LIBRARY_WORLD_H
