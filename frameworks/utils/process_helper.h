// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_PROCESS_HELPER_H
#define NUBIS_PROCESS_HELPER_H

#include <string>

namespace Nubis {
class ProcessHelper {
public:
    // The name under which the process runs, without folders: for an app its bundle name. Empty when it is unknown.
    static std::string GetCurProcessName();
};
} // namespace Nubis

#endif // NUBIS_PROCESS_HELPER_H
