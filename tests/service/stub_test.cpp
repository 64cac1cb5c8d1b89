// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_service_stub.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <utility>

#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"
#include "service_fixture.h"
#include "util/json_util.h"
#include "util/json_writer.h"
#include "util/parcel_text.h"

namespace DriveService {

namespace {

constexpr std::chrono::seconds PATIENCE(60);
constexpr const char *APP_STATE = R"({"function":"getAppState","uuid":"u1"})";

// The object by which a client is answered.
class Client : public OHOS::IPCObjectStub {
public:
    // `onCall` runs within every call, before the answer counts as arrived.
    explicit Client(std::function<void()> onCall = {}) : onCall_(std::move(onCall))
    {}

    int OnRemoteRequest(uint32_t, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &) override
    {
        EXPECT_EQ(data.ReadInterfaceToken(), u"OHOS.Drive.DriveCallbackAbility");
        Json::Value json;
        std::string error;
        EXPECT_TRUE(ParseJson(ReadText(data), json, error)) << error;
        if (onCall_) {
            onCall_();
        }
        std::lock_guard<std::mutex> lock(mutex_);
        answers_.push_back(json);
        ++calls_;
        wake_.notify_all();
        return WriteText(reply, "{\"code\":0}") ? 0 : 1;
    }

    // The next answer; null when none comes.
    Json::Value Next()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!wake_.wait_for(lock, PATIENCE, [this] { return !answers_.empty(); })) {
            ADD_FAILURE() << "no answer";
            return Json::Value();
        }
        Json::Value answer = answers_.front();
        answers_.pop_front();
        return answer;
    }

    size_t Calls()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return calls_;
    }

private:
    const std::function<void()> onCall_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Json::Value> answers_;
    size_t calls_ = 0;
};

class StubTest : public ServiceTest {
protected:
    // The transaction's result; the reply is read into reply_ when there is one.
    int Send(uint32_t code, const std::u16string &token, const std::string &text)
    {
        OHOS::MessageParcel data;
        OHOS::MessageParcel reply;
        OHOS::MessageOption option;
        data.WriteInterfaceToken(token);
        EXPECT_EQ(WriteText(data, text), !text.empty());
        if (client_ != nullptr) {
            data.WriteRemoteObject(client_);
        }
        OHOS::sptr<DriveServiceStub> stub(new DriveServiceStub(service_->Router(), *pool_));
        int result = stub->SendRequest(code, data, reply, option);
        replySize_ = reply.GetDataSize();
        reply_ = Json::Value();
        if (replySize_ > 0) {
            EXPECT_EQ(reply.ReadInt32(), 0);
            std::string error;
            EXPECT_TRUE(ParseJson(ReadText(reply), reply_, error)) << error;
        }
        return result;
    }

    // Where the requests of a test are over, if they ever began.
    void TearDown() override
    {
        EXPECT_TRUE(pool_->Finish(PATIENCE));
    }

    // Pools have no end, so they must stay within reach.
    static RequestPool *NewPool(RequestPoolLimits limits = {})
    {
        static auto *kept = new std::deque<RequestPool *>();
        return kept->emplace_back(new RequestPool(limits));
    }

    RequestPool *pool_ = NewPool();
    OHOS::sptr<Client> client_;
    const std::u16string token_ = u"OHOS.Aerostash.DriveServiceAbility";
    size_t replySize_ = 0;
    Json::Value reply_;
};

TEST_F(StubTest, ARequestIsAnsweredInItsTransaction)
{
    EXPECT_EQ(Send(3, token_, APP_STATE), 0);
    EXPECT_EQ(reply_, J("{'code': 0, 'checkAlive': 1}"));
    EXPECT_EQ(Send(3, token_, ""), 0);
    EXPECT_THAT(reply_, FailsWith(ErrorCode::MALFORMED_REQUEST, "no JSON", ""));
    EXPECT_EQ(Send(3, u"OHOS.Other", APP_STATE), OHOS::ERR_INVALID_STATE);
    EXPECT_EQ(replySize_, 0u);
    EXPECT_EQ(Send(5, token_, APP_STATE), OHOS::IPC_STUB_UNKNOW_TRANS_ERR);
    EXPECT_EQ(replySize_, 0u);
}

TEST_F(StubTest, AnAsynchronousRequestIsAnsweredByTheCallbackObject)
{
    client_ = new Client();
    EXPECT_EQ(Send(4, token_, APP_STATE), 0);
    EXPECT_EQ(replySize_, 0u);
    EXPECT_EQ(client_->Next(), J("{'code': 0, 'checkAlive': 1, 'uuid': 'u1'}"));
    EXPECT_EQ(Send(4, token_, R"({"function":"noSuch","uuid":"u2"})"), 0);
    Json::Value refusal = client_->Next();
    EXPECT_THAT(refusal, FailsWith(ErrorCode::UNKNOWN_FUNCTION, "noSuch", "function"));
    EXPECT_EQ(refusal["uuid"], "u2");
}

TEST_F(StubTest, AnAsynchronousRequestThatCannotBeAnsweredIsNotRun)
{
    Json::Value save = J("{'function': 'saveRecords', 'bundleName': 'com.example.people', 'containerName': 'people',"
                         " 'savePolicy': 0, 'records': []}");
    save["records"].append(NewPerson("p"));
    std::string withoutUuid = WriteJson(save);
    save["uuid"] = 7;
    std::string wrongUuid = WriteJson(save);
    save["uuid"] = "u";

    EXPECT_EQ(Send(4, token_, WriteJson(save)), OHOS::ERR_NULL_OBJECT);
    client_ = new Client();
    EXPECT_EQ(Send(4, u"OHOS.Other", WriteJson(save)), OHOS::ERR_INVALID_STATE);
    std::string deep = "{\"uuid\":\"u\",\"x\":" + std::string(3000, '[') + std::string(3000, ']') + "}";
    for (const std::string &text : {withoutUuid, wrongUuid, deep, std::string(), std::string("[\"uuid\"]")}) {
        EXPECT_EQ(Send(4, token_, text), OHOS::ERR_INVALID_DATA) << text.substr(0, 100);
    }
    EXPECT_TRUE(pool_->Finish(PATIENCE));
    EXPECT_EQ(client_->Calls(), 0u);
    EXPECT_THAT(Fetch("p"), FailsWith(ErrorCode::RECORD_NOT_FOUND, "p", "recordId"));
}

TEST_F(StubTest, ClientsMayAskOnWhileTheyAreCalled)
{
    constexpr int CALLS = 40;
    std::atomic<int> begun{0};
    std::atomic<int> answered{0};
    std::promise<void> all;
    client_ = new Client([&, allBegun = all.get_future().share()] {
        if (++begun == CALLS) {
            all.set_value();
        }
        EXPECT_EQ(allBegun.wait_for(PATIENCE), std::future_status::ready);
        OHOS::sptr<Client> inner(new Client());
        OHOS::MessageParcel data;
        OHOS::MessageParcel reply;
        OHOS::MessageOption option;
        data.WriteInterfaceToken(token_);
        EXPECT_TRUE(WriteText(data, APP_STATE) && data.WriteRemoteObject(inner));
        OHOS::sptr<DriveServiceStub> stub(new DriveServiceStub(service_->Router(), *pool_));
        EXPECT_EQ(stub->SendRequest(4, data, reply, option), 0);
        answered += inner->Next()["code"] == 0 ? 1 : 0;
    });
    for (int i = 0; i < CALLS; ++i) {
        EXPECT_EQ(Send(4, token_, APP_STATE), 0);
    }
    for (int i = 0; i < CALLS; ++i) {
        client_->Next();
    }
    EXPECT_EQ(answered.load(), CALLS);
}

TEST_F(StubTest, APoolThatIsFullOrFinishingTakesNoMore)
{
    pool_ = NewPool({1, 1});
    std::promise<void> gate;
    std::promise<void> arrived;
    client_ = new Client([&, opened = gate.get_future().share(), first = std::make_shared<std::once_flag>()] {
        std::call_once(*first, [&] { arrived.set_value(); });
        opened.wait();
    });
    EXPECT_EQ(Send(4, token_, APP_STATE), 0);
    arrived.get_future().wait();
    EXPECT_EQ(Send(4, token_, APP_STATE), 0);
    EXPECT_EQ(Send(4, token_, APP_STATE), OHOS::ERR_TRANSACTION_FAILED);
    EXPECT_FALSE(pool_->Finish(std::chrono::milliseconds(0)));
    EXPECT_EQ(Send(4, token_, APP_STATE), OHOS::ERR_TRANSACTION_FAILED);
    gate.set_value();
    EXPECT_TRUE(pool_->Finish(PATIENCE));
    EXPECT_EQ(client_->Calls(), 2u) << "what was taken was answered";
}

} // namespace

} // namespace DriveService
