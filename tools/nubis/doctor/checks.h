// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_CHECKS_H
#define NUBIS_TOOL_CHECKS_H

#include <string>

#include "findings.h"
#include "service_program.h"

namespace NubisTool {

constexpr const char *DAMAGE_ADVICE =
    "stop the service, move the database's files away and put a backup back with `nubis service import DIR`";

// The doctor's checks. None of them makes, changes or starts anything, but for CheckService when it is told to.

// Whether the tool and the libraries that it has loaded are of one version.
void CheckVersions(Findings &findings);
// NUBIS_LOG_LEVEL and NUBIS_LOG_FILE.
void CheckLog(Findings &findings);
// The folders of sockets and of data.
void CheckFolders(int user, Findings &findings);
// Every manifest, and that there is one for the drive service.
void CheckManifests(int user, Findings &findings);
// The program that the manifest names, with the version that it says it has; its path, empty when it cannot be run.
std::string CheckProgram(int user, Findings &findings);
// The socket, and who listens at it.
ServiceStatus CheckSocket(int user, Findings &findings);
// Whether the service answers; one that does not run is started first when `start` is set. When it answers, it says
// itself how its database is, and true is returned.
bool CheckService(int user, bool start, const ServiceStatus &status, Findings &findings);
// The folder of the data and the files in it, the space on the disk, the catalogue. The program, empty when there is
// none, reads the database unless `isServed`.
void CheckData(int user, const std::string &program, bool isServed, Findings &findings);

} // namespace NubisTool

#endif
