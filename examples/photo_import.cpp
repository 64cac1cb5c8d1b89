// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Imports the files of a folder as photos. The service keeps what describes a photo; the content goes where the
// application keeps contents, here a second folder, when the service asks for it during the save.
//
//   nubis service exec --catalogue examples/photos.json -- photo_import examples/photos /tmp/contents

#include <algorithm>
#include <array>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <json/json.h>
#include <openssl/evp.h>

#include "nubis_async.h"

using namespace Nubis;
namespace fs = std::filesystem;

namespace {
constexpr char BUNDLE[] = "com.example.photos";
constexpr char RECORD_TYPE[] = "photo";
constexpr int REQUEST_SECONDS = 60;

struct Photo {
    fs::path file;
    std::string digest;
    uint64_t size = 0;
};
// By record id.
using Photos = std::map<std::string, Photo>;

void ThrowIfError(const NBError &error, const std::string &what)
{
    if (error.HasError()) {
        throw std::system_error(ToErrorCode(error), what + ": " + error.GetErrorMsg());
    }
}

// Reads the file piece by piece, hands each piece on, and returns the digest of all of them.
template <typename TakePiece>
std::string ReadFile(const fs::path &path, TakePiece takePiece)
{
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> digest(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    std::ifstream file(path, std::ios::binary);
    if (digest == nullptr || EVP_DigestInit_ex(digest.get(), EVP_sha256(), nullptr) != 1 || !file) {
        throw std::runtime_error("cannot read " + path.string());
    }
    std::vector<char> piece(size_t{1} << 16);
    while (file.read(piece.data(), static_cast<std::streamsize>(piece.size())) || file.gcount() > 0) {
        const auto length = static_cast<size_t>(file.gcount());
        EVP_DigestUpdate(digest.get(), piece.data(), length);
        takePiece(piece.data(), length);
    }
    std::array<unsigned char, EVP_MAX_MD_SIZE> value{};
    unsigned int length = 0;
    if (file.bad() || EVP_DigestFinal_ex(digest.get(), value.data(), &length) != 1) {
        throw std::runtime_error("cannot read " + path.string());
    }
    static constexpr char DIGITS[] = "0123456789abcdef";
    std::string text;
    for (unsigned int i = 0; i < length; ++i) {
        text += {DIGITS[value[i] >> 4], DIGITS[value[i] & 15]};
    }
    return text;
}

// Brings contents to where they are kept, and knows how far it is. Any thread.
class Uploader {
public:
    Uploader(Photos photos, fs::path store) : photos_(std::move(photos)), store_(std::move(store))
    {}

    // Answers a request of the service: the assets whose contents are there now. Runs on a thread of the connection and
    // may be called for several requests at once.
    int Upload(const std::string &requestText, std::string &reply)
    {
        Json::Value request;
        std::string problem;
        const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
        if (!reader->parse(requestText.data(), requestText.data() + requestText.size(), &request, &problem)) {
            return -1;
        }
        Json::Value answer(Json::objectValue);
        answer["code"] = 0;
        answer["records"] = Json::Value(Json::arrayValue);
        for (const Json::Value &record : request["records"]) {
            const std::string recordId = record["recordId"].asString();
            if (!TryUpload(recordId)) {
                continue; // stays pending, and is asked for again with the next save
            }
            Json::Value done(Json::objectValue);
            done["recordId"] = recordId;
            done["assets"] = record["assets"];
            answer["records"].append(done);
        }
        reply = Json::writeString(Json::StreamWriterBuilder(), answer);
        return 0;
    }

    // Sets the counters of the records that a task is about.
    void Count(NBProgressMap &progress) const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        for (auto &[recordId, counters] : progress) {
            counters.totalSize = photos_.at(recordId).size;
            const auto sent = sent_.find(recordId);
            counters.transferredSize = sent == sent_.end() ? 0 : sent->second;
        }
    }

private:
    bool TryUpload(const std::string &recordId)
    {
        try {
            const Photo &photo = photos_.at(recordId); // out of range for a photo that this run does not import
            const fs::path target = store_ / photo.digest;
            std::ofstream copy(target.string() + ".part", std::ios::binary);
            const std::string digest = ReadFile(photo.file, [&](const char *piece, size_t length) {
                copy.write(piece, static_cast<std::streamsize>(length));
                const std::lock_guard<std::mutex> lock(mutex_);
                sent_[recordId] += length;
            });
            copy.close();
            if (!copy || digest != photo.digest) {
                throw std::runtime_error(photo.file.string() + " has changed, or " + store_.string() + " is full");
            }
            fs::rename(target.string() + ".part", target);
            // The library calls for progress every ten seconds; who imports small photos wants to see it before.
            NBDatabase::TimerProgressFunc(nullptr);
            return true;
        } catch (const std::exception &error) {
            std::cerr << "photo_import: " << error.what() << '\n';
            return false;
        }
    }

    const Photos photos_;
    const fs::path store_;
    mutable std::mutex mutex_;
    std::map<std::string, uint64_t> sent_;
};

// The digest is the record's id, so that importing again, or the same photo twice, makes no second one.
Photos ReadFolder(const fs::path &folder)
{
    Photos photos;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            Photo photo{fs::absolute(entry.path()), "", 0};
            photo.digest = ReadFile(photo.file, [&photo](const char *, size_t length) { photo.size += length; });
            photos.emplace(photo.digest, photo);
        }
    }
    return photos;
}

NBRecord ToRecord(const std::string &recordId, const Photo &photo)
{
    NBAsset content;
    content.uri = "file://" + photo.file.string();
    content.assetName = photo.file.filename().string();
    content.sha256 = photo.digest;
    content.size = photo.size;
    NBRecord record;
    record.SetRecordType(RECORD_TYPE);
    record.SetRecordId(recordId);
    record.SetNewCreate(true);
    record.SetRecordData({{"name", NBRecordField(content.assetName)}, {"content", NBRecordField(content)}});
    return record;
}

void PrintProgress(const NBProgressMap &progress)
{
    uint64_t sent = 0;
    uint64_t total = 0;
    for (const auto &[recordId, counters] : progress) {
        sent += counters.transferredSize;
        total += counters.totalSize;
    }
    std::cout << "uploaded " << sent << " of " << total << " bytes, " << (total == 0 ? 100 : sent * 100 / total) << " %"
              << std::endl;
}

bool IsUploaded(NubisNative &kit, const NBContainer &container, const std::string &recordId)
{
    Json::Value request(Json::objectValue);
    request["function"] = "fetchAssetStatusWithId";
    request["bundleName"] = container.GetBundleName();
    request["containerName"] = container.GetContainerName();
    request["recordType"] = RECORD_TYPE;
    request["recordId"] = recordId;
    request["fields"] = "content";
    Json::Value reply;
    ThrowIfError(kit.SendDataToCloudSrv(request, reply, REQUEST_SECONDS), "asking for the state of a photo");
    const Json::Value &assets = reply["assets"];
    return assets.size() == 1 && assets[0]["status"].asString() == "uploaded";
}

int Import(const std::string &program, const fs::path &folder, const fs::path &store)
{
    auto kit = NubisNative::GetInstance(100, NB_SYNC_DEMON_DATA);
    std::map<std::string, NBAppInfo> apps;
    ThrowIfError(kit->GetCloudAppInfo({BUNDLE}, apps), "asking for the catalogue");
    auto container = kit->GetDefaultContainer(BUNDLE);
    if (container == nullptr) {
        throw std::runtime_error("the service does not know com.example.photos: nubis catalogue apply photos.json");
    }
    fs::create_directories(store);
    const Photos photos = ReadFolder(folder);
    // Held by the callbacks, too, which a request of the service may keep longer than this function runs.
    auto uploader = std::make_shared<Uploader>(photos, store);
    // The name of the process: on a device that is the application's bundle.
    kit->SetUploadAssetCallBack(program,
        [uploader](const std::string &request, std::string &reply) { return uploader->Upload(request, reply); });

    const auto report = [uploader](auto, std::shared_ptr<NBProgressMap> progress) {
        uploader->Count(*progress);
        PrintProgress(*progress);
    };
    auto database = container->GetPrivateDatabase();
    const size_t batchSize = std::max<size_t>(apps[BUNDLE].defaultContainer.maxBatchNumber, 1);
    for (auto photo = photos.begin(); photo != photos.end();) {
        std::vector<NBRecord> batch;
        for (; photo != photos.end() && batch.size() < batchSize; ++photo) {
            batch.push_back(ToRecord(photo->first, photo->second));
        }
        const auto saved =
            Async::SaveRecords(database, std::move(batch), NB_SAVE_OVERWRITE, nullptr, report).Start().get();
        ThrowIfError(saved.error, "saving photos");
        for (const auto &[recordId, result] : saved.results) {
            ThrowIfError(result, "saving " + photos.at(recordId).file.string());
        }
    }
    const auto uploaded = std::count_if(
        photos.begin(), photos.end(), [&](const auto &photo) { return IsUploaded(*kit, *container, photo.first); });
    std::cout << uploaded << " of " << photos.size() << " photos are in the cloud with their contents\n";
    return static_cast<size_t>(uploaded) == photos.size() ? 0 : 1;
}
} // namespace

int main(int argc, char *argv[])
{
    if (argc != 3) {
        std::cerr << "usage: photo_import FOLDER CONTENTS\n";
        return 2;
    }
    try {
        return Import(fs::path(argv[0]).filename().string(), argv[1], argv[2]);
    } catch (const std::exception &error) {
        std::cerr << "photo_import: " << error.what() << '\n';
        return 1;
    }
}
