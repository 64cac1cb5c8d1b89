// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_fixture.h"

namespace DriveService {

namespace {

class LockTest : public ServiceTest {
protected:
    static constexpr int64_t INTERVAL_MS = 60000;

    Json::Value Lock(const std::string &session = "")
    {
        return WithSession("getLock", session);
    }

    Json::Value WithSession(const std::string &function, const std::string &session, Json::Value members = J("{}"))
    {
        if (!session.empty()) {
            members["lockSessionId"] = session;
        }
        return Ask(function, members);
    }
};

TEST_F(LockTest, OnlyTheSessionThatHoldsTheLockMayWrite)
{
    Json::Value lock = Lock();
    std::string session = lock["lockSessionId"].asString();
    EXPECT_THAT(session, testing::MatchesRegex("[0-9a-f]{32}"));
    EXPECT_EQ(lock["lockInterval"], 60);
    Restart();
    const std::pair<const char *, const char *> writes[] = {
        {"saveRecords", "{'savePolicy': 0, 'records': []}"},
        {"deleteRecords", "{'savePolicy': 0, 'records': [], 'recordType': 'person'}"},
        {"modifyRecords", "{'savePolicy': 0, 'recordsToSave': [], 'recordsToDelete': []}"},
        {"copyRecords", "{'records': [], 'databaseType': 2}"},
    };
    for (const auto &[function, members] : writes) {
        for (const std::string &other : {std::string(), std::string("other")}) {
            EXPECT_THAT(WithSession(function, other, J(members)),
                FailsWith(ErrorCode::LOCK_HELD, "locked by another session, for 60 s", "lockSessionId"))
                << function;
        }
        EXPECT_THAT(WithSession(function, session, J(members)), Succeeds()) << function;
    }
    EXPECT_THAT(Lock(), FailsWith(ErrorCode::LOCK_HELD, "locked", "lockSessionId"));
    EXPECT_THAT(WithSession("deleteLock", "other"), FailsWith(ErrorCode::LOCK_HELD, "locked", "lockSessionId"));
    EXPECT_THAT(Ask("fetchDatabaseChanges"), Succeeds()) << "reading is free";

    EXPECT_THAT(WithSession("deleteLock", session), Succeeds());
    EXPECT_THAT(WithSession("deleteLock", session), Succeeds());
    SaveOne(NewPerson("p"));
    EXPECT_NE(Lock(session)["lockSessionId"], session) << "it was given back";
}

TEST_F(LockTest, ALockRunsOutUnlessItsSessionRenewsIt)
{
    nowMs_ = 7 * INTERVAL_MS;
    std::string session = Lock()["lockSessionId"].asString();
    nowMs_ += INTERVAL_MS - 1;
    EXPECT_EQ(Lock(session)["lockSessionId"], session);
    nowMs_ += INTERVAL_MS - 1;
    EXPECT_THAT(Lock(), FailsWith(ErrorCode::LOCK_HELD, "for 1 s", "lockSessionId"));
    nowMs_ += 1;
    SaveOne(NewPerson("p"));
    EXPECT_NE(Lock(session)["lockSessionId"], session) << "others could write meanwhile";
    EXPECT_THAT(Lock(session), FailsWith(ErrorCode::LOCK_HELD, "locked", "lockSessionId"));
    nowMs_ -= INTERVAL_MS;
    EXPECT_THAT(Lock(), FailsWith(ErrorCode::LOCK_HELD, "locked", "lockSessionId"))
        << "a small step back frees nothing";
    nowMs_ -= 1;
    EXPECT_THAT(Lock(), Succeeds()) << "a clock that was set back must not keep others out for ever";
}

TEST_F(LockTest, EveryoneMaySeeWhoHoldsTheLockButNotItsSession)
{
    EXPECT_EQ(Ask("getLockState")["lock"], J("{'locked': false}"));
    std::string session = Lock()["lockSessionId"].asString();
    nowMs_ += 5000;
    EXPECT_EQ(Lock(session)["lockSessionId"], session);
    Restart();
    EXPECT_EQ(
        Ask("getLockState")["lock"], J("{'locked': true, 'deviceName': 'tablet', 'since': 1000, 'until': 66000}"));
    nowMs_ = 66000;
    EXPECT_EQ(Ask("getLockState")["lock"], J("{'locked': false}"));
}

TEST_F(LockTest, WrongRequestsAndDamagedLocksHurtNobody)
{
    ExpectRefused({
        {"deleteLock", "{}", ErrorCode::INVALID_ARGUMENT, "not empty", "lockSessionId"},
        {"getLock", "{'lockSessionId': 5}", ErrorCode::INVALID_ARGUMENT, "a text", "lockSessionId"},
        {"getLock", "{'containerName': 'x'}", ErrorCode::UNKNOWN_CONTAINER, "no container", "containerName"},
    });
    for (const char *text : {"", "[]", "{\"expiresMs\":\"x\"}", "{\"sessionId\":5,\"expiresMs\":2000}"}) {
        std::unique_ptr<WriteSession> session = service_->GetStore().BeginWrite();
        session->SetSetting("lock/com.example.people/people", text);
        session->Commit();
        session.reset();
        EXPECT_THAT(Ask("saveRecords", J("{'savePolicy': 0, 'records': []}")), Succeeds()) << text;
    }
}

} // namespace

} // namespace DriveService
