// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <fstream>

#include <openssl/evp.h>
#include <openssl/x509.h>
#include <sys/stat.h>

#include "account/record_id_rules.h"
#include "service_fixture.h"
#include "util/encoding.h"

namespace DriveService {

namespace {

using testing::MatchesRegex;
using testing::SizeIs;

class AccountTest : public ServiceTest {};

TEST_F(AccountTest, TheUserHasAStableAccountAndAKeyOf3072Bits)
{
    Json::Value reply = Ask("GetCloudUserInfo", J("{'needSpaceInfo': true, 'signVersion': 2}"));
    Json::Value info = reply["userInfo"];
    EXPECT_EQ(info["cloudStatus"], 1);
    EXPECT_GT(info["totalSpace"].asUInt64(), 0u);
    EXPECT_LE(info["remainSpace"].asUInt64(), info["totalSpace"].asUInt64());
    std::string der = FromHex(info["pushKeyValue"].asString());
    const auto *bytes = reinterpret_cast<const unsigned char *>(der.data());
    EVP_PKEY *key = d2i_PUBKEY(nullptr, &bytes, static_cast<long>(der.size()));
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(EVP_PKEY_get_bits(key), 3072);
    EXPECT_EQ(EVP_PKEY_get_base_id(key), EVP_PKEY_RSA);
    EVP_PKEY_free(key);
    struct stat file {};
    ASSERT_EQ(stat(DataPaths(folder_.Path(), 100).pushKey.c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 0777, 0600u);

    Restart();
    Json::Value again = Ask("GetCloudUserInfo")["userInfo"];
    EXPECT_FALSE(again.isMember("totalSpace"));
    info.removeMember("totalSpace");
    info.removeMember("remainSpace");
    EXPECT_EQ(again, info);

    std::ofstream(DataPaths(folder_.Path(), 100).pushKey) << "no key";
    Restart();
    EXPECT_THAT(Ask("GetCloudUserInfo"), FailsWith(ErrorCode::INTERNAL_ERROR, "cannot be read", ""));
}

TEST_F(AccountTest, SettingsThatWereChangedAreServed)
{
    EXPECT_EQ(Ask("getAppState"), J("{'code': 0, 'checkAlive': 1}"));
    EXPECT_EQ(Ask("getSysParameters")["parameters"], J(R"([{'key': 'enableQuicDomainList', 'value': []},
        {'key': 'flowControl', 'value': {'flowSpeedLimit': 0, 'flowThreshold': 0}},
        {'key': 'flowControlWhiteList', 'value': []}, {'key': 'ohNubisUseAsyncIPC', 'value': 1}])"));
    Json::Value untouched = Ask("getSettings");
    EXPECT_THAT(Ask("setSetting", J("{'name': 'flowControl', 'value': {'flowSpeedLimit': 4294967295}}")), Succeeds());
    EXPECT_THAT(Ask("setSetting", J("{'name': 'flowControlWhiteList', 'value': ['a', 'b']}")), Succeeds());
    EXPECT_THAT(Ask("setSetting", J("{'name': 'enableQuicDomainList', 'unset': true}")), Succeeds());
    EXPECT_EQ(Ask("setSetting", J("{'name': 'ohNubisUseAsyncIPC', 'value': 0}"))["setting"],
        J("{'name': 'ohNubisUseAsyncIPC', 'state': 'set', 'default': 1, 'value': 0}"));
    EXPECT_EQ(Ask("setSetting", J("{'name': 'checkAlive', 'unset': true}"))["setting"],
        J("{'name': 'checkAlive', 'state': 'unset', 'default': 1}"));
    std::unique_ptr<WriteSession> session = service_->GetStore().BeginWrite();
    session->SetSetting("reportInfo", "{\"reportUrl\":\"https://r\",\"reportParam\":{\"k\":\"v\"}}");
    session->Commit();
    session.reset();
    Restart();
    EXPECT_EQ(
        Ask("getSysParameters")["parameters"], J(R"([{'key': 'flowControl', 'value': {'flowSpeedLimit': 4294967295}},
        {'key': 'flowControlWhiteList', 'value': ['a', 'b']}, {'key': 'ohNubisUseAsyncIPC', 'value': 0}])"));
    EXPECT_EQ(Ask("getAppState"), J("{'code': 0}"));
    EXPECT_EQ(Ask("getReportInfo")["reportUrl"], "https://r");

    for (const Json::Value &setting : untouched["settings"]) {
        Json::Value reset = J("{'reset': true}");
        reset["name"] = setting["name"];
        EXPECT_EQ(Ask("setSetting", reset)["setting"], setting);
    }
    EXPECT_EQ(Ask("getSettings"), untouched);
}

TEST_F(AccountTest, SettingsAreChecked)
{
    Json::Value untouched = Ask("getSettings");
    const std::vector<std::pair<std::string, std::string>> wrong = {
        {"{'name': 'flowControl', 'value': {'flowSpeedLimit': -1}}", "integers from 0 to 4294967295"},
        {"{'name': 'flowControl', 'value': {'flowSpeedLimit': 4294967296}}", "integers from 0 to 4294967295"},
        {"{'name': 'flowControl', 'value': {'other': 1}}", "\"flowThreshold\""},
        {"{'name': 'flowControlWhiteList', 'value': ['a', 1]}",
            "array of at most 1000 texts of at most 512 bytes, came an array"},
        {"{'name': 'ohNubisUseAsyncIPC', 'value': '0'}", "expected 0 or 1, came text"},
        {"{'name': 'ohNubisUseAsyncIPC', 'value': 1.0}", "expected 0 or 1, came number"},
        {"{'name': 'checkAlive', 'value': null}", "expected 0 or 1, came null"},
        {"{'name': 'checkAlive', 'value': 1, 'reset': true}", "only one"},
        {"{'name': 'checkAlive'}", "expected one of"},
    };
    for (const auto &[request, text] : wrong) {
        EXPECT_THAT(Ask("setSetting", J(request)), FailsWith(ErrorCode::INVALID_ARGUMENT, text, "value")) << request;
    }
    EXPECT_THAT(Ask("setSetting", J("{'name': 'sysTimeStamp', 'value': 1}")),
        FailsWith(ErrorCode::INVALID_ARGUMENT, "only enableQuicDomainList, flowControl,", "name"));
    EXPECT_EQ(Ask("getSettings"), untouched);
}

TEST_F(AccountTest, SettingsOfAnotherFormBreakNothing)
{
    Json::Value parameters = Ask("getSysParameters");
    Json::Value report = Ask("getReportInfo");
    Ask("getServiceKey");
    for (const char *text : {"[]", "{}", "{\"value\":5,\"reportUrl\":{},\"containers\":7,\"version\":\"x\"}",
             "{\"containers\":{\"people\":[]},\"version\":9223372036854775807}", "\"", "\xff"}) {
        std::unique_ptr<WriteSession> session = service_->GetStore().BeginWrite();
        for (const char *name : {"setting/flowControl", "reportInfo", "catalogue/com.example.people"}) {
            session->SetSetting(name, text);
        }
        session->SetSetting("serviceKeys/com.example.people/people", "{}");
        session->Commit();
        session.reset();
        Restart();
        EXPECT_EQ(Ask("getSysParameters"), parameters) << text;
        EXPECT_EQ(Ask("getReportInfo"), report) << text;
        EXPECT_THAT(Ask("getStartCursor"), Succeeds()) << text;
        EXPECT_THAT(Ask("getServiceKey"), FailsWith(ErrorCode::INTERNAL_ERROR, "is damaged", ""));
    }
}

TEST_F(AccountTest, AnAccessTokenIsRenewedWhenItHasRunOut)
{
    constexpr int64_t hourMs = 3600 * 1000;
    nowMs_ = 5000 * hourMs;
    Json::Value token = Ask("getAccessToken");
    EXPECT_THAT(token["accessToken"].asString(), SizeIs(43));
    EXPECT_EQ(token["expireTime"].asInt64(), nowMs_ + hourMs);
    nowMs_ += hourMs - 1;
    Restart();
    EXPECT_EQ(Ask("getAccessToken"), token);
    nowMs_ += 1;
    Json::Value next = Ask("getAccessToken");
    EXPECT_NE(next["accessToken"], token["accessToken"]);
    nowMs_ -= 10 * hourMs;
    EXPECT_EQ(Ask("getAccessToken")["expireTime"].asInt64(), nowMs_ + hourMs) << "the clock was set back";
}

TEST_F(AccountTest, RecordIdRulesAreKeptOrComeFromTheCatalogue)
{
    Json::Value made = Ask("getRecordIdRules");
    EXPECT_EQ(made["ruleId"], 5);
    EXPECT_EQ(made["localRule"], "");
    EXPECT_THAT(made["upid"].asString(), MatchesRegex("[0-9]+"));
    EXPECT_THAT(made["rootId"].asString(), SizeIs(33));
    Restart();
    EXPECT_EQ(Ask("getRecordIdRules"), made);
    Json::Value entry = PeopleEntry();
    entry["defaultContainer"]["recordIdRule"] =
        J("{'ruleId': 1, 'upid': '18446744073709551615', 'localRule': 'UUID', 'rootId': 'root'}");
    Install(entry);
    EXPECT_EQ(Ask("getRecordIdRules"),
        J("{'code': 0, 'ruleId': 1, 'upid': '18446744073709551615', 'localRule': 'UUID', 'rootId': 'root'}"));
}

TEST_F(AccountTest, MadeIdsFollowTheRule)
{
    EffectiveIdRule rule;
    rule.upid = 0x0123456789abcdef;
    for (unsigned ruleId : {1u, 5u}) {
        rule.ruleId = ruleId;
        std::string id = MakeRecordId(rule);
        ASSERT_THAT(id, SizeIs(33));
        EXPECT_EQ(id[0], ruleId == 1 ? 'B' : 'F');
        std::string bytes = Base64UrlDecode(id.substr(1)).value();
        ASSERT_THAT(bytes, SizeIs(24));
        EXPECT_EQ(ReadBigEndian64(bytes) ^ ReadBigEndian64(bytes.substr(16)), rule.upid);
        EXPECT_NE(MakeRecordId(rule), id);
    }
    rule.ruleId = 3;
    EXPECT_THAT(MakeRecordId(rule), SizeIs(32));
    rule.localRule = "UUID";
    EXPECT_THAT(MakeRecordId(rule), SizeIs(64));
}

} // namespace

} // namespace DriveService
