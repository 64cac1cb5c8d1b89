// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <fstream>

#include "event_spool.h"
#include "fuzz_target.h"
#include "host/paths.h"
#include "manifest.h"

namespace {
constexpr const char *BUNDLE = "com.example.fuzz";

void CheckManifest(const std::string &text)
{
    static const std::string folder = Host::ManifestDirs().front();
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/" + BUNDLE + ".json", std::ios::binary) << text;
    Host::Manifest manifest;
    std::string error;
    if (!Host::ReadManifest(BUNDLE, manifest, error)) {
        FUZZ_CHECK(!error.empty());
        return;
    }
    for (const auto &ability : manifest.abilities) {
        FUZZ_CHECK(Host::IsSafeName(ability.name) && manifest.Find(ability.name) != nullptr);
        // What is started: a program and arguments that a system call can take.
        FUZZ_CHECK(!ability.exec.empty() && !ability.exec.front().empty());
        for (const std::string &part : ability.exec) {
            FUZZ_CHECK(part.find('\0') == std::string::npos);
        }
    }
}

// A text that another process left for a listener arrives as it is, under a name as it could be there.
void CheckEventFile(const std::string &name, const std::string &text)
{
    static const std::string spool = Fuzz::Folder() + "/spool";
    std::filesystem::create_directories(spool);
    const bool isName = Host::IsSafeName(name);
    std::ofstream(spool + "/" + (isName ? name : "1.event"), std::ios::binary) << text;
    size_t files = 0;
    for (const std::string &file : Host::ListSpool(spool)) {
        std::string taken;
        const Host::Taken kind = Host::TakeFromSpool(file, taken);
        FUZZ_CHECK(kind == Host::Taken::TEXT ? taken == text : kind == Host::Taken::GAP);
        FUZZ_CHECK(!std::filesystem::exists(file));
        ++files;
    }
    FUZZ_CHECK(files == 1 || isName);
    std::filesystem::remove_all(spool);
}
} // namespace

void Fuzz::TestOne(const std::string &input)
{
    CheckManifest(input);
    CheckEventFile(input.substr(0, input.find('\n')), input);
}
