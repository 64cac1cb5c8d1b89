// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "fuzz_kit.h"

#include <mutex>
#include <utility>

#include "fake_drive_service.h"
#include "fuzz_target.h"
#include "json_helper.h"

namespace Fuzz {
namespace {
constexpr const char *CATALOGUE = R"({"code": 0, "appInfo": [{"bundleName": "com.example.fuzz", "schemaGroupVersion": 1,
    "defaultContainer": {"name": "main", "schema": {"version": 1, "recordTypes": [
        {"recordType": "everything", "tableName": "everything", "fields": [
            {"name": "integer", "type": "Long"}, {"name": "double", "type": "Double"},
            {"name": "text", "type": "String"}, {"name": "yes", "type": "Boolean"}, {"name": "blob", "type": "Blob"},
            {"name": "map", "type": "Map"}, {"name": "asset", "type": "Asset"},
            {"name": "reference", "type": "Reference"}, {"name": "texts", "type": "List", "listType": "String"},
            {"name": "blobs", "type": "List", "listType": "Blob"},
            {"name": "assets", "type": "List", "listType": "Asset"}]}]}}}]})";

// Answers every request at once, also with what is no answer.
class AnsweringService : public NubisTest::FakeDriveService {
public:
    void SetText(const std::string &text)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        text_ = text;
        isGood_ = false;
    }
    bool SetGood(bool isGood)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return std::exchange(isGood_, isGood);
    }

    int OnRemoteRequest(uint32_t, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &) override
    {
        data.ReadInterfaceToken();
        const Json::Value request =
            Nubis::JsonHelper::StringToJson(Nubis::MessageParcelUtil::ReadStringFromMessage(data));
        const std::string function = Nubis::JsonHelper::GetStringFromJson(request, "function");
        std::lock_guard<std::mutex> lock(mutex_);
        reply.WriteInt32(0);
        Nubis::MessageParcelUtil::WriteStringToMessage(reply, isGood_ ? GoodAnswer(function) : text_);
        return 0;
    }

private:
    static std::string GoodAnswer(const std::string &function)
    {
        if (function == "GetCloudAppInfo") {
            return CATALOGUE;
        }
        // Members that the others look for and do not mind to have together.
        return R"({"code": 0, "ruleId": 5, "upid": "77", "keys": [], "parameters": [], "reportUrl": "http://localhost",
            "reportParam": {}, "userInfo": {"userId": "u1"}})";
    }

    std::mutex mutex_;
    bool isGood_ = true;
    std::string text_;
};

const OHOS::sptr<AnsweringService> &Service()
{
    static const auto *service = [] {
        auto *offered = new OHOS::sptr<AnsweringService>(new AnsweringService);
        (*offered)->OfferAgain(USER);
        return offered;
    }();
    return *service;
}
} // namespace

const std::shared_ptr<Nubis::NubisNative> &Kit()
{
    static const auto *kit = [] {
        Service();
        return new std::shared_ptr<Nubis::NubisNative>(
            Nubis::NubisNative::GetInstance(USER, Nubis::NB_SYNC_DEMON_FILE));
    }();
    return *kit;
}

void AnswerWith(const std::string &text)
{
    Service()->SetText(text);
}

GoodService::GoodService() : wasGood_(Service()->SetGood(true))
{}

GoodService::~GoodService()
{
    Service()->SetGood(wasGood_);
}

const std::shared_ptr<Nubis::NBDatabase> &Database()
{
    static const auto *database = [] {
        const GoodService good;
        const auto container = Kit()->GetContainer(BUNDLE, CONTAINER);
        FUZZ_CHECK(container != nullptr);
        return new std::shared_ptr<Nubis::NBDatabase>(container->GetPrivateDatabase());
    }();
    return *database;
}

const Nubis::NBSchema &Schema()
{
    static const auto *schema = [] {
        Database();
        auto *copied = new Nubis::NBSchema;
        FUZZ_CHECK(Kit()->GetSchemaInfo(BUNDLE, CONTAINER, *copied, 0));
        return copied;
    }();
    return *schema;
}

void CheckRecord(const Nubis::NBRecord &record)
{
    using Nubis::JsonHelper;
    Nubis::NBFieldMap data;
    record.GetRecordData(data);
    const auto type = Schema().recordTypes.find(record.GetRecordType());
    FUZZ_CHECK(data.empty() || type != Schema().recordTypes.end());
    for (const auto &[name, field] : data) {
        const auto known = type->second.fields.find(name);
        FUZZ_CHECK(known != type->second.fields.end() && field.GetType() == known->second.type);
        const Json::Value json = field.ToJsonValue();
        // Lists and maps without elements are written as null.
        Nubis::NBRecordField again;
        if (!json.isNull()) {
            FUZZ_CHECK(again.ParseFromJsonValue(known->second, json));
            FUZZ_CHECK(JsonHelper::JsonToString(again.ToJsonValue()) == JsonHelper::JsonToString(json));
        }
    }
    record.ToJsonValue();
}
} // namespace Fuzz
