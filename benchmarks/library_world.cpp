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

// The end of one operation. Shared with its callback.
class Ending {
public:
    void Set(const Nubis::NBError &error, size_t count)
    {
        seconds_ = watch_.Seconds();
        error_ = error;
        count_ = count;
        countdown_.Done();
    }

    // The seconds from the making of this object until Set.
    double Await(const char *what, size_t expected)
    {
        countdown_.Wait();
        CheckError(error_, what);
        if (count_ != expected) {
            throw std::runtime_error(std::string(what) + " had " + std::to_string(count_) + " records, expected " +
                                     std::to_string(expected));
        }
        return seconds_;
    }

private:
    const Stopwatch watch_;
    Countdown countdown_{1};
    double seconds_ = 0;
    Nubis::NBError error_;
    size_t count_ = 0;
};
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
    kit_ = Nubis::NubisNative::GetInstance(userId);
    const auto container = kit_ == nullptr ? nullptr : kit_->GetDefaultContainer(BUNDLE);
    if (container == nullptr) {
        throw std::runtime_error("the library gives no container");
    }
    database_ = container->GetPrivateDatabase();
}

double Library::Fetch(const std::string &recordId) const
{
    const auto end = std::make_shared<Ending>();
    const auto callback = [end, &recordId](const auto &, const auto &, const auto &, Nubis::NBRecord &record,
                              const Nubis::NBError &error) {
        end->Set(error, record.GetRecordId() == recordId ? 1 : 0);
    };
    CheckStarted(
        database_->FetchRecordWithId(std::make_shared<Nubis::NBContext>(), "note", recordId, {}, callback), "a fetch");
    return end->Await("a fetch", 1);
}

double Library::Save(std::vector<Nubis::NBRecord> &&records) const
{
    const auto end = std::make_shared<Ending>();
    const size_t count = records.size();
    const auto callback = [end](const auto &, const auto &, const std::shared_ptr<Nubis::NBResultMap> &results,
                              const Nubis::NBError &error) {
        const bool isGood = error.HasError() || results->empty() || !results->begin()->second.HasError();
        end->Set(isGood ? error : results->begin()->second, results->size());
    };
    CheckStarted(database_->SaveRecords(
                     std::make_shared<Nubis::NBContext>(), std::move(records), Nubis::NB_SAVE_OVERWRITE, callback),
        "a save");
    return end->Await("a save", count);
}

double Library::FetchChanges(size_t expected) const
{
    const auto end = std::make_shared<Ending>();
    const auto callback = [end](const auto &, const auto &,
                              const std::shared_ptr<std::vector<Nubis::NBRecord>> &records, const auto &, bool,
                              const Nubis::NBError &error) { end->Set(error, records->size()); };
    constexpr int pageSize = 10000;
    CheckStarted(database_->FetchDatabaseChanges(
                     std::make_shared<Nubis::NBContext>(), "note", {}, pageSize, "cursor-0", callback),
        "a fetch of changes");
    return end->Await("a fetch of changes", expected);
}

void Library::Echo() const
{
    Json::Value request(Json::objectValue);
    request["function"] = "echo";
    request["bundleName"] = BUNDLE;
    request["containerName"] = CONTAINER;
    request["recordType"] = "note";
    Json::Value reply;
    constexpr int timeout = 60;
    CheckError(kit_->SendDataToCloudSrv(request, reply, timeout), "an echo");
    if (reply["recordType"] != "note") {
        throw std::runtime_error("another text came back than was sent");
    }
}
} // namespace NubisBench
