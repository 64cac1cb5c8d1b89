// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_MANIFEST_H
#define HOST_MANIFEST_H

#include <map>
#include <string>
#include <vector>

namespace Host {

// What <bundle>.json says about a bundle.
struct Manifest {
    struct Ability {
        std::string name;
        // The program and its arguments, as written.
        std::vector<std::string> exec;
        std::map<std::string, std::string> metadata;
    };

    std::string file;
    std::string dir;
    std::vector<Ability> abilities;

    // Null when the bundle has no such ability.
    const Ability *Find(const std::string &abilityName) const;
};

// False for names that could lead out of a folder or make two abilities meet in one path.
bool IsSafeName(const std::string &name);

// Reads the bundle's manifest in this folder. Fails as ReadManifest does.
bool ReadManifestFile(const std::string &dir, const std::string &bundleName, Manifest &manifest, std::string &error);

// Reads the first manifest of the bundle along the manifest folders. False when there is none or when it is broken;
// `error` says where was searched, or which member of which file is wrong and what was expected. Never throws.
bool ReadManifest(const std::string &bundleName, Manifest &manifest, std::string &error);

} // namespace Host

#endif // HOST_MANIFEST_H
