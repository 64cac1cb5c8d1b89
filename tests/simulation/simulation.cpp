// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "simulation.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include "ffrt_inner.h"
#include "host/faults.h"
#include "inspection.h"
#include "nubis_kit.h"
#include "util/json_util.h"
#include "util/json_writer.h"
#include "wall_clock.h"

namespace Simulation {

namespace {

using namespace Nubis;

constexpr const char *BUNDLE = "com.example.notes";
constexpr int USER_IDS[USERS] = {100, 101};
constexpr NBCloudSyncDemon DEMONS[USERS] = {NB_SYNC_DEMON_DATA, NB_SYNC_DEMON_FILE};
constexpr int64_t BEGIN_MS = 1800000000000;
constexpr std::chrono::milliseconds REAL_PATIENCE(20);

// With those that a sanitizer starts beside the first thread of the program's own.
size_t CountThreads()
{
    std::thread([] {}).join();
    return BusyThreads().size();
}

// Which database each client has, and in which of the containers of its user.
struct Place {
    size_t container;
    NBDatabaseScope scope;
};
constexpr Place PLACES[CLIENTS] = {{0, NB_DATABASE_PRIVATE}, {0, NB_DATABASE_SHARED}, {0, NB_DATABASE_PUBLIC},
    {1, NB_DATABASE_PRIVATE}, {2, NB_DATABASE_PRIVATE}, {2, NB_DATABASE_SHARED}};

Json::Value ContainerNamed(const std::string &name)
{
    Json::Value container;
    Json::Value title;
    title["name"] = "title";
    title["type"] = "String";
    title["queryable"] = true;
    Json::Value stars;
    stars["name"] = "stars";
    stars["type"] = "Integer";
    stars["queryable"] = true;
    Json::Value type;
    type["recordType"] = "note";
    type["tableName"] = "notes";
    type["fields"].append(title);
    type["fields"].append(stars);
    container["name"] = name;
    container["databaseName"] = name;
    container["schema"]["version"] = 1;
    container["schema"]["recordTypes"].append(type);
    return container;
}

// The fates of a round in the order in which its requests left: a dot for none.
std::string Fates(const std::vector<Host::Fault> &history)
{
    std::string text;
    for (const Host::Fault fault : history) {
        text += ".DSLCGbda"[static_cast<size_t>(fault)];
    }
    return text;
}

std::string TextOf(const RecordModel::Contents &contents)
{
    std::string text;
    for (const auto &[recordId, title] : contents) {
        text += " " + recordId + "=" + title;
    }
    return text;
}

} // namespace

Simulation::Simulation(const Plan &plan, const std::string &pushKey, std::ostream &trace)
    : plan_(plan), trace_(trace), filesBefore_(OpenFiles()), threadsBefore_(CountThreads()), begin_(clock_.Now())
{
    WallClock::SetSource([this] { return NowMs(); });
    InstallCatalogue(pushKey);
    for (size_t user = 0; user < USERS; ++user) {
        services_.push_back(std::make_unique<MortalService>(
            (folders_.Root() / "drive").string(), USER_IDS[user], [this] { return NowMs(); }));
        kits_.push_back(NubisNative::GetInstance(USER_IDS[user], DEMONS[user]));
    }
    MakeClients();
    StartListeners();
}

Simulation::~Simulation()
{
    WallClock::SetSource({});
}

int64_t Simulation::NowMs() const
{
    return BEGIN_MS + std::chrono::duration_cast<std::chrono::milliseconds>(clock_.Now() - begin_).count();
}

void Simulation::InstallCatalogue(const std::string &pushKey)
{
    namespace fs = std::filesystem;
    const fs::path drive = folders_.Root() / "drive";
    fs::create_directories(drive / "catalogue");
    Json::Value entry;
    entry["bundleName"] = BUNDLE;
    entry["appId"] = "notes-1";
    entry["schemaGroupVersion"] = 1;
    entry["enableCloud"] = 1;
    entry["defaultContainer"] = ContainerNamed("notes");
    entry["sharedContainer"].append(ContainerNamed("drafts"));
    std::ofstream(drive / "catalogue" / (std::string(BUNDLE) + ".json")) << DriveService::WriteJson(entry);
    for (const int userId : USER_IDS) {
        const DriveService::DataPaths paths(drive.string(), userId);
        fs::create_directories(paths.userFolder);
        std::ofstream(paths.pushKey) << pushKey;
        fs::permissions(paths.pushKey, fs::perms::owner_read | fs::perms::owner_write);
    }
}

void Simulation::MakeClients()
{
    std::vector<std::shared_ptr<ContainerState>> containers;
    for (const auto &container : {kits_[0]->GetDefaultContainer(BUNDLE), kits_[0]->GetContainer(BUNDLE, "drafts"),
             kits_[1]->GetDefaultFileContainer(BUNDLE)}) {
        if (container == nullptr) {
            throw std::runtime_error("a container cannot be had");
        }
        containers.push_back(std::make_shared<ContainerState>());
        containers.back()->container = container;
    }
    for (size_t i = 0; i < CLIENTS; ++i) {
        ClientSetup setup;
        setup.number = i;
        setup.container = containers[PLACES[i].container];
        setup.scope = PLACES[i].scope;
        setup.followsNotifications = plan_.followsNotifications[i];
        setup.nowMs = [this] { return NowMs(); };
        clients_.push_back(std::make_unique<Client>(std::move(setup), ledger_));
    }
}

void Simulation::StartListeners()
{
    for (size_t user = 0; user < USERS; ++user) {
        NBUserInfo info;
        if (kits_[user]->GetCloudUserInfo(info, false).HasError()) {
            throw std::runtime_error("the push key cannot be had");
        }
        listeners_.push_back(
            std::make_unique<Listener>(kits_[user], ledger_, [this, user](const NBRecordChangeEvent &event) {
                for (size_t i = 0; i < CLIENTS; ++i) {
                    const ClientSetup &setup = clients_[i]->Setup();
                    const auto &scopes = event.databaseScopes;
                    if (UserOf(i) == user && setup.container->container->GetContainerName() == event.containerName &&
                        std::find(scopes.begin(), scopes.end(), setup.scope) != scopes.end()) {
                        clients_[i]->OnNews();
                    }
                }
            }));
    }
}

std::string Simulation::Run()
{
    for (const Round &round : plan_.rounds) {
        RunRound(round);
    }
    FollowToTheEnd();
    CheckReplicas();
    CheckIdleness();
    return ledger_.Problems();
}

void Simulation::RunRound(const Round &round)
{
    trace_ << Describe(round) << "\n";
    services_[round.death.user]->Plan(round.death);
    {
        const Host::FaultScope faults(round.faults);
        for (size_t i = 0; i < CLIENTS; ++i) {
            StartOrders(i, round);
        }
        EndAll();
        trace_ << "fates " << Fates(faults.History()) << "\n";
    }
    for (const auto &service : services_) {
        service->Plan(Death());
        service->Return();
    }
    for (const auto &client : clients_) {
        client->Records().OnQuiet();
    }
    CheckRecords();
    Rest(round.restSeconds);
}

void Simulation::StartOrders(size_t client, const Round &round)
{
    std::vector<Order> orders;
    for (const Order &order : round.orders) {
        if (order.client == client) {
            trace_ << Describe(order) << "\n";
            orders.push_back(order);
        }
    }
    const bool isGarbled = round.faults.garbledReply > 0;
    const size_t operation = ledger_.Open("the orders of client " + std::to_string(client));
    ffrt::thread([this, client, orders, isGarbled, operation] {
        for (const Order &order : orders) {
            clients_[client]->Carry(order, isGarbled);
        }
        ledger_.Close(operation);
    }).detach();
}

void Simulation::Settle()
{
    uint64_t before = 0;
    uint64_t after = 0;
    do {
        before = after;
        clock_.Advance(std::chrono::seconds(0));
        for (const auto &service : services_) {
            if (!service->AwaitQuiet()) {
                ledger_.Report("a service does not come to rest\n");
            }
        }
        clock_.Advance(std::chrono::seconds(0));
        after = 0;
        for (const auto &service : services_) {
            after += service->Requests();
        }
    } while (before != after);
}

void Simulation::EndAll()
{
    // The longest time limit of a request is passed after the first of them; requests without one end with the service.
    constexpr int waits = 4;
    constexpr int deaths = 30;
    for (int i = 0; i < waits + deaths; ++i) {
        Settle();
        // What the end of a session sets off is on its way outside FFRT.
        if (ledger_.AwaitClosed(REAL_PATIENCE)) {
            return;
        }
        if (i < waits) {
            clock_.Advance(std::chrono::seconds(61));
            continue;
        }
        for (const auto &service : services_) {
            service->Die();
            service->Return();
        }
    }
    throw std::runtime_error("something hangs:\n" + ledger_.OpenOperations() + ledger_.Problems());
}

void Simulation::Rest(int seconds)
{
    clock_.Advance(std::chrono::seconds(seconds));
    Settle();
}

void Simulation::FollowToTheEnd()
{
    Settle();
    for (const auto &listener : listeners_) {
        if (!listener->CatchUp()) {
            ledger_.Report("the notifications do not come\n");
        }
    }
    // The news of a session that died in the last round may come late and take a request with it.
    constexpr int tries = 5;
    const auto hasNews = [](const auto &client) { return client->HasNews(); };
    int tried = 0;
    do {
        for (const auto &client : clients_) {
            client->Follow(false);
        }
        EndAll();
    } while (++tried < tries && std::any_of(clients_.begin(), clients_.end(), hasNews));
}

RecordModel::Contents Simulation::ContentsOf(size_t client)
{
    const ClientSetup &setup = clients_[client]->Setup();
    Json::Value request;
    request["function"] = "fetchRecordsWithQuery";
    request["bundleName"] = BUNDLE;
    request["containerName"] = setup.container->container->GetContainerName();
    request["databaseType"] = static_cast<int>(setup.scope);
    request["recordType"] = "note";
    Json::Value reply;
    std::string error;
    const std::string text = services_[UserOf(client)]->Ask(DriveService::WriteJson(request));
    if (!DriveService::ParseJson(text, reply, error) || reply["code"] != 0 || !reply["nextCursor"].asString().empty()) {
        ledger_.Report("the service does not tell its contents: " + text + "\n");
    }
    RecordModel::Contents contents;
    for (const Json::Value &record : reply["records"]) {
        contents[record["recordId"].asString()] = record["record"]["title"].asString();
    }
    return contents;
}

void Simulation::CheckRecords()
{
    for (size_t i = 0; i < CLIENTS; ++i) {
        const std::string problems = clients_[i]->Records().Explain(ContentsOf(i));
        if (!problems.empty()) {
            ledger_.Report("client " + std::to_string(i) + ": " + problems);
        }
    }
}

void Simulation::CheckReplicas()
{
    for (size_t i = 0; i < CLIENTS; ++i) {
        const RecordModel::Contents contents = ContentsOf(i);
        const RecordModel::Contents copy = clients_[i]->Copy().Contents();
        if (copy != contents) {
            ledger_.Report("client " + std::to_string(i) + " has followed to" + TextOf(copy) + " but the service has" +
                           TextOf(contents) + "\n");
        }
    }
}

void Simulation::CheckIdleness()
{
    // The greeting of a new connection may start late, from a thread that the clock does not wait for, and then the idle
    // time begins anew.
    constexpr int tries = 5;
    const auto isConnected = [](const auto &kit) { return IsConnected(*kit); };
    int tried = 0;
    do {
        Rest(70);
    } while (++tried < tries && std::any_of(kits_.begin(), kits_.end(), isConnected));
    for (size_t user = 0; user < USERS; ++user) {
        ledger_.Report(LeftOvers(*kits_[user]));
        if (!services_[user]->IsLeftByAll()) {
            const std::string what =
                IsConnected(*kits_[user]) ? "an idle kit stays connected\n" : "a session is left\n";
            throw std::runtime_error(what + ledger_.Problems());
        }
    }
    clock_.Advance(std::chrono::seconds(200));
    if (clock_.WaitForPending(1, std::chrono::milliseconds(0))) {
        ledger_.Report("something still waits for a time to come\n");
    }
    listeners_.clear();
    services_.clear();
    clients_.clear();
    // Threads that have ended may be seen for a moment longer.
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (BusyThreads().size() > threadsBefore_ && std::chrono::steady_clock::now() < patience) {
        std::this_thread::yield();
    }
    const std::multiset<std::string> threads = BusyThreads();
    if (threads.size() > threadsBefore_) {
        ledger_.Report(std::to_string(threads.size() - threadsBefore_) + " threads are left, among them " +
                       *threads.begin() + "\n");
    }
    for (const std::string &file : OpenFiles()) {
        if (filesBefore_.count(file) == 0) {
            ledger_.Report("the file " + file + " is left open\n");
        }
    }
}

} // namespace Simulation
