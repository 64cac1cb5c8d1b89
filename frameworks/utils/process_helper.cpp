// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "process_helper.h"

#include <fstream>

namespace Nubis {
std::string ProcessHelper::GetCurProcessName()
{
    // Not /proc/self/comm: it is cut after 15 characters, and bundle names are longer.
    std::ifstream commandLine("/proc/self/cmdline", std::ios::binary);
    std::string name;
    if (!std::getline(commandLine, name, '\0')) {
        return "";
    }
    size_t folderEnd = name.rfind('/');
    return folderEnd == std::string::npos ? name : name.substr(folderEnd + 1);
}
} // namespace Nubis
