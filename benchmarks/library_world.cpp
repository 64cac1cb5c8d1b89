// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "library_world.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "canned_protocol.h"
#include "nb_container.h"
#include "nb_context.h"
#include "nubis_kit.h"

namespace NubisBench {
namespace {
constexpr const char *IN_WORLD = "NUBIS_BENCH_WORLD";

void CheckError(const Nubis::NBError &error, const char *what)
{
    if (error.HasError()) {
        throw std::runtime_error(std::string(what) + " failed: " + error.GetErrorMsg());
    }
}

void CheckStarted(int code, const char *what)
{
    if (code != Nubis::NB_LOCAL_SUCCESS) {
        throw std::runtime_error(std::string(what) + " was refused: " + std::to_string(code));
    }
}
} // namespace

LibraryWorld::LibraryWorld()
{
    if (std::getenv(IN_WORLD) != nullptr) {
        return;
    }
    folders_ = std::make_unique<NubisTest::HostFolders>();
    const std::filesystem::path manifests = folders_->Root() / "manifests";
    std::filesystem::create_directory(manifests);
    std::ofstream manifest(manifests / (std::string(SERVICE_BUNDLE) + ".json"));
    manifest << R"({"bundleName": ")" << SERVICE_BUNDLE << R"(", "abilities": [{"name": ")" << SERVICE_ABILITY
             << R"(", "exec": [")" << NUBIS_BENCH_BIN << R"(/bench-canned-service", "${user}"],)"
             << R"( "metadata": [{"name": "abilityVersion", "value": "3"}]}]})";
    manifest.close();
    setenv("NUBIS_MANIFEST_PATH", manifests.c_str(), 1);
    setenv("NUBIS_LOG_FILE", (folders_->Root() / "log").c_str(), 1);
    setenv(IN_WORLD, folders_->Root().c_str(), 1);
}

Library::Library(int32_t userId) : transport_(userId)
{
    transport_.SetReply("GetCloudAppInfo", CatalogueReply());
    transport_.SetReply("getRecordIdRules", R"({"code":0,"ruleId":5,"upid":"77","rootId":"root"})");
    transport_.SetReply("getServiceKey", R"({"code":0,"keys":[]})");
    const auto kit = Nubis::NubisNative::GetInstance(userId);
    const auto container = kit == nullptr ? nullptr : kit->GetDefaultContainer(BUNDLE);
    if (container == nullptr) {
        throw std::runtime_error("the library gives no container");
    }
    database_ = container->GetPrivateDatabase();
}

void Library::Fetch(const std::string &recordId) const
{
    Countdown countdown(1);
    Nubis::NBError outcome;
    bool isRight = false;
    const auto callback = [&](const auto &, const auto &, const auto &, Nubis::NBRecord &record,
                              const Nubis::NBError &error) {
        outcome = error;
        isRight = record.GetRecordId() == recordId;
        countdown.Done();
    };
    CheckStarted(
        database_->FetchRecordWithId(std::make_shared<Nubis::NBContext>(), "note", recordId, {}, callback), "a fetch");
    countdown.Wait();
    CheckError(outcome, "a fetch");
    if (!isRight) {
        throw std::runtime_error("another record was fetched than was asked for");
    }
}

void Library::Save(std::vector<Nubis::NBRecord> &&records) const
{
    Countdown countdown(1);
    Nubis::NBError outcome;
    const size_t count = records.size();
    size_t saved = 0;
    const auto callback = [&](const auto &, const auto &, const std::shared_ptr<Nubis::NBResultMap> &results,
                              const Nubis::NBError &error) {
        outcome = error;
        saved = results->size();
        if (!results->empty() && results->begin()->second.HasError()) {
            outcome = results->begin()->second;
        }
        countdown.Done();
    };
    CheckStarted(database_->SaveRecords(
                     std::make_shared<Nubis::NBContext>(), std::move(records), Nubis::NB_SAVE_OVERWRITE, callback),
        "a save");
    countdown.Wait();
    CheckError(outcome, "a save");
    if (saved != count) {
        throw std::runtime_error("records are missing from the results of a save");
    }
}

size_t Library::CountChanges() const
{
    Countdown countdown(1);
    Nubis::NBError outcome;
    size_t count = 0;
    const auto callback = [&](const auto &, const auto &, const std::shared_ptr<std::vector<Nubis::NBRecord>> &records,
                              const auto &, bool, const Nubis::NBError &error) {
        outcome = error;
        count = records->size();
        countdown.Done();
    };
    constexpr int pageSize = 10000;
    CheckStarted(database_->FetchDatabaseChanges(
                     std::make_shared<Nubis::NBContext>(), "note", {}, pageSize, "cursor-0", callback),
        "a fetch of changes");
    countdown.Wait();
    CheckError(outcome, "a fetch of changes");
    return count;
}
} // namespace NubisBench
