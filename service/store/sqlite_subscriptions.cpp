// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <json/json.h>

#include "store/sqlite_write.h"
#include "util/encoding.h"
#include "util/json_writer.h"

// Subscriptions, and the notices that wait to be sent.
namespace DriveService {

namespace {

constexpr size_t NOTICE_UID_BYTES = 16;

Subscription ReadSubscription(SQLite::Statement &row)
{
    Subscription subscription;
    int column = 0;
    subscription.id = row.getColumn(column++).getString();
    subscription.bundleName = row.getColumn(column++).getString();
    subscription.containerName = row.getColumn(column++).getString();
    subscription.eventName = row.getColumn(column++).getString();
    subscription.expirationTime = row.getColumn(column).getInt64();
    return subscription;
}

} // namespace

std::string ListText(const std::set<std::string> &texts)
{
    Json::Value list(Json::arrayValue);
    for (const std::string &text : texts) {
        list.append(text);
    }
    return WriteJson(list);
}

const char *ScopeName(int64_t databaseType)
{
    constexpr int64_t privateDatabase = 1;
    constexpr int64_t sharedDatabase = 2;
    switch (databaseType) {
        case privateDatabase:
            return "private";
        case sharedDatabase:
            return "shared";
        default:
            return "public";
    }
}

std::optional<Subscription> SqliteRead::FindSubscription(const std::string &id)
{
    return GuardStore(connection_.Path(), [&]() -> std::optional<Subscription> {
        SQLite::Statement &find =
            connection_.Prepare("SELECT subscription_id, bundle_name, container_name, event_name, expiration_time"
                                " FROM subscription WHERE subscription_id = ?");
        ResetAtEnd reset(find);
        find.bind(1, id);
        return find.executeStep() ? std::make_optional(ReadSubscription(find)) : std::nullopt;
    });
}

std::vector<Subscription> SqliteRead::Subscriptions(
    const std::string &bundleName, const std::string &containerName, int64_t time)
{
    return GuardStore(connection_.Path(), [&] {
        SQLite::Statement &find = connection_.Prepare(
            "SELECT subscription_id, bundle_name, container_name, event_name, expiration_time FROM subscription"
            " WHERE (? = '' OR bundle_name = ?) AND (? = '' OR container_name = ?) AND expiration_time > ?"
            " ORDER BY bundle_name, container_name, event_name");
        ResetAtEnd reset(find);
        int index = 0;
        for (const std::string *name : {&bundleName, &bundleName, &containerName, &containerName}) {
            find.bind(++index, *name);
        }
        find.bind(++index, time);
        std::vector<Subscription> subscriptions;
        while (find.executeStep()) {
            subscriptions.push_back(ReadSubscription(find));
        }
        return subscriptions;
    });
}

std::vector<Notice> SqliteRead::Notices(int64_t most)
{
    return GuardStore(connection_.Path(), [&] {
        SQLite::Statement &find = connection_.Prepare(
            "SELECT s.subscription_id, s.bundle_name, s.container_name, s.event_name, s.expiration_time,"
            " n.notice_number, n.uid, n.database_scopes, n.record_types, n.prepare_trace_id"
            " FROM notice n JOIN subscription s ON s.subscription_id = n.subscription_id"
            " ORDER BY n.notice_number LIMIT ?");
        ResetAtEnd reset(find);
        find.bind(1, most);
        std::vector<Notice> notices;
        while (find.executeStep()) {
            Notice &notice = notices.emplace_back();
            notice.subscription = ReadSubscription(find);
            int column = 5;
            notice.number = find.getColumn(column++).getInt64();
            notice.uid = find.getColumn(column++).getString();
            notice.content.databaseScopes = find.getColumn(column++).getString();
            notice.content.recordTypes = find.getColumn(column++).getString();
            notice.content.prepareTraceId = find.getColumn(column).getString();
        }
        return notices;
    });
}

void SqliteWrite::PutSubscription(Subscription &subscription, int64_t time)
{
    GuardStore(connection_.Path(), [&] {
        const std::string newId = subscription.id;
        SQLite::Statement &put = connection_.Prepare(
            "INSERT INTO subscription (subscription_id, bundle_name, container_name, event_name, expiration_time)"
            " VALUES (?, ?, ?, ?, ?)"
            " ON CONFLICT (bundle_name, container_name, event_name) DO UPDATE"
            " SET subscription_id = CASE WHEN subscription.expiration_time <= ? THEN excluded.subscription_id"
            " ELSE subscription.subscription_id END, expiration_time = excluded.expiration_time");
        int index = 0;
        put.bind(++index, subscription.id);
        put.bind(++index, subscription.bundleName);
        put.bind(++index, subscription.containerName);
        put.bind(++index, subscription.eventName);
        put.bind(++index, subscription.expirationTime);
        put.bind(++index, time);
        put.exec();
        SQLite::Statement &find =
            connection_.Prepare("SELECT subscription_id FROM subscription"
                                " WHERE bundle_name = ? AND container_name = ? AND event_name = ?");
        ResetAtEnd reset(find);
        index = 0;
        find.bind(++index, subscription.bundleName);
        find.bind(++index, subscription.containerName);
        find.bind(++index, subscription.eventName);
        find.executeStep();
        subscription.id = find.getColumn(0).getString();
        // It may stand in the place of an expired one, whose notices are not for it.
        hasDroppedSubscriptions_ = hasDroppedSubscriptions_ || subscription.id == newId;
    });
}

bool SqliteWrite::DropSubscription(const std::string &id)
{
    return GuardStore(connection_.Path(), [&] {
        SQLite::Statement &drop = connection_.Prepare("DELETE FROM subscription WHERE subscription_id = ?");
        drop.bind(1, id);
        bool isDropped = drop.exec() > 0;
        hasDroppedSubscriptions_ = hasDroppedSubscriptions_ || isDropped;
        return isDropped;
    });
}

void SqliteWrite::DropExpiredSubscriptions(int64_t time)
{
    GuardStore(connection_.Path(), [&] {
        SQLite::Statement &drop = connection_.Prepare("DELETE FROM subscription WHERE expiration_time <= ?");
        drop.bind(1, time);
        hasDroppedSubscriptions_ = drop.exec() > 0 || hasDroppedSubscriptions_;
    });
}

// Goes through all notices, so it is done once for all subscriptions that were dropped.
void SqliteWrite::DropNoticesOfNobody()
{
    if (!hasDroppedSubscriptions_) {
        return;
    }
    connection_.Execute("DELETE FROM notice WHERE subscription_id NOT IN (SELECT subscription_id FROM subscription)");
}

void SqliteWrite::AddNotice(const std::string &subscriptionId, const NoticeContent &content)
{
    GuardStore(connection_.Path(), [&] {
        SQLite::Statement &add = connection_.Prepare(
            "INSERT INTO notice (notice_number, uid, subscription_id, database_scopes, record_types, prepare_trace_id)"
            " VALUES ((SELECT COALESCE(MAX(notice_number), 0) + 1 FROM notice), ?, ?, ?, ?, ?)");
        int index = 0;
        add.bind(++index, HexEncode(RandomBytes(NOTICE_UID_BYTES)));
        add.bind(++index, subscriptionId);
        add.bind(++index, content.databaseScopes);
        add.bind(++index, content.recordTypes);
        add.bind(++index, content.prepareTraceId);
        add.exec();
        hasNotices_ = true;
    });
}

void SqliteWrite::DropNotices(const std::vector<Notice> &notices)
{
    GuardStore(connection_.Path(), [&] {
        for (const Notice &notice : notices) {
            SQLite::Statement &drop = connection_.Prepare("DELETE FROM notice WHERE notice_number = ? AND uid = ?");
            drop.bind(1, notice.number);
            drop.bind(2, notice.uid);
            drop.exec();
        }
    });
}

void SqliteWrite::SetPrepareTraceId(const std::string &prepareTraceId)
{
    prepareTraceId_ = prepareTraceId;
}

void SqliteWrite::AddChangeNotices()
{
    for (const auto &changed : changedTypes_) {
        std::vector<std::string> subscriptionIds;
        std::string scopes;
        GuardStore(connection_.Path(), [&] {
            SQLite::Statement &find = connection_.Prepare(
                "SELECT s.subscription_id, d.database_type FROM subscription s JOIN cloud_database d"
                " ON d.bundle_name = s.bundle_name AND d.container_name = s.container_name"
                " WHERE d.database_id = ? ORDER BY s.subscription_id");
            ResetAtEnd reset(find);
            find.bind(1, changed.first);
            while (find.executeStep()) {
                subscriptionIds.push_back(find.getColumn(0).getString());
                scopes = ListText({ScopeName(find.getColumn(1).getInt64())});
            }
        });
        for (const std::string &subscriptionId : subscriptionIds) {
            AddNotice(subscriptionId, {scopes, ListText(changed.second), prepareTraceId_});
        }
    }
}

} // namespace DriveService
