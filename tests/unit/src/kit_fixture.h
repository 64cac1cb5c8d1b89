// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_KIT_FIXTURE_H
#define NUBIS_TEST_KIT_FIXTURE_H

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fake_drive_service.h"
#include "json_samples.h"
#include "nb_container.h"
#include "nb_database.h"
#include "note_builder.h"
#include "nubis_kit.h"

namespace NubisTest {
constexpr const char *BUNDLE = "com.example.notes";

// A schema with the record types "note", with a title and stars, and "folder".
inline Json::Value NoteSchema(int version)
{
    Json::Value schema = ParseJson(R"({"recordTypes": [{"recordType": "note", "tableName": "notes", "fields": [
        {"name": "title", "type": "String"}, {"name": "stars", "type": "Long"}]}, {"recordType": "folder"}]})");
    schema["version"] = version;
    return schema;
}

// The service's answer for one bundle with the default container "main" and the shared container "team".
inline Json::Value Catalogue(int groupVersion = 1, int mainVersion = 1, int teamVersion = 1)
{
    Json::Value app;
    app["bundleName"] = BUNDLE;
    app["schemaGroupVersion"] = groupVersion;
    app["defaultContainer"]["name"] = "main";
    app["defaultContainer"]["schema"] = NoteSchema(mainVersion);
    Json::Value team;
    team["name"] = "team";
    team["schema"] = NoteSchema(teamVersion);
    app["sharedContainer"].append(team);
    Json::Value reply;
    reply["appInfo"].append(app);
    return reply;
}

// A kit for a user of its own and the fake service behind it.
class KitTest : public testing::Test {
protected:
    explicit KitTest(const Host::AbilityRegistry::Metadata &metadata = {})
        : userId_(NextUser()), service_(FakeDriveService::Offer(userId_, metadata))
    {
        service_->Answer("GetCloudAppInfo", JsonText(Catalogue()));
        service_->Answer("getRecordIdRules", R"({"ruleId": 5, "upid": "77", "rootId": "root"})");
        service_->Answer("getServiceKey", R"({"keys": []})");
        kit_ = Nubis::NubisNative::GetInstance(userId_, Nubis::NB_SYNC_DEMON_FILE);
    }

    // How often the service was asked for it.
    size_t Asked(const std::string &function)
    {
        return service_->Requests(function).size();
    }

    Json::Value LastRequest(const std::string &function)
    {
        const auto requests = service_->Requests(function);
        return requests.empty() ? Json::Value() : requests.back();
    }

    // The last request without what every request carries and without the members named.
    Json::Value OwnMembers(const std::string &function, std::vector<std::string> others = {})
    {
        Json::Value request = LastRequest(function);
        request.removeMember("syncDemon");
        others.insert(others.end(), {"function", "nbVersion", "saVersion", "traceId"});
        for (const std::string &name : others) {
            EXPECT_TRUE(request.isMember(name)) << name;
            request.removeMember(name);
        }
        return request;
    }

    static int NextUser()
    {
        static int user = 5000;
        return ++user;
    }

    const int userId_;
    OHOS::sptr<FakeDriveService> service_;
    std::shared_ptr<Nubis::NubisNative> kit_;
};

// The same with a live container and its private database.
class DatabaseTest : public KitTest {
protected:
    DatabaseTest() : container_(kit_->GetContainer(BUNDLE, "main")), database_(container_->GetPrivateDatabase())
    {}

    static Nubis::NBRecord Existing(const std::string &recordId, uint64_t version = 1)
    {
        return Note("old").Id(recordId).Existing(version);
    }

    // From now on ids are made by these rules; by those of the default, not at all.
    void SetRules(const std::string &rules = R"({"ruleId": 9})")
    {
        service_->Answer("getRecordIdRules", rules);
        EXPECT_FALSE(database_->GetRecordIdRules().HasError());
    }

    std::shared_ptr<Nubis::NBContainer> container_;
    std::shared_ptr<Nubis::NBDatabase> database_;
};

inline std::shared_ptr<Nubis::NBContext> ContextOf(const std::string &traceId, const std::string &prepareTraceId)
{
    auto context = std::make_shared<Nubis::NBContext>();
    context->SetRequestTraceId(traceId);
    context->SetPrepareTarceId(prepareTraceId);
    return context;
}
} // namespace NubisTest

#endif // NUBIS_TEST_KIT_FIXTURE_H
