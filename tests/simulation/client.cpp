// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "client.h"

#include <map>

#include "nubis_kit.h"

namespace Simulation {

namespace {

using namespace Nubis;
using Outcome = RecordModel::Outcome;

constexpr const char *TYPE = "note";
// Few enough that a few records already make several pages.
constexpr int PAGE = 3;

std::shared_ptr<NBContext> NewContext()
{
    return std::make_shared<NBContext>();
}

std::string IdOf(int record)
{
    return "r" + std::to_string(record);
}

} // namespace

Client::Client(ClientSetup setup, Ledger &ledger)
    : setup_(std::move(setup)), database_(setup_.container->container->GetDatabaseWithdatabaseScope(setup_.scope)),
      ledger_(ledger)
{}

void Client::Carry(const Order &order, bool isGarbled)
{
    switch (order.action) {
        case Action::SAVE:
        case Action::ERASE:
        case Action::MODIFY:
        case Action::MODIFY_WHOLE:
        case Action::COPY:
            return Change(order, isGarbled);
        case Action::FOLLOW:
            return Follow(isGarbled);
        default:
            break;
    }
    const size_t operation = ledger_.Open(Describe(order));
    switch (order.action) {
        case Action::FETCH:
            return Fetch(operation, IdOf(order.erasures.front()), isGarbled);
        case Action::QUERY:
            return Query(operation, isGarbled);
        case Action::LOCK:
            return TakeLock(operation, isGarbled);
        case Action::UNLOCK:
            return GiveLockBack(operation, isGarbled);
        case Action::SUBSCRIBE:
            return Subscribe(operation, isGarbled);
        case Action::UNSUBSCRIBE:
            return Unsubscribe(operation, isGarbled);
        default:
            return AskUser(operation, isGarbled);
    }
}

Outcome Client::Judge(const NBError &error, bool isGarbled, const std::string &text)
{
    if (isGarbled) {
        return Outcome::UNKNOWN;
    }
    if (error.IsLocalError()) {
        const NBLocalErrorCode code = error.GetLocalErrorCode();
        if (code == NB_LOCAL_BAD_DATA || code == NB_LOCAL_UNEXPECTED_REPLY) {
            ledger_.Report(text + " met the local error " + std::to_string(code) + "\n");
        }
        return code == NB_LOCAL_NOT_CONNECTED ? Outcome::REFUSED : Outcome::UNKNOWN;
    }
    if (error.IsServerError()) {
        // From here on the service itself has failed.
        constexpr int serviceFailed = 1200;
        if (error.GetServerErrorCode() > serviceFailed) {
            ledger_.Report(text + ": " + error.GetErrorMsg() + "\n");
        }
        return Outcome::REFUSED;
    }
    return Outcome::DONE;
}

void Client::Start(size_t operation, int code)
{
    if (code != NB_LOCAL_SUCCESS) {
        ledger_.Report("an operation was not accepted: " + std::to_string(code) + "\n");
        ledger_.Refuse(operation);
    }
}

NBRecord Client::RecordOf(int number)
{
    NBRecord record;
    record.SetRecordType(TYPE);
    record.SetRecordId(IdOf(number));
    std::lock_guard<std::mutex> lock(mutex_);
    record.SetVersion(versions_[IdOf(number)]);
    return record;
}

std::vector<NBRecord> Client::RecordsToSave(const Order &order)
{
    std::vector<NBRecord> records;
    for (const Writing &writing : order.writings) {
        NBRecord record = RecordOf(writing.record);
        record.SetNewCreate(writing.isNew);
        record.SetRecordData(NBFieldMap{
            {"title", NBRecordField("w" + std::to_string(writing.title))}, {"stars", NBRecordField(writing.title)}});
        records.push_back(std::move(record));
    }
    return records;
}

std::vector<NBRecord> Client::RecordsToErase(const Order &order)
{
    std::vector<NBRecord> records;
    for (const int number : order.erasures) {
        records.push_back(RecordOf(number));
    }
    return records;
}

Client::Attempt Client::Begin(const Order &order, bool isGarbled)
{
    Attempt attempt;
    attempt.text = Describe(order);
    attempt.operation = ledger_.Open(attempt.text);
    attempt.isWhole = order.action == Action::MODIFY_WHOLE;
    attempt.isGarbled = isGarbled;
    for (const Writing &writing : order.writings) {
        attempt.changes.push_back({IdOf(writing.record), "w" + std::to_string(writing.title)});
    }
    for (const int number : order.erasures) {
        attempt.changes.push_back({IdOf(number), std::nullopt});
    }
    attempt.firstChange = records_.Order(attempt.changes, attempt.isWhole);
    attempt.lockBegin = setup_.container->lock.Begin();
    return attempt;
}

void Client::Conclude(const Attempt &attempt, const NBResultMap &results, const NBError &error)
{
    std::set<Outcome> outcomes;
    for (size_t i = 0; i < attempt.changes.size(); ++i) {
        const auto result = results.find(attempt.changes[i].recordId);
        const bool isAnswered = result != results.end();
        if (!isAnswered && !error.HasError() && !attempt.isGarbled) {
            ledger_.Report(attempt.text + " has no result for " + attempt.changes[i].recordId + "\n");
        }
        const Outcome outcome = Judge(isAnswered ? result->second : error, attempt.isGarbled, attempt.text);
        if (outcome == Outcome::DONE && attempt.changes[i].title.has_value()) {
            NoteVersion(result->second.GetRecord());
        }
        records_.Settle(attempt.firstChange + i, outcome);
        outcomes.insert(outcome);
    }
    if (attempt.isWhole && outcomes.size() > 1) {
        ledger_.Report(attempt.text + " was done in part\n");
    }
    if (outcomes.count(Outcome::DONE) > 0) {
        ledger_.Report(setup_.container->lock.OnWritten(setup_.number, attempt.lockBegin, setup_.nowMs()));
    }
}

// Every write of a record has a version of its own, or one of two has been lost.
void Client::NoteVersion(const NBRecord &record)
{
    std::lock_guard<std::mutex> lock(mutex_);
    versions_[record.GetRecordId()] = record.GetVersion();
    if (!ownVersions_.emplace(record.GetRecordId(), record.GetVersion()).second) {
        ledger_.Report("record " + record.GetRecordId() + " was saved twice as version " +
                       std::to_string(record.GetVersion()) + "\n");
    }
}

void Client::Change(const Order &order, bool isGarbled)
{
    const Attempt attempt = Begin(order, isGarbled);
    const auto policy = static_cast<NBSavePolicy>(order.policy);
    const NBRecordsCallback onDone = [this, attempt](auto, auto, auto results, const NBError &error) {
        Conclude(attempt, *results, error);
        ledger_.Close(attempt.operation);
    };
    if (order.action == Action::SAVE) {
        const NBProgressCallback onProgress = [](auto, auto) {};
        Start(attempt.operation, database_->SaveRecords(NewContext(), RecordsToSave(order), policy, onDone,
                                     policy == NB_SAVE_OVERWRITE ? onProgress : nullptr));
    } else if (order.action == Action::ERASE) {
        Start(attempt.operation, database_->DeleteRecords(NewContext(), RecordsToErase(order), policy, onDone));
    } else if (order.action == Action::COPY) {
        std::vector<NBCopyRecord> copies{
            {std::move(RecordsToSave(order).front()), IdOf(order.writings.front().source)}};
        Start(attempt.operation, database_->CopyRecords(NewContext(), std::move(copies), onDone));
    } else {
        const auto onModified = [onDone](auto context, auto database, auto saved, auto erased, const NBError &error) {
            saved->insert(erased->begin(), erased->end());
            onDone(context, database, saved, error);
        };
        Start(attempt.operation, database_->ModifyRecords(NewContext(), RecordsToSave(order), RecordsToErase(order),
                                     policy, attempt.isWhole, onModified));
    }
}

void Client::Look(const std::vector<NBRecord> &records)
{
    std::string problems;
    for (const NBRecord &record : records) {
        TitleOf(record, problems);
        std::lock_guard<std::mutex> lock(mutex_);
        versions_[record.GetRecordId()] = record.GetVersion();
    }
    ledger_.Report(problems);
}

void Client::Fetch(size_t operation, const std::string &recordId, bool isGarbled)
{
    const auto onFetched = [this, operation, isGarbled](auto, auto, auto, NBRecord &record, const NBError &error) {
        if (Judge(error, isGarbled, "fetch") == Outcome::DONE) {
            Look({record});
        }
        ledger_.Close(operation);
    };
    Start(operation, database_->FetchRecordWithId(NewContext(), TYPE, recordId, {}, onFetched));
}

void Client::Query(size_t operation, bool isGarbled)
{
    const auto onPage = [this, operation, isGarbled](auto, auto, auto records, auto, const NBError &error) {
        if (Judge(error, isGarbled, "query") == Outcome::DONE) {
            Look(*records);
        }
        ledger_.Close(operation);
    };
    NBQuery query;
    query.recordType = TYPE;
    query.queryText = "stars>=0";
    Start(operation, database_->FetchRecordsWithQuery(NewContext(), {}, query, PAGE, "", onPage));
}

void Client::AskUser(size_t operation, bool isGarbled)
{
    NBUserInfo info;
    Judge(setup_.container->container->GetNubis()->GetCloudUserInfo(info, false), isGarbled, "ask-user");
    ledger_.Close(operation);
}

void Client::OnNews()
{
    hasNews_ = true;
}

void Client::Follow(bool isGarbled)
{
    if (isFollowing_.exchange(true)) {
        hasNews_ = true;
        return;
    }
    // Before looking: what happens from here on is told, if there is a subscription. A new one does not tell of before.
    const int subscription = setup_.followsNotifications ? setup_.container->subscription.load() : 0;
    const bool isTold = subscription != 0 && subscription == lookedUnder_.exchange(subscription);
    if (!hasNews_.exchange(false) && isTold) {
        isFollowing_ = false;
        return;
    }
    FollowPage(isGarbled);
}

void Client::FollowPage(bool isGarbled)
{
    const size_t operation = ledger_.Open("follow of client " + std::to_string(setup_.number));
    const auto onPage = [this, operation, isGarbled](
                            auto, auto, auto records, const std::string &cursor, bool hasMore, const NBError &error) {
        const Outcome outcome = Judge(error, isGarbled, "follow");
        if (outcome == Outcome::REFUSED && error.IsServerError()) {
            ledger_.Report("the service refused a cursor: " + error.GetErrorMsg() + "\n");
        }
        if (outcome == Outcome::DONE) {
            ledger_.Report(replica_.Apply(*records, cursor));
        }
        if (outcome == Outcome::DONE && hasMore) {
            FollowPage(isGarbled);
        } else {
            hasNews_ = hasNews_ || outcome != Outcome::DONE;
            isFollowing_ = false;
        }
        ledger_.Close(operation);
    };
    Start(operation, database_->FetchDatabaseChanges(NewContext(), "", {}, PAGE, replica_.Cursor(), onPage));
}

void Client::TakeLock(size_t operation, bool isGarbled)
{
    LockModel &model = setup_.container->lock;
    const uint64_t begin = model.Begin();
    const int64_t beginMs = setup_.nowMs();
    const Outcome outcome = Judge(database_->GetLock(NewContext(), lock_), isGarbled, "lock");
    if (outcome == Outcome::DONE) {
        ledger_.Report(model.OnTaken(setup_.number, lock_.lockSessionId, begin, beginMs, setup_.nowMs()));
    }
    ledger_.Close(operation);
}

void Client::GiveLockBack(size_t operation, bool isGarbled)
{
    setup_.container->lock.OnGivingBack(setup_.number);
    Judge(database_->DeleteLock(NewContext(), std::exchange(lock_, NBLock())), isGarbled, "unlock");
    ledger_.Close(operation);
}

void Client::Subscribe(size_t operation, bool isGarbled)
{
    NBSubscription subscription;
    setup_.container->container->SaveSubscription(
        NewContext(), subscription, [this, operation, isGarbled](auto, auto, NBSubscriptionResult &result) {
            if (Judge(result.error, isGarbled, "subscribe") == Outcome::DONE) {
                subscriptionId_ = result.id;
                ContainerState &state = *setup_.container;
                state.subscription = state.subscription != 0 ? state.subscription.load() : ++state.subscriptions;
            }
            ledger_.Close(operation);
        });
}

void Client::Unsubscribe(size_t operation, bool isGarbled)
{
    setup_.container->subscription = 0;
    setup_.container->container->DeleteSubscription(
        NewContext(), subscriptionId_, [this, operation, isGarbled](auto, const NBError &error) {
            Judge(error, isGarbled, "unsubscribe");
            ledger_.Close(operation);
        });
}

} // namespace Simulation
