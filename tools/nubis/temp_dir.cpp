// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "temp_dir.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>

#include "command_error.h"

namespace NubisTool {
namespace {

// Sockets will stand in there, and a socket's path may be no longer than 107 bytes.
constexpr size_t LONGEST_BASE = 30;

std::string Base()
{
    const char *configured = std::getenv("TMPDIR");
    if (configured == nullptr || configured[0] != '/' || std::strlen(configured) > LONGEST_BASE) {
        return "/tmp";
    }
    return configured;
}

} // namespace

TempDir::TempDir()
{
    std::string pattern = Base() + "/nubis-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        throw CommandError("cannot make a folder " + pattern + ": " + std::strerror(errno),
            "check that the folder for temporary files can be written, or name another one in TMPDIR");
    }
    path_ = pattern;
}

TempDir::~TempDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::Make(const std::string &name) const
{
    std::string made = path_ + "/" + name;
    if (mkdir(made.c_str(), S_IRWXU) != 0) {
        throw CommandError("cannot make the folder " + made + ": " + std::strerror(errno),
            "check that the folder for temporary files has room left");
    }
    return made;
}

} // namespace NubisTool
