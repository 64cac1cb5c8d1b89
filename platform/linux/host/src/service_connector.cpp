// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_connector.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <mutex>
#include <thread>
#include <unistd.h>

#include "errors.h"
#include "file_lock.h"
#include "host/paths.h"
#include "lane.h"
#include "manifest.h"
#include "service_launcher.h"
#include "wire_session.h"

namespace Host {

namespace {

using Ipc::WireSession;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds START_TIME(4000);
// The pauses between looks grow with the time waited, so that a fast start is seen at once and a slow one costs little.
constexpr int PAUSES_PER_WAIT = 32;
constexpr std::chrono::microseconds SHORTEST_PAUSE(200);
constexpr std::chrono::microseconds LONGEST_PAUSE(5000);
constexpr int MAX_ATTEMPTS = 3;

// What this process knows about one ability's service.
struct Place {
    // Held while connecting, so that several connections share one session.
    std::mutex mutex;
    // Guarded by mutex.
    std::weak_ptr<WireSession> session;
};

std::shared_ptr<Place> PlaceOf(const std::string &socketPath)
{
    static auto *mutex = new std::mutex();
    static auto *places = new std::map<std::string, std::shared_ptr<Place>>();
    std::lock_guard<std::mutex> lock(*mutex);
    auto &place = (*places)[socketPath];
    if (place == nullptr) {
        place = std::make_shared<Place>();
    }
    return place;
}

// One attempt to reach one ability of one user.
class Attempt {
public:
    Attempt(const std::string &bundleName, const std::string &abilityName, int32_t userId, std::string &error)
        : bundleName_(bundleName), abilityName_(abilityName), userId_(userId),
          path_(AbilitySocketPath(bundleName, abilityName, userId)), error_(error)
    {}

    int Run(AbilityLink &link)
    {
        if (!IsSafeName(bundleName_) || !IsSafeName(abilityName_)) {
            error_ = "\"" + bundleName_ + "/" + abilityName_ + "\" is not the name of an ability";
            return ABILITY_UNKNOWN;
        }
        if (!PrepareRuntimeDir(userId_, error_)) {
            return ABILITY_NOT_REACHED;
        }
        auto place = PlaceOf(path_);
        std::lock_guard<std::mutex> lock(place->mutex);
        if (Adopt(place->session.lock(), link)) {
            return OHOS::ERR_OK;
        }
        for (int i = 0; i < MAX_ATTEMPTS; ++i) {
            std::shared_ptr<WireSession> session;
            int result = Reach(session);
            if (result == OHOS::ERR_NO_INIT) {
                result = StartAndReach(session);
            }
            if (result != OHOS::ERR_OK) {
                return result;
            }
            if (Adopt(session, link)) {
                place->session = session;
                return OHOS::ERR_OK;
            }
            if (!session->IsDead()) {
                break;
            }
            // Its process has just ended, which is no reason not to have the ability: the next one is as good.
        }
        return ABILITY_NOT_REACHED;
    }

private:
    // ERR_OK, ERR_NO_INIT when nobody listens, or ABILITY_NOT_REACHED.
    int Reach(std::shared_ptr<WireSession> &session)
    {
        bool nobody = false;
        session = WireSession::Connect(path_, static_cast<int>(geteuid()), error_, nobody);
        if (session != nullptr) {
            return OHOS::ERR_OK;
        }
        return nobody ? static_cast<int>(OHOS::ERR_NO_INIT) : static_cast<int>(ABILITY_NOT_REACHED);
    }

    bool Adopt(const std::shared_ptr<WireSession> &session, AbilityLink &link)
    {
        link.use = session == nullptr ? nullptr : session->AcquireUse();
        if (link.use == nullptr) {
            return false;
        }
        link.session = session;
        link.ability = session->GetAbility(bundleName_, abilityName_, userId_, error_);
        if (link.ability == nullptr) {
            return false;
        }
        // Not before, because what opens it would hold up the answer.
        session->OpenBigLane(path_);
        return true;
    }

    int StartAndReach(std::shared_ptr<WireSession> &session)
    {
        Manifest manifest;
        if (!ReadManifest(bundleName_, manifest, error_)) {
            return ABILITY_UNKNOWN;
        }
        const Manifest::Ability *ability = manifest.Find(abilityName_);
        std::vector<std::string> command;
        if (ability == nullptr) {
            error_ = manifest.file + ": has no ability \"" + abilityName_ + "\"";
            return ABILITY_UNKNOWN;
        }
        // Before waiting for the lock: what cannot work fails at once.
        if (!BuildCommand(manifest, *ability, userId_, command, error_)) {
            return ABILITY_NOT_STARTED;
        }
        const auto start = Clock::now();
        FileLock lock;
        while (!lock.TryLock(path_ + ".start")) {
            // Another process is starting the service.
            int result = Reach(session);
            if (result != OHOS::ERR_NO_INIT) {
                return result;
            }
            if (!Pause(start)) {
                error_ = "another process has been starting the service of " + path_ + " for too long";
                return ABILITY_NOT_STARTED;
            }
        }
        int result = Reach(session);
        if (result != OHOS::ERR_NO_INIT) {
            return result;
        }
        ServiceLauncher service;
        if (!service.Start(manifest, *ability, bundleName_, userId_, error_)) {
            return ABILITY_NOT_STARTED;
        }
        // The service takes longer to start.
        Ipc::Lane::WarmUp();
        while (true) {
            // Asked before reaching out: a program may end because another one serves already.
            std::string how;
            bool exited = service.HasExited(how);
            result = Reach(session);
            if (result != OHOS::ERR_NO_INIT) {
                return result;
            }
            if (exited) {
                error_ = how;
                return ABILITY_NOT_STARTED;
            }
            if (!Pause(start)) {
                error_ = command.front() + " runs, but does not listen at " + path_;
                return ABILITY_NOT_STARTED;
            }
        }
    }

    // False when it has lasted too long.
    static bool Pause(Clock::time_point start)
    {
        const auto waited = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
        std::this_thread::sleep_for(std::clamp(waited / PAUSES_PER_WAIT, SHORTEST_PAUSE, LONGEST_PAUSE));
        return Clock::now() < start + START_TIME;
    }

    const std::string &bundleName_;
    const std::string &abilityName_;
    const int32_t userId_;
    const std::string path_;
    std::string &error_;
};

} // namespace

int ConnectToService(const std::string &bundleName, const std::string &abilityName, int32_t userId, AbilityLink &link,
    std::string &error)
{
    return Attempt(bundleName, abilityName, userId, error).Run(link);
}

} // namespace Host
