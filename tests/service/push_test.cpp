// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <condition_variable>
#include <memory>
#include <mutex>

#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include "host/event_channel.h"
#include "service_fixture.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char *DATA_EVENT = "cloudData_notifyDataChange";
constexpr const char *FILE_EVENT = "cloudFile_notifyDataChange";

bool IsSignature(const std::string &keyHex, const std::string &text, const std::string &signatureHex)
{
    std::string der = FromHex(keyHex);
    std::string signature = FromHex(signatureHex);
    const auto *at = reinterpret_cast<const unsigned char *>(der.data());
    std::unique_ptr<EVP_PKEY, void (*)(EVP_PKEY *)> key(
        d2i_PUBKEY(nullptr, &at, static_cast<long>(der.size())), &EVP_PKEY_free);
    std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX *)> digest(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    EVP_PKEY_CTX *options = nullptr;
    return EVP_DigestVerifyInit(digest.get(), &options, EVP_sha256(), nullptr, key.get()) == 1 &&
           EVP_PKEY_CTX_set_rsa_padding(options, RSA_PKCS1_PSS_PADDING) == 1 &&
           EVP_DigestVerify(digest.get(), reinterpret_cast<const unsigned char *>(signature.data()), signature.size(),
               reinterpret_cast<const unsigned char *>(text.data()), text.size()) == 1;
}

// The notifications of one event name.
class Heard {
public:
    explicit Heard(const char *eventName)
        : eventName_(eventName), listener_(100, eventName, [this](const std::string &text) { Add(text); })
    {
        std::string error;
        EXPECT_TRUE(listener_.Start(error)) << error;
    }

    // All that were published since the last call.
    std::vector<Json::Value> Take()
    {
        std::string error;
        EXPECT_TRUE(Host::PublishEvent(100, eventName_, "{}", error)) << error;
        std::unique_lock<std::mutex> lock(mutex_);
        EXPECT_TRUE(changed_.wait_for(
            lock, std::chrono::seconds(40), [&] { return !heard_.empty() && heard_.back().empty(); }));
        heard_.pop_back();
        return std::move(heard_);
    }

private:
    void Add(const std::string &text)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        heard_.push_back(J(text));
        changed_.notify_all();
    }

    const char *eventName_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Json::Value> heard_;
    Host::EventListener listener_;
};

class PushTest : public ServiceTest {
protected:
    Json::Value Subscribe(const char *eventName, int64_t expirationTime = 5000)
    {
        Json::Value reply =
            Ask("saveSubscription", Members({{"saName", eventName}, {"expirationTime", Json::Int64(expirationTime)}}));
        EXPECT_THAT(reply, Succeeds());
        return reply;
    }

    static Json::Value DataOf(const Json::Value &notification)
    {
        return J(notification["data"].asString());
    }

    Json::Value AskFor(const std::string &function, const Json::Value &id)
    {
        return Ask(function, Members({{"id", id}}));
    }

    // What was pushed for everything done so far.
    std::vector<Json::Value> Pushed(Heard &heard)
    {
        EXPECT_TRUE(service_->GetNotifier().Finish(std::chrono::seconds(40)));
        return heard.Take();
    }

    Heard data_{DATA_EVENT};
    Heard file_{FILE_EVENT};
};

TEST_F(PushTest, EachCommittedBatchNotifiesEachSubscriptionOnce)
{
    SaveOne(NewPerson("early"));
    std::string id = Subscribe(DATA_EVENT)["id"].asString();
    Subscribe(FILE_EVENT);
    Json::Value batch = J("{'savePolicy': 2, 'databaseType': 2, 'prepareTraceId': 'trace', 'records': [{}, {}, {}]}");
    batch["records"][0] = NewPerson("p1", "{'name': 'Bob'}");
    batch["records"][1] = NewPerson("p2", "{'name': 'Eve'}");
    batch["records"][2] = J("{'recordId': 'g1', 'recordType': 'group', 'isNew': true, 'title': 't'}");
    EXPECT_THAT(Ask("saveRecords", batch), Succeeds());
    std::vector<Json::Value> pushed = Pushed(data_);
    ASSERT_EQ(pushed.size(), 1u);
    EXPECT_EQ(Pushed(file_).size(), 1u);

    Json::Value user = Ask("GetCloudUserInfo")["userInfo"];
    Json::Value expected = J(R"({'bundleName': 'com.example.people', 'containerName': 'people'})");
    expected["accountId"] = user["userId"];
    expected["databaseScopes"] = R"(["shared"])";
    expected["recordTypes"] = R"(["group","person"])";
    expected["properties"] = R"({"subscriptionId":")" + id + "\"}";
    expected["context"] = R"({"prepareTraceId":"trace"})";
    const Json::Value one = pushed[0];
    EXPECT_EQ(DataOf(one), expected);
    EXPECT_EQ(one["keyId"], user["pushKeyId"]);
    std::string text = "data=" + one["data"].asString() + "&keyId=" + one["keyId"].asString() +
                       "&notifyId=" + one["notifyId"].asString();
    EXPECT_TRUE(IsSignature(user["pushKeyValue"].asString(), text, one["signV2"].asString()));
    EXPECT_THAT(one.getMemberNames(), ElementsAre("data", "keyId", "notifyId", "signV2", "x-ov-trace-id"));

    // Refused records change nothing; a deletion does, without a user action that it knows of.
    EXPECT_NE(Save(J("[{'recordId': 'p1', 'recordType': 'person', 'isNew': true}]"))[0]["code"], 0);
    Json::Value shared = J("{'recordType': 'person', 'recordId': 'early', 'prepareTraceId': 'shared'}");
    EXPECT_THAT(Ask("setPreShared", shared), Succeeds());
    EXPECT_THAT(Ask("setPreShared", shared), Succeeds()) << "nothing is left to change";
    Delete("early");
    pushed = Pushed(data_);
    ASSERT_EQ(pushed.size(), 2u);
    EXPECT_EQ(DataOf(pushed[0])["context"], R"({"prepareTraceId":"shared"})");
    EXPECT_EQ(DataOf(pushed[1])["databaseScopes"], R"(["private"])");
    EXPECT_EQ(DataOf(pushed[1])["context"], "{}");
    EXPECT_NE(pushed[1]["notifyId"], one["notifyId"]);
}

TEST_F(PushTest, ExpiredAndDeletedSubscriptionsGetNothing)
{
    Json::Value first = Subscribe(DATA_EVENT, 2000);
    Json::Value other = Subscribe(FILE_EVENT, 9000);
    EXPECT_EQ(first["expirationTime"], 2000);
    Json::Value renewed = Subscribe(DATA_EVENT, 3000);
    EXPECT_EQ(renewed["id"], first["id"]);
    nowMs_ = 2500;
    SaveOne(NewPerson("p1", "{'name': 'Bob'}"));
    EXPECT_EQ(Pushed(data_).size(), 1u) << "it was renewed, and is one still";
    nowMs_ = 3000;
    EXPECT_THAT(AskFor("changesNotify", first["id"]), FailsWith(ErrorCode::UNKNOWN_SUBSCRIPTION, "has expired", "id"));
    SaveOne(NewPerson("p2", "{'name': 'Eve'}"));
    EXPECT_NE(Subscribe(DATA_EVENT)["id"], first["id"]) << "a new one does not tell what the old one missed";
    EXPECT_THAT(Pushed(data_), IsEmpty());
    EXPECT_EQ(Pushed(file_).size(), 2u);

    EXPECT_THAT(AskFor("deleteSubscription", other["id"]), Succeeds());
    SaveOne(NewPerson("p3", "{'name': 'Max'}"));
    EXPECT_THAT(Pushed(file_), IsEmpty());
    for (const char *function : {"deleteSubscription", "changesNotify"}) {
        EXPECT_THAT(AskFor(function, other["id"]),
            FailsWith(ErrorCode::UNKNOWN_SUBSCRIPTION, "\"people\" has no subscription", "id"));
    }
}

TEST_F(PushTest, SubscriptionsSurviveARestartAndCanBeAskedToNotify)
{
    Json::Value id = Subscribe(DATA_EVENT)["id"];
    Restart();
    EXPECT_THAT(AskFor("changesNotify", id), Succeeds());
    std::vector<Json::Value> pushed = Pushed(data_);
    ASSERT_EQ(pushed.size(), 1u);
    EXPECT_EQ(DataOf(pushed[0])["databaseScopes"], R"(["private","shared"])");
    EXPECT_EQ(DataOf(pushed[0])["recordTypes"], R"(["group","media","person"])");
}

TEST_F(PushTest, WhatIsAskedForIsChecked)
{
    const auto save = [this](const std::string &members) { return Ask("saveSubscription", J(members)); };
    constexpr const char *function = "saveSubscription";
    constexpr ErrorCode argument = ErrorCode::INVALID_ARGUMENT;
    ExpectRefused({
        {function, "{'expirationTime': 1000}", argument, "in the future, came 1000", "expirationTime"},
        {function, "{'expirationTime': '5'}", argument, "integer", "expirationTime"},
        {function, "{'signVersion': 1}", argument, "from 2 to 2", "signVersion"},
        {function, "{'keyId': 'another'}", argument, "\"pushKeyId\"", "keyId"},
        {function, "{'saName': '../x'}", argument, "letters", "saName"},
        {function, "{'containerName': 'x'}", ErrorCode::UNKNOWN_CONTAINER, "no container \"x\"", "containerName"},
    });
    EXPECT_THAT(Ask("changesNotify", Members({{"id", "x"}, {"prepareTraceId", std::string(513, 't')}})),
        FailsWith(argument, "at most 512 bytes", "prepareTraceId"));
    constexpr int64_t year = int64_t{365} * 24 * 3600 * 1000;
    EXPECT_EQ(save("{'expirationTime': 9000000000000000000}")["expirationTime"].asInt64(), 1000 + year);

    // Without a name, the kind of the container says who is told.
    EXPECT_NE(save("{'syncDemon': '1'}")["id"], save("{'syncDemon': '0'}")["id"]);
    SaveOne(NewPerson("p1"));
    EXPECT_EQ(Pushed(data_).size(), 1u);
    EXPECT_EQ(Pushed(file_).size(), 1u);
}

TEST_F(PushTest, ABatchAnswersEachItem)
{
    Json::Value saved = Ask("batchSaveSubscription", J(R"({'subscriptions': [
        {'bundleName': 'com.example.people', 'containerName': 'people', 'expirationTime': 5000},
        {'bundleName': 'com.example.people', 'containerName': 'x', 'expirationTime': 5000}, 5]})"));
    ASSERT_THAT(saved, Succeeds());
    const Json::Value &items = saved["subscriptions"];
    ASSERT_EQ(items.size(), 3u);
    EXPECT_THAT(items[0], Succeeds());
    EXPECT_EQ(items[0]["expirationTime"], 5000);
    EXPECT_EQ(items[0]["containerName"], "people");
    EXPECT_THAT(items[1], FailsWith(ErrorCode::UNKNOWN_CONTAINER, "no container", "containerName"));
    EXPECT_EQ(items[1]["containerName"], "x");
    EXPECT_THAT(items[2], FailsWith(ErrorCode::INVALID_ARGUMENT, "expected objects", "subscriptions"));

    Json::Value deleted =
        Ask("batchDeleteSubscription", Members({{"subscriptions", List({items[1], items[0]})}}))["subscriptions"];
    EXPECT_THAT(deleted[0], FailsWith(ErrorCode::INVALID_ARGUMENT, "\"id\"", "id"));
    EXPECT_THAT(deleted[1], Succeeds());
    SaveOne(NewPerson("p1"));
    EXPECT_THAT(Pushed(data_), IsEmpty());
}

TEST_F(PushTest, SubscriptionsAreListedUntilTheyExpire)
{
    Json::Value first = Subscribe(DATA_EVENT, 2000);
    Subscribe(FILE_EVENT, 9000);
    EXPECT_EQ(Ask("getSubscriptions", J("{'containerName': 'x'}"))["subscriptions"].size(), 0u);
    Json::Value listed = Ask("getSubscriptions", J("{'bundleName': '', 'containerName': ''}"))["subscriptions"];
    ASSERT_EQ(listed.size(), 2u);
    Json::Value expected = J("{'bundleName': 'com.example.people', 'containerName': 'people', 'expirationTime': 2000}");
    expected["id"] = first["id"];
    expected["saName"] = DATA_EVENT;
    EXPECT_EQ(listed[0], expected);
    nowMs_ = 2000;
    listed = Ask("getSubscriptions")["subscriptions"];
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_EQ(listed[0]["saName"], FILE_EVENT);
}

// As after a service that died between the commit and the sending.
TEST(NotifierTest, NoticesAreSentInOrderAndDroppedOnlyAfterwards)
{
    TempFolder folder;
    SqliteStore store(folder.Path() + "/drive.db");
    PushKey key(folder.Path() + "/key.pem");
    constexpr size_t count = 150;
    {
        std::unique_ptr<WriteSession> session = store.BeginWrite();
        Subscription subscription{"s", "bundle", "container", "event", 5000};
        session->PutSubscription(subscription, 0);
        for (size_t i = 0; i < count; ++i) {
            session->AddNotice("s", {"[]", "[]", std::to_string(i)});
        }
        session->Commit();
    }
    std::vector<std::string> sent;
    const auto publish = [&](const std::string &, const std::string &text, std::string &error) {
        sent.push_back(J(text)["x-ov-trace-id"].asString());
        EXPECT_THAT(store.BeginRead()->Notices(1), testing::SizeIs(1)) << "not before it is sent";
        store.BeginWrite()->Commit();
        error = "who cannot be reached keeps nobody else from the rest";
        return false;
    };
    for (int restart = 0; restart < 2; ++restart) {
        Notifier notifier(
            store, key, [] { return 1000; }, publish);
        EXPECT_TRUE(notifier.Finish(std::chrono::seconds(50)));
    }
    ASSERT_EQ(sent.size(), count);
    for (size_t i = 0; i < count; ++i) {
        EXPECT_EQ(sent[i], std::to_string(i));
    }
    EXPECT_THAT(store.BeginRead()->Notices(1), IsEmpty());
}

// Numbers of dropped notices are given anew.
TEST(NotifierTest, ANoticeThatCameWhileOthersWereSentIsSentToo)
{
    TempFolder folder;
    SqliteStore store(folder.Path() + "/drive.db");
    PushKey key(folder.Path() + "/key.pem");
    const auto subscribe = [&store](const char *id, const char *dropped) {
        std::unique_ptr<WriteSession> session = store.BeginWrite();
        session->DropSubscription(dropped);
        Subscription subscription{id, "bundle", "container", id, 5000};
        session->PutSubscription(subscription, 0);
        session->AddNotice(id, {"[]", "[]", id});
        session->Commit();
    };
    subscribe("first", "");
    std::vector<std::string> sent;
    const auto publish = [&](const std::string &eventName, const std::string &, std::string &) {
        sent.push_back(eventName);
        if (sent.size() == 1) {
            subscribe("second", "first");
        }
        return true;
    };
    Notifier notifier(
        store, key, [] { return 1000; }, publish);
    EXPECT_TRUE(notifier.Finish(std::chrono::seconds(50)));
    EXPECT_THAT(sent, ElementsAre("first", "second"));
}

} // namespace

} // namespace DriveService
