// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "backup/backup_reader.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include <fcntl.h>

#include "backup/backup_format.h"
#include "catalogue/catalogue_parser.h"
#include "store/store.h"
#include "util/failure.h"
#include "util/file_handle.h"
#include "util/file_util.h"
#include "util/json_util.h"
#include "util/sha256_stream.h"

namespace DriveService {

namespace {

constexpr size_t MAX_MANIFEST_BYTES = size_t{16} * 1024 * 1024;
constexpr size_t MAX_CATALOGUE_BYTES = size_t{16} * 1024 * 1024;
// A record and all that is said about it.
constexpr size_t MAX_LINE_BYTES = size_t{64} * 1024 * 1024;
constexpr size_t BLOCK_BYTES = size_t{64} * 1024;
constexpr const char *ADVICE = "; export again, or take another copy of the backup";

// The manifest's object; a null and the reason when there is none.
Json::Value ReadManifestFile(const std::string &folder, std::string &error)
{
    Json::Value manifest;
    std::optional<std::string> text = ReadFile(folder + "/" + BACKUP_MANIFEST, MAX_MANIFEST_BYTES, error);
    if (text && ParseForeignJson(*text, manifest, error) && TextMember(manifest, "format") != BACKUP_FORMAT) {
        error = "it is the manifest of something else";
        return Json::Value();
    }
    return manifest;
}

bool IsTableFile(const std::string &name)
{
    return std::any_of(std::begin(BACKUP_FILES), std::end(BACKUP_FILES),
        [&name](const BackupFile &file) { return name == file.name; });
}

// The bundle of a catalogue file in a backup; empty when the name is none of such a file.
std::string BundleOf(const std::string &name)
{
    std::string_view begin = "catalogue/";
    std::string_view end = ".json";
    if (name.size() <= begin.size() + end.size() || name.compare(0, begin.size(), begin) != 0 ||
        name.compare(name.size() - end.size(), end.size(), end) != 0) {
        return "";
    }
    std::string bundle = name.substr(begin.size(), name.size() - begin.size() - end.size());
    return IsBundleName(bundle) ? bundle : "";
}

} // namespace

bool IsBackup(const std::string &folder)
{
    std::string ignored;
    return !ReadManifestFile(folder, ignored).isNull();
}

BackupReader::BackupReader(const std::string &folder) : folder_(folder)
{
    ReadManifest();
}

void BackupReader::Refuse(const std::string &place, const std::string &what) const
{
    throw RequestError(ErrorCode::INVALID_ARGUMENT, folder_ + "/" + place + ": " + what + ADVICE, "folder");
}

void BackupReader::ReadManifest()
{
    std::string error;
    Json::Value manifest = ReadManifestFile(folder_, error);
    if (manifest.isNull()) {
        throw RequestError(ErrorCode::INVALID_ARGUMENT,
            folder_ + " is no backup: " + BACKUP_MANIFEST + ": " + error + "; name the folder that was exported to",
            "folder");
    }
    const Json::Value &version = manifest["version"];
    if (version.isInt() && version.asInt() > BACKUP_VERSION) {
        throw RequestError(ErrorCode::INVALID_ARGUMENT,
            folder_ + " is a backup of version " + version.asString() + ", this program knows versions up to " +
                std::to_string(BACKUP_VERSION) + "; use a newer program",
            "folder");
    }
    if (version != BACKUP_VERSION || !manifest["files"].isArray()) {
        Refuse(BACKUP_MANIFEST, "\"version\" or \"files\" is damaged");
    }
    for (const Json::Value &file : manifest["files"]) {
        std::string name = TextMember(file, "name");
        bool isGood = (IsTableFile(name) || !BundleOf(name).empty()) && file["entries"].isInt64() &&
                      !TextMember(file, "sha256").empty();
        if (!isGood || !files_.emplace(name, File{file["entries"].asInt64(), TextMember(file, "sha256")}).second) {
            Refuse(BACKUP_MANIFEST, "the entry of the file \"" + Excerpt(name) + "\" is wrong");
        }
    }
    for (const BackupFile &file : BACKUP_FILES) {
        if (files_.count(file.name) == 0) {
            Refuse(BACKUP_MANIFEST, std::string("the file \"") + file.name + "\" is missing");
        }
    }
}

void BackupReader::ReadFileBytes(const std::string &name, const std::function<void(std::string_view bytes)> &take) const
{
    std::string path = folder_ + "/" + name;
    std::unique_ptr<FileHandle> file;
    try {
        // What is no file must not make the service wait for whoever would write into it.
        file = std::make_unique<FileHandle>(path, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
    } catch (const std::runtime_error &failure) {
        Refuse(name, failure.what());
    }
    if (!file->IsRegularFile()) {
        Refuse(name, "it is no file");
    }
    Sha256Stream digest;
    std::vector<char> block(BLOCK_BYTES);
    while (size_t count = file->Read(block.data(), block.size())) {
        std::string_view bytes(block.data(), count);
        digest.Add(bytes);
        take(bytes);
    }
    if (digest.FinishHex() != files_.at(name).sha256) {
        Refuse(name, "its SHA-256 is not that of the manifest, so it is damaged or was changed");
    }
}

void BackupReader::ReadEntries(const std::string &name, const std::function<void(const Json::Value &entry)> &take)
{
    int64_t lines = 0;
    std::string line;
    auto refuseLine = [&](const std::string &what) { Refuse(name, "line " + std::to_string(lines) + ": " + what); };
    auto takeLine = [&] {
        ++lines;
        Json::Value entry;
        std::string error;
        if (!ParseForeignJson(line, entry, error) || !entry.isObject()) {
            refuseLine(error.empty() ? "it is no object" : error);
        }
        try {
            take(entry);
        } catch (const BackupRowError &failure) {
            refuseLine(failure.what());
        }
        line.clear();
    };
    ReadFileBytes(name, [&](std::string_view bytes) {
        for (size_t end = bytes.find('\n'); end != std::string_view::npos; end = bytes.find('\n')) {
            line += bytes.substr(0, end);
            bytes.remove_prefix(end + 1);
            takeLine();
        }
        line += bytes;
        if (line.size() > MAX_LINE_BYTES) {
            ++lines;
            refuseLine("it is longer than any record");
        }
    });
    if (!line.empty() || lines != files_.at(name).entries) {
        Refuse(name, "it has not the " + std::to_string(files_.at(name).entries) + " entries that the manifest says");
    }
}

std::map<std::string, std::string> BackupReader::ReadCatalogue()
{
    std::map<std::string, std::string> texts;
    for (const auto &file : files_) {
        const std::string &name = file.first;
        std::string bundle = BundleOf(name);
        if (bundle.empty()) {
            continue;
        }
        std::string text;
        ReadFileBytes(name, [&](std::string_view bytes) {
            text += bytes;
            if (text.size() > MAX_CATALOGUE_BYTES) {
                Refuse(name, "it is too large for a catalogue file");
            }
        });
        ParsedEntry parsed = ParseCatalogueText(text);
        if (!parsed.problems.empty() || parsed.entry.bundleName != bundle) {
            Refuse(name, parsed.problems.empty() ? "it is of another bundle"
                                                 : parsed.problems[0].path + ": " + parsed.problems[0].text);
        }
        texts.emplace(bundle, std::move(text));
    }
    return texts;
}

} // namespace DriveService
