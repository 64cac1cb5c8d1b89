// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "backup/backup_format.h"
#include "fuzz_target.h"
#include "service_fixture.h"
#include "util/encoding.h"
#include "util/json_util.h"
#include "util/json_writer.h"

namespace {
using namespace DriveService;

class Service {
public:
    Service()
    {
        std::string data = Fuzz::Folder() + "/service";
        std::filesystem::create_directories(DataPaths::CatalogueOf(data));
        std::ofstream(DataPaths::CatalogueOf(data) + "/com.example.people.json") << WriteJson(PeopleEntry());
        instance_ = std::make_unique<ServiceInstance>(data, 100, [] { return int64_t{1000}; });
        Ask(R"({"function": "saveRecords", "bundleName": "com.example.people", "containerName": "people",
            "records": [{"recordId": "p", "recordType": "person", "isNew": true, "baseVersion": 0, "name": "Ann"}]})");
        FUZZ_CHECK(Export("base") == 0);
    }

    int Ask(const std::string &request)
    {
        Json::Value reply;
        std::string error;
        FUZZ_CHECK(ParseJson(instance_->Router().Answer(request, "tablet"), reply, error));
        return reply["code"].asInt();
    }

    int Export(const std::string &name)
    {
        return Ask(WriteJson(Members({{"function", "exportData"}, {"folder", PathOf(name)}})));
    }

    int Import(const std::string &name)
    {
        return Ask(WriteJson(Members({{"function", "importData"}, {"folder", PathOf(name)}, {"replace", true}})));
    }

    static std::string PathOf(const std::string &name)
    {
        return Fuzz::Folder() + "/" + name;
    }

private:
    std::unique_ptr<ServiceInstance> instance_;
};

// Puts the text in the place of a file of a backup, and what belongs to it into the manifest.
void Forge(const std::string &folder, const std::string &name, const std::string &text)
{
    std::ofstream(folder + "/" + name, std::ios::binary) << text;
    Json::Value manifest;
    std::string error;
    FUZZ_CHECK(ParseJson(ReadText(folder + "/" + BACKUP_MANIFEST), manifest, error));
    for (Json::Value &file : manifest["files"]) {
        if (file["name"] == name) {
            file["entries"] = Json::Int64(std::count(text.begin(), text.end(), '\n'));
            file["sha256"] = HexEncode(Sha256(text));
        }
    }
    std::ofstream(folder + "/" + BACKUP_MANIFEST) << manifest.toStyledString();
}
} // namespace

// The first byte says which file of a backup of one record the rest takes the place of; 'm' is the manifest.
void Fuzz::TestOne(const std::string &input)
{
    static auto *service = new Service;
    const std::string folder = Service::PathOf("forged");
    std::filesystem::remove_all(folder);
    std::filesystem::copy(Service::PathOf("base"), folder, std::filesystem::copy_options::recursive);
    if (Selector(input) == 'm') {
        std::ofstream(folder + "/" + BACKUP_MANIFEST, std::ios::binary) << Body(input);
    } else {
        Forge(folder, BACKUP_FILES[static_cast<unsigned char>(Selector(input)) % std::size(BACKUP_FILES)].name,
            Body(input));
    }
    const int code = service->Import("forged");
    FUZZ_CHECK(code == 0 || code == static_cast<int>(ErrorCode::INVALID_ARGUMENT));
    FUZZ_CHECK(service->Export("first") == 0);
    if (code != 0) {
        FUZZ_CHECK(Bytes(Service::PathOf("first")) == Bytes(Service::PathOf("base")));
        return;
    }
    FUZZ_CHECK(service->Import("first") == 0 && service->Export("second") == 0);
    FUZZ_CHECK(Bytes(Service::PathOf("first")) == Bytes(Service::PathOf("second")));
    // For the next input.
    delete service;
    std::filesystem::remove_all(Service::PathOf("service"));
    service = new Service;
}
