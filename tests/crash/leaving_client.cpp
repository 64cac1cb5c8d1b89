// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Starts calls of every kind and ends with many of them under way, by "return" from main, by "exit", or by a "signal"
// whose handler ends the process; the seed says when.
//
// leaving_client return|exit|signal SEED

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <random>
#include <string>

#include <sys/time.h>
#include <unistd.h>

#include "nb_container.h"
#include "nb_context.h"
#include "note_builder.h"
#include "nubis_kit.h"

using namespace Nubis;
using namespace NubisTest;

namespace {
constexpr uint32_t CALLS = 40;
constexpr uint32_t LATEST_SIGNAL_MICROSECONDS = 80000;

// Callbacks come while the process ends.
struct Returns {
    std::mutex mutex;
    std::condition_variable changed;
    uint32_t count = 0;

    void Add()
    {
        std::lock_guard<std::mutex> lock(mutex);
        ++count;
        changed.notify_all();
    }

    bool Await(uint32_t wanted)
    {
        std::unique_lock<std::mutex> lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(60), [&] { return count >= wanted; });
    }
};

void StartCall(const std::shared_ptr<NBContainer> &container, uint32_t kind, const std::string &id, Returns &returns)
{
    const auto database = container->GetPrivateDatabase();
    const auto context = std::make_shared<NBContext>();
    const NBRecordsCallback onRecords = [&returns](auto, auto, auto, auto &) { returns.Add(); };
    NBSubscription subscription{4102444800000};
    NBAsset photo;
    photo.assetName = "p.jpg";
    switch (kind % 6) {
        case 0:
            database->SaveRecords(context, {Note("x").Id(id)}, NB_SAVE_OVERWRITE, onRecords, [](auto, auto) {});
            break;
        case 1:
            photo.sha256 = id;
            photo.size = 3;
            database->SaveRecords(
                context, {Note("x").Id(id).With("photo", NBRecordField(photo))}, NB_SAVE_OVERWRITE, onRecords);
            break;
        case 2:
            database->FetchRecordWithId(
                context, "note", id, {}, [&returns](auto, auto, auto, auto &, auto &) { returns.Add(); });
            break;
        case 3:
            database->FetchDatabaseChanges(
                context, "", {}, 10, "", [&returns](auto, auto, auto, auto, auto, auto &) { returns.Add(); });
            break;
        case 4:
            container->SaveSubscription(context, subscription, [&returns](auto, auto, auto &) { returns.Add(); });
            break;
        default:
            // Nobody waits for this one.
            database->DeleteRecords(context, {Note("x").Id(id)}, NB_SAVE_OVERWRITE, nullptr);
            returns.Add();
    }
}

void SetTimer(uint32_t microseconds)
{
    std::signal(SIGALRM, [](int) { _exit(0); });
    itimerval once{};
    once.it_value.tv_usec = static_cast<suseconds_t>(microseconds) + 1;
    setitimer(ITIMER_REAL, &once, nullptr);
}
} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        return 2;
    }
    const std::string way = argv[1];
    std::minstd_rand random(static_cast<uint32_t>(std::strtoul(argv[2], nullptr, 10)));
    if (way == "signal") {
        SetTimer(static_cast<uint32_t>(random() % LATEST_SIGNAL_MICROSECONDS));
    }
    const auto kit = NubisNative::GetInstance(100, NB_SYNC_DEMON_DATA);
    kit->SetUploadAssetCallBack("leaving_client", [](const std::string &, std::string &reply) {
        reply = R"({"code": 0, "records": []})";
        return 0;
    });
    const auto container = kit->GetDefaultContainer("com.example.notes");
    if (container == nullptr) {
        return 3;
    }
    static auto *returns = new Returns;
    const auto calls = static_cast<uint32_t>(random() % CALLS) + 1;
    for (uint32_t i = 0; i < calls; ++i) {
        const std::string id = "leaving" + std::to_string(random() % CALLS);
        StartCall(container, static_cast<uint32_t>(random()), id, *returns);
    }
    if (!returns->Await(static_cast<uint32_t>(random() % calls))) {
        return 4;
    }
    if (way == "signal") {
        while (true) {
            pause();
        }
    }
    if (way == "exit") {
        std::exit(0);
    }
    return 0;
}
