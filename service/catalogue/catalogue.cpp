// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "catalogue/catalogue.h"

#include <chrono>
#include <filesystem>
#include <set>
#include <stdexcept>

#include "account/settings.h"
#include "catalogue/catalogue_parser.h"
#include "catalogue/served_versions.h"
#include "records/limits.h"
#include "util/encoding.h"
#include "util/json_util.h"
#include "util/json_writer.h"
#include "util/log.h"

namespace DriveService {

namespace {

constexpr const char *FILE_ENDING = ".json";

// File times tick in steps of some milliseconds: a file that changed so shortly before it was read could change again
// without a sign.
constexpr std::chrono::milliseconds SETTLING_TIME(200);

bool IsSettled(const FileSignature &signature)
{
    auto now = std::chrono::system_clock::now().time_since_epoch();
    auto changed = std::chrono::nanoseconds(signature.changedNs);
    return now > changed && now - changed > SETTLING_TIME;
}

// A file given to the tool on the command line.
struct GivenFile {
    std::string text;
    AppEntry entry;
};

std::string ReadGivenFiles(const std::vector<std::string> &files, std::vector<GivenFile> &given)
{
    std::string problems;
    std::set<std::string> bundles;
    for (const std::string &file : files) {
        std::string error;
        std::optional<std::string> text = ReadFile(file, MAX_CATALOGUE_BYTES, error);
        if (!text) {
            problems += file + ": cannot be read: " + error + "\n";
            continue;
        }
        ParsedEntry parsed = ParseCatalogueText(*text);
        problems += DescribeProblems(file, parsed.problems);
        if (parsed.problems.empty() && !bundles.insert(parsed.entry.bundleName).second) {
            problems += file + ": bundleName: \"" + parsed.entry.bundleName + "\" is in another of these files too\n";
        }
        given.push_back({std::move(*text), std::move(parsed.entry)});
    }
    return problems;
}

} // namespace

Catalogue::Catalogue(std::string folder, Store &store) : folder_(std::move(folder)), store_(store)
{}

std::string Catalogue::PathOf(const std::string &bundleName) const
{
    return std::filesystem::path(folder_) / (bundleName + FILE_ENDING);
}

std::shared_ptr<const AppEntry> Catalogue::Find(const std::string &bundleName)
{
    if (!IsBundleName(bundleName)) {
        return nullptr;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    std::optional<FileSignature> signature = SignatureOf(PathOf(bundleName));
    if (!signature) {
        cache_.erase(bundleName);
        return nullptr;
    }
    Cached &cached = cache_[bundleName];
    if (!cached.settled || !(cached.signature == *signature)) {
        Load(bundleName, *signature, cached);
    }
    return cached.entry;
}

std::set<std::string> Catalogue::Names() const
{
    std::set<std::string> names;
    std::error_code failure;
    for (std::filesystem::directory_iterator file(folder_, failure), end; !failure && file != end;
         file.increment(failure)) {
        if (file->path().extension() == FILE_ENDING && IsBundleName(file->path().stem())) {
            names.insert(file->path().stem());
        }
    }
    return names;
}

std::vector<std::shared_ptr<const AppEntry>> Catalogue::All()
{
    std::vector<std::shared_ptr<const AppEntry>> entries;
    for (const std::string &name : Names()) {
        if (std::shared_ptr<const AppEntry> entry = Find(name)) {
            entries.push_back(std::move(entry));
        }
    }
    return entries;
}

std::map<std::string, std::string> Catalogue::Texts()
{
    std::map<std::string, std::string> texts;
    for (const std::string &name : Names()) {
        // The versions that it is served with are remembered from now on at the latest.
        Find(name);
        std::string error;
        std::optional<std::string> text = ReadFile(PathOf(name), MAX_CATALOGUE_BYTES, error);
        if (!text) {
            throw std::runtime_error("catalogue file " + PathOf(name) + " cannot be read: " + error);
        }
        ParsedEntry parsed = ParseCatalogueText(*text);
        if (!parsed.problems.empty() || parsed.entry.bundleName != name) {
            throw std::runtime_error(
                "catalogue file " + PathOf(name) + " is broken; mend or remove it, or apply a good one");
        }
        texts.emplace(name, std::move(*text));
    }
    return texts;
}

void Catalogue::Install(const std::map<std::string, std::string> &texts)
{
    std::lock_guard<std::mutex> lock(mutex_);
    MakePrivateFolder(folder_);
    for (const auto &[bundleName, text] : texts) {
        ReplaceFile(PathOf(bundleName), text);
    }
    // The versions that the store remembers are other ones, too.
    cache_.clear();
}

void Catalogue::Load(const std::string &bundleName, const FileSignature &signature, Cached &cached)
{
    bool settled = IsSettled(signature);
    // Stays so when the store fails below: the next request tries again.
    cached.settled = false;
    std::string error;
    std::optional<std::string> text = ReadFile(PathOf(bundleName), MAX_CATALOGUE_BYTES, error);
    if (!text) {
        LogError("catalogue file " + PathOf(bundleName) + " cannot be read: " + error);
    } else if (std::string digest = Sha256(*text); digest != cached.digest) {
        std::shared_ptr<const AppEntry> entry = MakeEntry(bundleName, *text);
        cached.digest = std::move(digest);
        if (entry) {
            cached.entry = std::move(entry);
        }
    }
    cached.signature = signature;
    cached.settled = settled;
}

std::shared_ptr<const AppEntry> Catalogue::MakeEntry(const std::string &bundleName, const std::string &text)
{
    ParsedEntry parsed = ParseCatalogueText(text);
    if (parsed.problems.empty() && parsed.entry.bundleName != bundleName) {
        parsed.problems.push_back({"bundleName",
            "expected the file's name \"" + bundleName + "\", found text \"" + parsed.entry.bundleName + "\""});
    }
    if (!parsed.problems.empty()) {
        LogError("catalogue file is broken, what was read before stays in force:\n" +
                 DescribeProblems(PathOf(bundleName), parsed.problems));
        return nullptr;
    }
    auto entry = std::make_shared<AppEntry>(std::move(parsed.entry));
    std::string setting = SETTINGS_SERVED_VERSIONS + bundleName;
    std::unique_ptr<WriteSession> session = store_.BeginWrite();
    std::string last = session->View().Setting(setting).value_or("");
    Json::Value served;
    std::string error;
    if (!last.empty() && !ParseJson(last, served, error)) {
        LogError("the served versions of " + bundleName + " cannot be read: " + error);
    }
    std::string remembered = WriteJson(RaiseVersions(*entry, served));
    if (remembered != last) {
        session->SetSetting(setting, remembered);
    }
    session->Commit();
    LogInfo("catalogue file " + PathOf(bundleName) + " read, schemaGroupVersion " +
            std::to_string(entry->schemaGroupVersion));
    return entry;
}

std::string CheckCatalogueFiles(const std::vector<std::string> &files)
{
    std::vector<GivenFile> given;
    return ReadGivenFiles(files, given);
}

std::string InstallCatalogueFiles(const std::string &folder, const std::vector<std::string> &files)
{
    std::vector<GivenFile> given;
    std::string problems = ReadGivenFiles(files, given);
    if (!problems.empty()) {
        return problems;
    }
    MakePrivateFolder(folder);
    for (const GivenFile &file : given) {
        ReplaceFile(std::filesystem::path(folder) / (file.entry.bundleName + FILE_ENDING), file.text);
    }
    return "";
}

} // namespace DriveService
