// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "session.h"

#include <cstdlib>
#include <map>
#include <vector>

#include "command_error.h"
#include "error_text.h"
#include "lock_session.h"

namespace NubisTool {
namespace {

template <typename Map>
std::string Names(const Map &entries)
{
    std::string names;
    for (const auto &[name, entry] : entries) {
        names += (names.empty() ? "" : ", ") + name;
    }
    return names;
}

} // namespace

Session::Session(const CommonOptions &options) : options_(options)
{}

bool Session::IsFileKind() const
{
    return options_.demon == Nubis::NB_SYNC_DEMON_FILE;
}

Nubis::NubisNative &Session::Kit()
{
    if (kit_ == nullptr) {
        kit_ = Nubis::NubisNative::GetInstance(options_.user, options_.demon);
    }
    return *kit_;
}

Nubis::NBAppInfo Session::App(const std::string &bundleName)
{
    std::map<std::string, Nubis::NBAppInfo> apps;
    Nubis::NBError error =
        IsFileKind() ? Kit().GetCloudFileAppInfo({bundleName}, apps) : Kit().GetCloudAppInfo({bundleName}, apps);
    ThrowIfError(error, "reading the catalogue entry of " + bundleName);
    auto app = apps.find(bundleName);
    if (app == apps.end()) {
        throw CommandError("the catalogue has no bundle " + bundleName,
            "see `nubis catalogue list`, or add it with `nubis catalogue apply FILE`");
    }
    return app->second;
}

const Nubis::NBContainerInfo &Session::ContainerInfo()
{
    if (containerInfo_) {
        return *containerInfo_;
    }
    Nubis::NBAppInfo app = App(options_.bundle);
    std::map<std::string, Nubis::NBContainerInfo> containers = {
        {app.defaultContainer.containerName, app.defaultContainer}};
    for (const Nubis::NBContainerInfo &shared : app.sharedContainers) {
        containers.emplace(shared.containerName, shared);
    }
    const std::string &wanted = options_.container.empty() ? app.defaultContainer.containerName : options_.container;
    auto container = containers.find(wanted);
    if (container == containers.end() || wanted.empty()) {
        throw CommandError("the bundle " + options_.bundle + " has no container \"" + wanted + "\"",
            "name one of its containers with --container: " + Names(containers));
    }
    containerInfo_ = container->second;
    return *containerInfo_;
}

const Nubis::NBSchemaNode &Session::RecordType(const std::string &name)
{
    const auto &types = ContainerInfo().schema.recordTypes;
    auto type = types.find(name);
    if (type == types.end()) {
        throw CommandError("the container " + ContainerInfo().containerName + " has no record type \"" + name + "\"",
            "name one of its types with --type: " + Names(types));
    }
    return type->second;
}

std::shared_ptr<Nubis::NBContainer> Session::FindContainer(
    const std::string &bundleName, const std::string &containerName)
{
    return IsFileKind() ? Kit().GetFileContainer(bundleName, containerName)
                        : Kit().GetContainer(bundleName, containerName);
}

Nubis::NBContainer &Session::Container()
{
    const std::string &name = ContainerInfo().containerName;
    if (container_ == nullptr) {
        container_ = FindContainer(options_.bundle, name);
    }
    if (container_ == nullptr) {
        throw CommandError("the container " + name + " of " + options_.bundle + " cannot be opened",
            "run the command with NUBIS_LOG_LEVEL=info to see why");
    }
    return *container_;
}

std::shared_ptr<Nubis::NBDatabase> Session::OpenDatabase()
{
    auto database = Container().GetDatabaseWithdatabaseScope(options_.scope);
    if (database == nullptr) {
        throw CommandError("the database of the container " + ContainerInfo().containerName + " cannot be opened",
            "run the command with NUBIS_LOG_LEVEL=info to see why");
    }
    return database;
}

std::shared_ptr<Nubis::NBDatabase> Session::Database()
{
    auto database = OpenDatabase();
    std::string lockSession = LockSessionFor(std::getenv(LOCK_SESSION_VARIABLE), LockScope(options_.user, Container()));
    if (!lockSession.empty() && database->GetLockSessionId() != lockSession) {
        TakeOnLockSession(*database, lockSession);
    }
    return database;
}

Nubis::NBUploadSize Session::UploadSize()
{
    Nubis::NBUploadSize size;
    std::vector<Nubis::NBAppBriefInfo> infos;
    bool hasMore = false;
    int nextIndex = 0;
    ThrowIfError(Kit().GetCloudAppBriefInfo(0, infos, hasMore, nextIndex, size), "reading the service's limits");
    return size;
}

} // namespace NubisTool
