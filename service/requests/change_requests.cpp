// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include "query/cursor.h"
#include "query/query_parser.h"
#include "records/record_json.h"
#include "requests/fetch_fields.h"
#include "util/failure.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

// The conditions of the changes to report; changes come in the order of their sequence and no other.
std::vector<Condition> ConditionsOf(const Request &request, const RecordTypeRule *rule)
{
    std::string text = request.TextOr("queryParam", "");
    if (text.empty()) {
        return {};
    }
    if (rule == nullptr) {
        throw RequestError(
            ErrorCode::INVALID_QUERY, "changes of all record types cannot be queried; name a recordType", "queryParam");
    }
    ParsedQuery query = ParseQuery(text, *rule);
    if (!query.order.empty()) {
        throw RequestError(ErrorCode::INVALID_QUERY,
            "changes come in the order in which they were made; leave out orderBy", "orderBy");
    }
    return std::move(query.conditions);
}

const RecordTypeRule *OptionalRecordType(const Target &target, const Request &request)
{
    return request.TextOr("recordType", "").empty() ? nullptr : &FindRecordType(target, request);
}

} // namespace

Reply FetchDatabaseChanges(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    const RecordTypeRule *rule = OptionalRecordType(target, request);
    std::set<std::string> fields = WantedFields(request, target, rule);
    ChangesQuery query;
    query.recordType = rule != nullptr ? rule->recordType : "";
    query.conditions = ConditionsOf(request, rule);
    query.bounds = BoundsOf(request);
    DatabaseInfo found = FindDatabase(context, target);
    query.databaseId = found.id;

    std::unique_ptr<ReadSession> session =
        query.conditions.empty() ? context.store.BeginRead() : BeginIndexedRead(context, query.databaseId, *rule);
    // In the view that the changes are read from: the new start cursor must not skip what was written after it.
    RequireSameDatabase(*session, target, found);
    DatabaseInfo database = session->FindDatabase(target.key).value();
    std::string cursor = request.TextOr("cursor", "");
    query.after = cursor.empty() ? 0 : ReadChangeCursor(cursor, database);
    ChangesPage page = session->Changes(query);
    session.reset();

    JsonList list;
    for (const StoredRecord &record : page.records) {
        list.Append(WriteJson(RecordToJson(record, fields)));
    }
    Reply reply = Success();
    reply.Add("changes", std::move(list));
    reply["nextCursor"] = page.more ? WriteChangeCursor(database, page.records.back().sequence) : "";
    reply["newStartCursor"] = page.more ? "" : WriteChangeCursor(database, database.lastSequence);
    return reply;
}

Json::Value GetStartCursor(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    OptionalRecordType(target, request);
    DatabaseInfo database = FindDatabase(context, target);
    Json::Value reply = Success();
    reply["startCursor"] = WriteChangeCursor(database, database.lastSequence);
    return reply;
}

} // namespace DriveService
