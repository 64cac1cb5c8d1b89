// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "host/ability_control.h"

#include <filesystem>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>

#include "connect_error.h"
#include "host/paths.h"
#include "manifest.h"
#include "service_launcher.h"
#include "unix_socket.h"

namespace Host {

namespace {

struct ErrorText {
    std::mutex mutex;
    std::string text;
};

ErrorText &TheErrorText()
{
    static auto *error = new ErrorText();
    return *error;
}

// The names of the bundles that have a manifest in the folder.
std::set<std::string> BundlesIn(const std::string &dir)
{
    std::set<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(dir, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        if (entry->path().extension() == ".json") {
            names.insert(entry->path().stem().string());
        }
    }
    return names;
}

ManifestState Inspect(const std::string &dir, const std::string &bundleName, int32_t userId)
{
    Manifest manifest;
    ManifestState state;
    state.bundleName = bundleName;
    ReadManifestFile(dir, bundleName, manifest, state.error);
    state.file = manifest.file;
    if (!state.error.empty()) {
        return state;
    }
    for (const Manifest::Ability &described : manifest.abilities) {
        ManifestAbility ability;
        ability.name = described.name;
        ability.metadata = described.metadata;
        BuildCommand(manifest, described, userId, ability.command, ability.error);
        state.abilities.push_back(std::move(ability));
    }
    return state;
}

} // namespace

std::vector<ManifestState> InspectManifests(int32_t userId)
{
    std::vector<ManifestState> states;
    for (const std::string &dir : ManifestDirs()) {
        for (const std::string &bundleName : BundlesIn(dir)) {
            states.push_back(Inspect(dir, bundleName, userId));
        }
    }
    return states;
}

AbilityStatus FindAbility(const std::string &bundleName, const std::string &abilityName, int32_t userId)
{
    AbilityStatus status;
    status.socketPath = AbilitySocketPath(bundleName, abilityName, userId);
    std::string error;
    bool nobody = false;
    Ipc::UniqueFd socket = Ipc::ConnectSocket(status.socketPath, error, nobody);
    int uid = -1;
    status.running = socket && Ipc::GetPeer(socket.Get(), status.pid, uid);
    return status;
}

std::string LastConnectError()
{
    ErrorText &error = TheErrorText();
    std::lock_guard<std::mutex> lock(error.mutex);
    return error.text;
}

void SetLastConnectError(const std::string &text)
{
    ErrorText &error = TheErrorText();
    std::lock_guard<std::mutex> lock(error.mutex);
    error.text = text;
}

} // namespace Host
