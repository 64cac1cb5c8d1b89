// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_follower.h"

#include <exception>
#include <set>

#include "command_error.h"
#include "database_calls.h"
#include "error_text.h"
#include "notification.h"

namespace NubisTool {
namespace {

constexpr int CHANGES_PAGE = 1000;
// Those whose changes notifications can announce.
constexpr Nubis::NBDatabaseScope FOLLOWED_SCOPES[] = {Nubis::NB_DATABASE_PRIVATE, Nubis::NB_DATABASE_SHARED};

Json::Value NothingArrived()
{
    Json::Value arrived(Json::objectValue);
    for (const char *list : {"announced", "asked", "refused", "added", "changed", "removed"}) {
        arrived[list] = Json::Value(Json::arrayValue);
    }
    arrived["actions"] = Json::Value(Json::objectValue);
    arrived["requests"] = 0U;
    arrived["records"] = 0U;
    arrived["last"] = "";
    return arrived;
}

void Count(Json::Value &number, size_t more)
{
    number = Json::UInt64(number.asUInt64() + more);
}

int64_t NowMillis()
{
    using std::chrono::system_clock;
    return std::chrono::duration_cast<std::chrono::milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string PlaceText(Nubis::NBDatabaseScope scope, const std::string &recordType)
{
    return (scope == Nubis::NB_DATABASE_SHARED ? "shared/" : "private/") + recordType;
}

} // namespace

DemoFollower::DemoFollower(
    std::shared_ptr<Nubis::NBContainer> container, std::vector<std::string> recordTypes, DemoRecords &records)
    : container_(std::move(container)), kit_(container_->GetNubis()), recordTypes_(std::move(recordTypes)),
      records_(records), arrived_(NothingArrived())
{}

Json::Value DemoFollower::Start(Beginning beginning)
{
    Nubis::NBUserInfo user;
    ThrowIfError(kit_->GetCloudUserInfo(user, false), "reading the key that notifications are verified with");
    accountId_ = user.userId;
    std::string eventName = kit_->GetCloudSyncSaName();
    // Notifications that come meanwhile wait until the cursors are where they belong.
    std::unique_lock<std::mutex> serving(servingMutex_);
    listener_ = std::make_unique<Host::EventListener>(
        kit_->GetUserId(), eventName, [this](const std::string &text) { Serve(text); },
        [this] {
            std::lock_guard<std::mutex> lock(arrivedMutex_);
            problem_ = "notifications were lost because too many waited";
            changed_.notify_all();
        });
    std::string error;
    if (!listener_->Start(error)) {
        throw CommandError("cannot listen for notifications: " + error, "");
    }
    for (Nubis::NBDatabaseScope scope : FOLLOWED_SCOPES) {
        for (const std::string &recordType : recordTypes_) {
            if (beginning == Beginning::NOW) {
                FindBeginning({scope, recordType});
            } else {
                ReadOn({scope, recordType});
            }
        }
    }
    Json::Value answer = TakeArrived();
    answer["eventName"] = eventName;
    return answer;
}

void DemoFollower::AcceptUntil(int64_t expirationTime)
{
    acceptedUntil_ = expirationTime;
}

void DemoFollower::FindBeginning(const Place &place)
{
    ThrowIfError(
        Database(place.first)->GetStartCursor(place.second, cursors_[place]), "asking where the changes begin");
}

std::shared_ptr<Nubis::NBDatabase> DemoFollower::Database(Nubis::NBDatabaseScope scope) const
{
    auto database = container_->GetDatabaseWithdatabaseScope(scope);
    if (database == nullptr) {
        throw CommandError("a database of the container cannot be opened", "");
    }
    return database;
}

void DemoFollower::Serve(const std::string &text)
{
    try {
        std::lock_guard<std::mutex> serving(servingMutex_);
        Notification notification = ReadNotification(*kit_, text);
        if (!notification.IsVerified()) {
            Note("refused", notification.refusal);
            return;
        }
        if (NowMillis() >= acceptedUntil_) {
            Note("refused", "the subscription that it was signed for has expired");
            return;
        }
        const Nubis::NBRecordChangeEvent &event = notification.event;
        if (event.accountId != accountId_ || event.bundleName != container_->GetBundleName() ||
            event.containerName != container_->GetContainerName()) {
            return;
        }
        for (Nubis::NBDatabaseScope scope : event.databaseScopes) {
            for (const std::string &recordType : event.recordTypes) {
                Note("announced", PlaceText(scope, recordType));
                ReadOn({scope, recordType});
            }
        }
        std::lock_guard<std::mutex> lock(arrivedMutex_);
        Count(arrived_["actions"][event.prepareTraceId], 1);
        arrived_["last"] = text;
    } catch (const std::exception &failure) {
        std::lock_guard<std::mutex> lock(arrivedMutex_);
        problem_ = failure.what();
    }
    changed_.notify_all();
}

void DemoFollower::ReadOn(const Place &place)
{
    static const char *const MEMBERS[] = {"added", "changed", "removed", nullptr};
    auto database = Database(place.first);
    std::string &cursor = cursors_[place];
    for (bool hasMore = true; hasMore;) {
        Note("asked", PlaceText(place.first, place.second));
        Async::ChangesResult page = Wait(Async::FetchDatabaseChanges(database, place.second, {}, CHANGES_PAGE, cursor));
        ThrowIfError(page.error, "reading changes");
        if (page.hasMore && page.cursor == cursor) {
            throw CommandError("the service's cursor stands still", "");
        }
        std::lock_guard<std::mutex> lock(arrivedMutex_);
        for (const Nubis::NBRecord &record : page.records) {
            auto effect = records_.With([&record](LocalStore &store) { return store.Take(record); });
            if (const char *member = MEMBERS[static_cast<size_t>(effect)]; member != nullptr) {
                arrived_[member].append(record.GetRecordId());
            }
        }
        Count(arrived_["requests"], 1);
        Count(arrived_["records"], page.records.size());
        cursor = page.cursor;
        hasMore = page.hasMore;
    }
}

void DemoFollower::Note(const char *member, const std::string &text)
{
    std::lock_guard<std::mutex> lock(arrivedMutex_);
    arrived_[member].append(text);
    changed_.notify_all();
}

bool DemoFollower::HasArrived(const Expected &expected) const
{
    return arrived_["refused"].size() >= expected.refusals &&
           arrived_["actions"].get(expected.action, 0U).asUInt64() >= expected.notifications;
}

Json::Value DemoFollower::Await(const Expected &expected, std::chrono::seconds time)
{
    bool inTime = false;
    {
        std::unique_lock<std::mutex> lock(arrivedMutex_);
        inTime = changed_.wait_for(lock, time, [this, &expected] { return !problem_.empty() || HasArrived(expected); });
        if (!problem_.empty()) {
            throw CommandError("following the changes failed: " + problem_, "");
        }
    }
    Json::Value answer = TakeArrived();
    answer["late"] = !inTime;
    return answer;
}

Json::Value DemoFollower::TakeArrived()
{
    std::lock_guard<std::mutex> lock(arrivedMutex_);
    Json::Value answer = NothingArrived();
    std::swap(answer, arrived_);
    for (const char *list : {"announced", "asked"}) {
        std::set<std::string> places;
        for (const Json::Value &place : answer[list]) {
            places.insert(place.asString());
        }
        answer[list] = Json::Value(Json::arrayValue);
        for (const std::string &place : places) {
            answer[list].append(place);
        }
    }
    return answer;
}

} // namespace NubisTool
