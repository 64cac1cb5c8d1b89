// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_SESSION_H
#define NUBIS_TOOL_SESSION_H

#include <memory>
#include <optional>
#include <string>

#include "common_options.h"
#include "nb_app_info.h"
#include "nb_container.h"
#include "nb_database.h"
#include "nubis_kit.h"

namespace NubisTool {

// The kit, the container and the database that a command's options name, each asked for when it is first needed. One
// thread. Everything throws CommandError when it cannot be had.
class Session {
public:
    explicit Session(const CommonOptions &options);

    Nubis::NubisNative &Kit();
    // The catalogue entries of the kind of the demon; throws when the bundle is not there.
    Nubis::NBAppInfo App(const std::string &bundleName);
    // The options' container in their bundle's catalogue entry.
    const Nubis::NBContainerInfo &ContainerInfo();
    const Nubis::NBSchemaNode &RecordType(const std::string &name);
    // A container of the kind of the demon; null when the catalogue does not have it.
    std::shared_ptr<Nubis::NBContainer> FindContainer(const std::string &bundleName, const std::string &containerName);
    // The options' container.
    Nubis::NBContainer &Container();
    // The options' database as it is, for those who deal with its lock themselves.
    std::shared_ptr<Nubis::NBDatabase> OpenDatabase();
    // The options' database, with the lock session that the environment names for its container, if it names one
    // (lock_session.h).
    std::shared_ptr<Nubis::NBDatabase> Database();
    // How much one save request may carry.
    Nubis::NBUploadSize UploadSize();

private:
    bool IsFileKind() const;

    const CommonOptions options_;
    std::shared_ptr<Nubis::NubisNative> kit_;
    std::optional<Nubis::NBContainerInfo> containerInfo_;
    // Held because a database works only as long as somebody holds its container.
    std::shared_ptr<Nubis::NBContainer> container_;
};

} // namespace NubisTool

#endif
