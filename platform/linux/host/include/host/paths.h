// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_PATHS_H
#define HOST_PATHS_H

#include <cstdint>
#include <string>
#include <vector>

// Where the host layer keeps its files. Read from the environment at each call; any thread. None of these creates
// anything unless it says so.
namespace Host {

/// The account that is used where none is given.
constexpr int32_t DEFAULT_USER_ID = 100;

/// NUBIS_RUNTIME_DIR, else $XDG_RUNTIME_DIR/nubis, else /tmp/nubis-<uid>: sockets and locks.
std::string RuntimeDir();
/// NUBIS_STATE_DIR, else $XDG_STATE_HOME/nubis, else ~/.local/state/nubis: data and logs.
std::string StateDir();
/// The folders that may hold <bundle>.json: NUBIS_MANIFEST_PATH (separated by colons), else share/nubis/manifests
/// of the prefix that this library is below (in lib, or lib/<architecture>), then of that of the program.
std::vector<std::string> ManifestDirs();
/// NUBIS_DEVICE_NAME, else the name of this machine.
std::string DeviceName();

/// <runtime>/<userId>/<bundle>.<ability>.sock
std::string AbilitySocketPath(const std::string &bundleName, const std::string &abilityName, int32_t userId);
/// Why a path is not a folder of mode 0700 that belongs to this user, in one line for people; empty when it is.
std::string PrivateFolderProblem(const std::string &path);
/// Creates the runtime folder and the user's folder in it where missing, and checks that both belong to this user with
/// mode 0700. On failure false, and `error` says which folder and why.
bool PrepareRuntimeDir(int32_t userId, std::string &error);
/// Creates `path` and its parents where missing, with mode 0700. On failure false with a text.
bool MakeDirs(const std::string &path, std::string &error);

} // namespace Host

#endif // HOST_PATHS_H
