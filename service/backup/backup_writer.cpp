// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "backup/backup_writer.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>

#include "backup/backup_format.h"
#include "backup/backup_reader.h"
#include "util/failure.h"
#include "util/file_util.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

constexpr size_t BUFFER_BYTES = size_t{256} * 1024;

bool IsThere(const std::string &path)
{
    struct stat info {};
    return lstat(path.c_str(), &info) == 0;
}

// Replacing it removes it, so it must be a backup beyond doubt.
void RequireReplaceable(const std::string &folder)
{
    std::error_code failure;
    bool isEmpty = std::filesystem::is_directory(std::filesystem::symlink_status(folder, failure)) &&
                   std::filesystem::is_empty(folder, failure);
    if (IsThere(folder) && !isEmpty && !IsBackup(folder)) {
        throw RequestError(ErrorCode::INVALID_ARGUMENT,
            folder + " is there and is no backup; name another folder, or remove it", "folder");
    }
}

void FlushFolder(const std::string &path)
{
    FileHandle(path, O_RDONLY | O_DIRECTORY).Flush();
}

} // namespace

BackupWriter::BackupWriter(const std::string &folder) : folder_(folder)
{
    RequireReplaceable(folder_);
    std::filesystem::path path(folder_);
    std::string pattern = (path.parent_path() / ("." + path.filename().string() + ".XXXXXX")).string();
    // Its mode is 0700.
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder beside " + folder_ + ": " + std::strerror(errno));
    }
    unfinished_ = pattern;
    try {
        MakePrivateFolder(unfinished_ + "/" + BACKUP_CATALOGUE);
    } catch (const std::exception &) {
        std::error_code ignored;
        std::filesystem::remove_all(unfinished_, ignored);
        throw;
    }
}

BackupWriter::~BackupWriter()
{
    std::error_code ignored;
    if (!unfinished_.empty()) {
        std::filesystem::remove_all(unfinished_, ignored);
    }
}

void BackupWriter::BeginFile(const std::string &name)
{
    name_ = name;
    file_ = std::make_unique<FileHandle>(unfinished_ + "/" + name, O_WRONLY | O_CREAT | O_EXCL);
    digest_ = std::make_unique<Sha256Stream>();
    entries_ = 0;
}

void BackupWriter::Put(const std::string &text)
{
    buffer_ += text;
    if (buffer_.size() >= BUFFER_BYTES) {
        FlushBuffer();
    }
}

void BackupWriter::FlushBuffer()
{
    digest_->Add(buffer_);
    file_->Write(buffer_);
    buffer_.clear();
}

void BackupWriter::AddEntry(const Json::Value &entry)
{
    Put(WriteJson(entry) + "\n");
    ++entries_;
}

void BackupWriter::EndFile()
{
    FlushBuffer();
    file_->Flush();
    file_.reset();
    Json::Value file(Json::objectValue);
    file["name"] = name_;
    file["entries"] = Json::Int64(entries_);
    file["sha256"] = digest_->FinishHex();
    files_.append(std::move(file));
}

void BackupWriter::AddFile(const std::string &name, const std::string &content)
{
    BeginFile(name);
    Put(content);
    entries_ = 1;
    EndFile();
}

Json::Value BackupWriter::Finish()
{
    Json::Value manifest(Json::objectValue);
    manifest["format"] = BACKUP_FORMAT;
    manifest["version"] = BACKUP_VERSION;
    manifest["files"] = files_;
    {
        FileHandle file(unfinished_ + "/" + BACKUP_MANIFEST, O_WRONLY | O_CREAT | O_EXCL);
        file.Write(manifest.toStyledString());
        file.Flush();
    }
    FlushFolder(unfinished_ + "/" + BACKUP_CATALOGUE);
    FlushFolder(unfinished_);
    TakePlace();
    return files_;
}

void BackupWriter::TakePlace()
{
    // Something else may have come there while the backup was written.
    RequireReplaceable(folder_);
    bool wasThere = IsThere(folder_);
    // An exchange in one step: a crash meets the old backup or the new one.
    unsigned how = wasThere ? RENAME_EXCHANGE : RENAME_NOREPLACE;
    if (renameat2(AT_FDCWD, unfinished_.c_str(), AT_FDCWD, folder_.c_str(), how) != 0) {
        throw std::runtime_error("cannot put the backup at " + folder_ + ": " + std::strerror(errno) +
                                 (wasThere ? "; export to a new folder" : ""));
    }
    FlushFolder(std::filesystem::path(folder_).parent_path().string());
    if (!wasThere) {
        unfinished_.clear();
    }
}

} // namespace DriveService
