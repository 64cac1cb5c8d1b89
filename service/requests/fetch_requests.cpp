// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include "query/cursor.h"
#include "query/query_parser.h"
#include "records/find_live.h"
#include "records/limits.h"
#include "records/record_json.h"
#include "requests/fetch_fields.h"
#include "util/json_util.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

// The records that the request names, one element for each, in its order. With a rule they are all of its type, without
// one each element names its type.
Reply FetchNamed(ServiceContext &context, const Request &request, const Target &target, const RecordTypeRule *rule)
{
    std::set<std::string> fields = WantedFields(request, target, rule);
    const Json::Value &wanted = request.Array("records");
    if (wanted.size() > MAX_FETCHED_IDS) {
        throw RequestError(ErrorCode::BATCH_TOO_LARGE,
            "the request names " + std::to_string(wanted.size()) + " records, at most " +
                std::to_string(MAX_FETCHED_IDS) + " are answered at once",
            "records");
    }
    DatabaseInfo database = FindDatabase(context, target);
    std::unique_ptr<ReadSession> session = context.store.BeginRead();
    RequireSameDatabase(*session, target, database);
    JsonList list;
    size_t bytes = 0;
    for (const Json::Value &item : wanted) {
        std::string recordId = TextMember(item, "recordId");
        std::string recordType = rule != nullptr ? rule->recordType : TextMember(item, "recordType");
        StoredRecord record;
        std::optional<Failure> failure;
        if (recordId.empty()) {
            failure = Failure(ErrorCode::INVALID_RECORD,
                "a record to fetch is an object with the text \"recordId\", came " + DescribeJson(item), "recordId");
        } else if (target.container->FindType(recordType) == nullptr) {
            failure = UnknownRecordType(target, recordType);
        } else {
            failure = FindLive(*session, database.id, recordType, recordId, record);
        }
        if (!failure && bytes + ReplyBytesOf(record) > MAX_ECHOED_BYTES) {
            failure = Failure(ErrorCode::REPLY_TOO_LARGE,
                "record \"" + Excerpt(recordId) + "\" does not fit into this reply; fetch it with another request",
                "records");
        }
        if (failure) {
            list.Append(WriteJson(RecordFailureToJson(*failure, recordId, recordId, recordType)));
        } else {
            bytes += ReplyBytesOf(record);
            list.Append(WriteJson(RecordToJson(record, fields)));
        }
    }
    Reply reply = Success();
    reply.Add("records", std::move(list));
    return reply;
}

} // namespace

Reply FetchRecordsWithQuery(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    const RecordTypeRule &rule = FindRecordType(target, request);
    std::set<std::string> fields = WantedFields(request, target, &rule);
    std::string queryText = request.TextOr("queryParam", "");
    ParsedQuery parsed = ParseQuery(queryText, rule);
    DatabaseInfo database = FindDatabase(context, target);

    RecordQuery query{database.id, rule.recordType, std::move(parsed.conditions), std::move(parsed.order), {}, {}};
    query.bounds = BoundsOf(request);
    // A cursor holds values of the query's sort keys, so it means nothing for another query.
    std::string identity = rule.recordType + "?" + queryText;
    std::string cursor = request.TextOr("cursor", "");
    if (!cursor.empty()) {
        query.after = ReadQueryCursor(cursor, database, identity, query.order);
    }
    std::unique_ptr<ReadSession> session = BeginIndexedRead(context, database.id, rule);
    RequireSameDatabase(*session, target, database);
    QueryPage page = session->Query(query);
    session.reset();

    JsonList list;
    for (const StoredRecord &record : page.records) {
        list.Append(WriteJson(RecordToJson(record, fields)));
    }
    Reply reply = Success();
    reply.Add("records", std::move(list));
    reply["nextCursor"] = page.next ? WriteQueryCursor(database, identity, *page.next) : "";
    return reply;
}

Json::Value FetchRecordWithId(ServiceContext &context, const Request &request)
{
    WantedRecord wanted = FetchWanted(context, request);
    wanted.session.reset();
    return RecordToJson(wanted.record, wanted.fields);
}

Reply FetchRecordWithIds(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    return FetchNamed(context, request, target, &FindRecordType(target, request));
}

Reply BatchDownloadRecords(ServiceContext &context, const Request &request)
{
    return FetchNamed(context, request, FindTarget(context, request), nullptr);
}

} // namespace DriveService
