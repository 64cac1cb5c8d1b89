// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_fixture.h"
#include "util/json_util.h"
#include "util/json_writer.h"

#include <rapidcheck/gtest.h>

namespace DriveService {

namespace {

class HostileInputTest : public ServiceTest {
protected:
    Json::Value AnswerTo(const std::string &text)
    {
        Json::Value reply;
        std::string error;
        EXPECT_TRUE(ParseJson(service_->Router().Answer(text, "tablet"), reply, error)) << error;
        EXPECT_TRUE(reply.isObject() && reply["code"].isInt());
        return reply;
    }
};

TEST_F(HostileInputTest, TextsThatAreNoRequestAreRefused)
{
    const std::pair<std::string, const char *> cases[] = {
        {"", "the request is no JSON"},
        {"nonsense", "the request is no JSON"},
        {"{\"function\": \"getAppState\"} x", "Extra non-whitespace after JSON value"},
        {"{\"a\": 1, \"a\": 2}", "Duplicate key"},
        {std::string(200, '[') + std::string(200, ']'), "Exceeded stackLimit"},
        {"{\"function\": \"\xff\"}", "not valid UTF-8"},
        {R"({"a": "\\\udc00"})", "half of a surrogate pair"},
        {R"({"a": "\uD83D\u0041"})", "half of a surrogate pair"},
        {R"({"a": "\ud83d)", "half of a surrogate pair"},
        {R"({"a": "\uD83D\uDE00\\udc00"} x)", "Extra non-whitespace after JSON value"},
        {"[" + std::string(2000001, ',') + "]", "more than 1000000 values; send less at a time"},
        {"[1, 2]", "a request is an object, came an array"},
    };
    for (const auto &[text, message] : cases) {
        EXPECT_THAT(AnswerTo(text), FailsWith(ErrorCode::MALFORMED_REQUEST, message, "")) << text.substr(0, 40);
    }
    EXPECT_THAT(AnswerTo("{}"), FailsWith(ErrorCode::INVALID_ARGUMENT, "\"function\": expected a text", "function"));
    EXPECT_THAT(AnswerTo("{\"function\": [\"getAppState\"]}"),
        FailsWith(ErrorCode::INVALID_ARGUMENT, "came an array", "function"));
    EXPECT_THAT(AnswerTo("{\"function\": \"getappstate\"}"),
        FailsWith(ErrorCode::UNKNOWN_FUNCTION, "does not answer the function \"getappstate\"", "function"));
}

TEST_F(HostileInputTest, LongNamesAreCutInMessagesBetweenCharacters)
{
    std::string name = "x";
    for (int i = 0; i < 1000; ++i) {
        name += "ö";
    }
    Json::Value reply = Ask("getStartCursor", Members({{"bundleName", name}}));
    std::string description = reply["error"]["description"].asString();
    EXPECT_LT(description.size(), 300u);
}

// Every member that the functions read, so that random values reach all of their checks.
const std::vector<std::string> MEMBERS = {"bundleName", "containerName", "databaseType", "recordType", "recordId",
    "records", "savePolicy", "fields", "queryParam", "cursor", "pageSize", "index", "syncDemon", "needSpaceInfo",
    "baseVersion", "isNew", "deleted", "relations", "name", "age", "tags", "avatar", "friend", "props", "photo",
    "assets", "asset", "field", "assetId", "sha256", "size", "revision", "subscriptions", "id", "expirationTime",
    "saName", "signVersion", "keyId", "prepareTraceId", "recordsToSave", "recordsToDelete", "atomic", "srcRecordId",
    "lockSessionId", "dataType", "keyType", "value", "unset", "reset"};
const std::vector<std::string> FUNCTIONS = {"getAppState", "getSysParameters", "getReportInfo", "GetCloudAppInfo",
    "GetCloudAppSwitches", "getCloudAppBriefInfo", "getAppConfigParams", "getRecordIdRules", "getServiceKey",
    "saveRecords", "deleteRecords", "fetchRecordsWithQuery", "fetchRecordWithId", "fetchRecordWithIds",
    "fetchDatabaseChanges", "getStartCursor", "getSettings", "setSetting", "batchDownloadRecords",
    "fetchAssetStatusWithId", "batchCreateAsset", "updateAssetRevision", "saveSubscription", "deleteSubscription",
    "changesNotify", "batchSaveSubscription", "batchDeleteSubscription", "getSubscriptions", "modifyRecords",
    "copyRecords", "setPreShared", "getCommonKey", "getAccessToken", "getLock", "deleteLock", "getLockState"};

Json::Value RandomValue(int depth)
{
    switch (*rc::gen::inRange(0, depth > 0 ? 10 : 7)) {
        case 0:
            return Json::Value();
        case 1:
            return Json::Value(Json::Int64(*rc::gen::arbitrary<int64_t>()));
        case 2:
            return Json::Value(Json::UInt64(*rc::gen::arbitrary<uint64_t>()));
        case 3:
            return Json::Value(*rc::gen::inRange(-1000, 1000) / 8.0);
        case 4:
            return Json::Value(*rc::gen::arbitrary<bool>());
        case 5:
            return Json::Value(*rc::gen::elementOf(std::vector<std::string>{"", "person", "age>1", "orderBy=age",
                "c1.x.y", "q1..", "name,age", "people", "1", std::string("\0", 1), "%", "p"}));
        case 6:
            return Json::Value(*rc::gen::elementOf(MEMBERS));
        case 7: {
            Json::Value array(Json::arrayValue);
            for (int i = *rc::gen::inRange(0, 4); i > 0; --i) {
                array.append(RandomValue(depth - 1));
            }
            return array;
        }
        default: {
            Json::Value object(Json::objectValue);
            for (int i = *rc::gen::inRange(0, 6); i > 0; --i) {
                object[*rc::gen::elementOf(MEMBERS)] = RandomValue(depth - 1);
            }
            if (*rc::gen::arbitrary<bool>()) {
                object["recordType"] = "person";
            }
            return object;
        }
    }
}

RC_GTEST_FIXTURE_PROP(HostileInputTest, NoRequestOfRandomMembersBreaksTheService, ())
{
    Json::Value request(Json::objectValue);
    request["bundleName"] = "com.example.people";
    request["containerName"] = "people";
    request["recordType"] = "person";
    request["savePolicy"] = *rc::gen::inRange(0, 3);
    request["records"].append(RandomValue(3));
    for (int i = *rc::gen::inRange(0, 5); i > 0; --i) {
        request[*rc::gen::elementOf(MEMBERS)] = RandomValue(3);
    }
    request["function"] = *rc::gen::elementOf(FUNCTIONS);
    Json::Value reply = AnswerTo(WriteJson(request));
    RC_ASSERT(reply["code"].asInt() < static_cast<int>(ErrorCode::STORE_FAILED));
}

RC_GTEST_FIXTURE_PROP(HostileInputTest, NoDamagedTextBreaksTheService, (uint16_t place, char c))
{
    std::string text = R"({"function":"saveRecords","bundleName":"com.example.people","containerName":"people",)"
                       R"("savePolicy":2,"records":[{"recordId":"p","recordType":"person","isNew":true,"name":"A"}]})";
    text[place % text.size()] = c;
    RC_ASSERT(AnswerTo(text)["code"].asInt() < static_cast<int>(ErrorCode::STORE_FAILED));
}

} // namespace

} // namespace DriveService
