// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_service_stub.h"

#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"
#include "service_fixture.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

class StubTest : public ServiceTest {
protected:
    // The transaction's result; the reply is read into reply_ when there is one.
    int Send(uint32_t code, const std::u16string &token, const std::string &text)
    {
        OHOS::MessageParcel data;
        OHOS::MessageParcel reply;
        OHOS::MessageOption option;
        data.WriteInterfaceToken(token);
        if (!text.empty()) {
            data.WriteInt32(static_cast<int32_t>(text.size()));
            data.WriteRawData(text.data(), text.size());
        }
        OHOS::sptr<DriveServiceStub> stub(new DriveServiceStub(service_->Router()));
        int result = stub->SendRequest(code, data, reply, option);
        replySize_ = reply.GetDataSize();
        reply_ = Json::Value();
        if (replySize_ > 0) {
            EXPECT_EQ(reply.ReadInt32(), 0);
            int32_t length = reply.ReadInt32();
            const void *bytes = reply.ReadRawData(static_cast<size_t>(length));
            std::string error;
            EXPECT_TRUE(
                bytes != nullptr &&
                ParseJson(std::string(static_cast<const char *>(bytes), static_cast<size_t>(length)), reply_, error));
        }
        return result;
    }

    const std::u16string token_ = u"OHOS.Aerostash.DriveServiceAbility";
    size_t replySize_ = 0;
    Json::Value reply_;
};

TEST_F(StubTest, ARequestIsAnsweredInItsTransaction)
{
    EXPECT_EQ(Send(3, token_, "{\"function\":\"getAppState\"}"), 0);
    EXPECT_EQ(reply_, J("{'code': 0, 'checkAlive': 1}"));
    EXPECT_EQ(Send(3, token_, ""), 0);
    EXPECT_THAT(reply_, FailsWith(ErrorCode::MALFORMED_REQUEST, "no JSON", ""));
}

TEST_F(StubTest, LargeTextsTravelBothWays)
{
    Json::Value request = J("{'function': 'saveRecords', 'bundleName': 'com.example.people', 'containerName': 'people',"
                            " 'savePolicy': 0, 'records': []}");
    request["records"].append(NewPerson("p"));
    request["records"][0]["name"] = std::string(1024 * 1024, 'x');
    EXPECT_EQ(Send(3, token_, WriteJson(request)), 0);
    EXPECT_EQ(reply_["records"][0]["record"]["name"], request["records"][0]["name"]);
}

TEST_F(StubTest, OtherTokensAndTransactionsAreRefused)
{
    EXPECT_EQ(Send(3, u"OHOS.Other", "{\"function\":\"getAppState\"}"), OHOS::ERR_INVALID_STATE);
    EXPECT_EQ(replySize_, 0u);
    EXPECT_EQ(Send(4, token_, "{\"function\":\"getAppState\"}"), OHOS::IPC_STUB_UNKNOW_TRANS_ERR);
    EXPECT_EQ(replySize_, 0u);
}

} // namespace

} // namespace DriveService
