// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

#include "fuzz_target.h"
#include "ipc_object_stub.h"
#include "message_option.h"
#include "message_parcel.h"
#include "requests/client_callback.h"
#include "service_fixture.h"
#include "util/json_util.h"
#include "util/json_writer.h"
#include "util/parcel_text.h"

namespace {
using namespace DriveService;

// Answers what the service asks of its client.
class Client : public OHOS::IPCObjectStub {
public:
    int OnRemoteRequest(uint32_t, OHOS::MessageParcel &, OHOS::MessageParcel &reply, OHOS::MessageOption &) override
    {
        return WriteText(reply, answer) ? 0 : -1;
    }

    std::string answer;
};

// A service with nothing in it but the catalogue. Its key pair and its empty database are made once and copied, since
// making them takes long.
class FreshService {
public:
    FreshService()
    {
        static const DataPaths paths = MakeTemplate();
        std::filesystem::remove(paths.database + "-wal");
        std::filesystem::remove(paths.database + "-shm");
        std::filesystem::copy_file(
            paths.database + ".empty", paths.database, std::filesystem::copy_options::overwrite_existing);
        instance_.emplace(DataFolder(), USER, [this] { return ++now_; });
    }

    Json::Value Ask(const std::string &request, const ClientCallback *callback)
    {
        Json::Value reply;
        std::string error;
        FUZZ_CHECK(ParseJson(instance_->Router().Answer(request, "tablet", callback), reply, error));
        FUZZ_CHECK(reply.isObject() && reply["code"].isInt());
        FUZZ_CHECK((reply["code"].asInt() != 0) == reply.isMember("error"));
        return reply;
    }

    std::string Changes()
    {
        return WriteJson(Ask(R"({"function": "fetchDatabaseChanges", "bundleName": "com.example.people",
            "containerName": "people", "databaseType": 1, "cursor": ""})",
            nullptr));
    }

private:
    static std::string DataFolder()
    {
        return Fuzz::Folder() + "/service";
    }

    static DataPaths MakeTemplate()
    {
        const DataPaths paths(DataFolder(), USER);
        std::filesystem::create_directories(paths.catalogue);
        std::ofstream(paths.catalogue + "/com.example.people.json") << WriteJson(PeopleEntry());
        ServiceInstance(DataFolder(), USER, SystemNowMs);
        std::filesystem::rename(paths.database, paths.database + ".empty");
        return paths;
    }

    static constexpr int USER = 100;
    int64_t now_ = 1000;
    std::optional<ServiceInstance> instance_;
};
} // namespace

// Each line is a request, except that one behind '<' is what the client answers from then on.
void Fuzz::TestOne(const std::string &input)
{
    static const auto *client = new OHOS::sptr<Client>(new Client);
    static const auto *callback = new ClientCallback(*client);
    FreshService service;
    std::string before = service.Changes();
    std::istringstream lines(input);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line[0] == '<') {
            (*client)->answer = line.substr(1);
            continue;
        }
        const int code = service.Ask(line, callback)["code"].asInt();
        FUZZ_CHECK(code != static_cast<int>(ErrorCode::INTERNAL_ERROR));
        FUZZ_CHECK(code != static_cast<int>(ErrorCode::STORE_FAILED));
        // A request that was refused has changed nothing.
        const std::string after = service.Changes();
        FUZZ_CHECK(code == 0 || after == before);
        before = after;
    }
    (*client)->answer.clear();
}
