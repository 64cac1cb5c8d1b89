// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "host/ability_registry.h"

#include <iterator>
#include <memory>
#include <mutex>
#include <tuple>
#include <utility>
#include <vector>

#include "loopback_session.h"
#include "registered_abilities.h"
#include "service_connector.h"

namespace Host {

namespace {

using Ipc::LoopbackSession;
using OHOS::IRemoteObject;
using OHOS::sptr;

// Bundle, ability, user.
using Key = std::tuple<std::string, std::string, int32_t>;

struct Offered {
    sptr<IRemoteObject> object;
    AbilityRegistry::Metadata metadata;
    // The session that new connections share.
    std::weak_ptr<LoopbackSession> current;
};

struct Registry {
    std::mutex mutex;
    // Guarded by mutex.
    std::map<Key, Offered> offers;
    // The connecting ends; some may be gone.
    std::multimap<Key, std::weak_ptr<LoopbackSession>> sessions;
};

Registry &TheRegistry()
{
    static auto *registry = new Registry();
    return *registry;
}

// Called with the lock held.
void ForgetEnded(Registry &registry, const Key &key)
{
    auto range = registry.sessions.equal_range(key);
    for (auto it = range.first; it != range.second;) {
        it = it->second.expired() ? registry.sessions.erase(it) : std::next(it);
    }
}

} // namespace

bool AbilityRegistry::Offer(const std::string &bundleName, const std::string &abilityName, int32_t userId,
    const sptr<IRemoteObject> &object, const Metadata &metadata)
{
    if (object == nullptr || bundleName.empty() || abilityName.empty()) {
        return false;
    }
    Registry &registry = TheRegistry();
    Offered offer{object, metadata, {}};
    std::lock_guard<std::mutex> lock(registry.mutex);
    std::swap(registry.offers[Key(bundleName, abilityName, userId)], offer);
    return true;
}

bool AbilityRegistry::Withdraw(const std::string &bundleName, const std::string &abilityName, int32_t userId)
{
    Registry &registry = TheRegistry();
    // The object ends outside the lock.
    Offered offer;
    std::lock_guard<std::mutex> lock(registry.mutex);
    auto found = registry.offers.find(Key(bundleName, abilityName, userId));
    if (found == registry.offers.end()) {
        return false;
    }
    offer = std::move(found->second);
    registry.offers.erase(found);
    return true;
}

bool AbilityRegistry::Kill(const std::string &bundleName, const std::string &abilityName, int32_t userId)
{
    Registry &registry = TheRegistry();
    bool offered = Withdraw(bundleName, abilityName, userId);
    std::vector<std::shared_ptr<LoopbackSession>> sessions;
    {
        std::lock_guard<std::mutex> lock(registry.mutex);
        auto range = registry.sessions.equal_range(Key(bundleName, abilityName, userId));
        for (auto it = range.first; it != range.second; ++it) {
            sessions.push_back(it->second.lock());
        }
        registry.sessions.erase(range.first, range.second);
    }
    bool any = offered;
    for (auto &session : sessions) {
        if (session != nullptr) {
            any = any || !session->IsDead();
            session->Die();
        }
    }
    return any;
}

bool ConnectToRegistered(
    const std::string &bundleName, const std::string &abilityName, int32_t userId, AbilityLink &link)
{
    Registry &registry = TheRegistry();
    Key key(bundleName, abilityName, userId);
    sptr<IRemoteObject> object;
    std::shared_ptr<LoopbackSession> near;
    std::shared_ptr<LoopbackSession> far;
    {
        std::lock_guard<std::mutex> lock(registry.mutex);
        auto found = registry.offers.find(key);
        if (found == registry.offers.end()) {
            return false;
        }
        object = found->second.object;
        near = found->second.current.lock();
        link.use = near == nullptr ? nullptr : near->AcquireUse();
        if (link.use == nullptr) {
            std::tie(near, far) = LoopbackSession::MakePair();
            link.use = near->AcquireUse();
            found->second.current = near;
            ForgetEnded(registry, key);
            registry.sessions.emplace(key, near);
        }
    }
    if (far != nullptr) {
        // Keeps the far end until the session dies.
        far->OnDeath([far] {});
    }
    Ipc::WireObject wire = near->ExportFarSide(object);
    link.session = near;
    link.ability = near->Import(wire);
    return true;
}

bool FindRegisteredMetadata(const std::string &bundleName, int32_t userId, AbilityRegistry::Metadata &metadata)
{
    Registry &registry = TheRegistry();
    bool found = false;
    std::lock_guard<std::mutex> lock(registry.mutex);
    for (const auto &entry : registry.offers) {
        if (std::get<0>(entry.first) == bundleName && std::get<2>(entry.first) == userId) {
            metadata.insert(entry.second.metadata.begin(), entry.second.metadata.end());
            found = true;
        }
    }
    return found;
}

} // namespace Host
