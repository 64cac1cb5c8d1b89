// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/fetch_fields.h"

#include <algorithm>
#include <sstream>

#include "query/query_parser.h"
#include "records/find_live.h"
#include "records/limits.h"
#include "util/failure.h"
#include "util/json_util.h"

namespace DriveService {

std::set<std::string> WantedFields(const Request &request, const Target &target, const RecordTypeRule *rule)
{
    std::set<std::string> wanted;
    std::istringstream names(request.TextOr("fields", ""));
    for (std::string name; std::getline(names, name, ',');) {
        const auto &types = target.container->recordTypes;
        bool known = rule != nullptr ? rule->FindField(name) != nullptr
                                     : std::any_of(types.begin(), types.end(), [&name](const auto &type) {
                                           return type.second.FindField(name) != nullptr;
                                       });
        if (!known) {
            throw RequestError(ErrorCode::UNKNOWN_FIELD,
                (rule != nullptr ? "record type \"" + rule->recordType + "\""
                                 : "container \"" + target.container->name + "\"") +
                    " has no field \"" + Excerpt(name) + "\" to fetch",
                Excerpt(name));
        }
        wanted.insert(name);
    }
    return wanted;
}

WantedRecord FetchWanted(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    const RecordTypeRule &rule = FindRecordType(target, request);
    std::set<std::string> fields = WantedFields(request, target, &rule);
    std::string recordId = request.NonEmptyText("recordId");
    DatabaseInfo database = FindDatabase(context, target);
    WantedRecord wanted{std::move(target), rule, std::move(fields), database.id, context.store.BeginRead(), {}};
    RequireSameDatabase(*wanted.session, wanted.target, database);
    std::optional<Failure> failure = FindLive(*wanted.session, database.id, rule.recordType, recordId, wanted.record);
    if (failure) {
        throw RequestError(std::move(*failure));
    }
    return wanted;
}

PageBounds BoundsOf(const Request &request)
{
    int64_t records = request.IntegerOr("pageSize", MAX_PAGE_RECORDS);
    if (records <= 0 || records > MAX_PAGE_RECORDS) {
        records = MAX_PAGE_RECORDS;
    }
    return {records, MAX_PAGE_BYTES};
}

std::unique_ptr<ReadSession> BeginIndexedRead(ServiceContext &context, int64_t databaseId, const RecordTypeRule &rule)
{
    std::vector<IndexedField> fields = IndexedFieldsOf(rule);
    // A request that began with the catalogue as it was before may index the type the old way in between.
    while (true) {
        std::unique_ptr<ReadSession> view = context.store.BeginRead();
        if (view->IsIndexed(databaseId, rule.recordType, fields)) {
            return view;
        }
        view.reset();
        std::unique_ptr<WriteSession> session = context.store.BeginWrite();
        session->EnsureIndexed(databaseId, rule.recordType, fields);
        session->Commit();
    }
}

} // namespace DriveService
