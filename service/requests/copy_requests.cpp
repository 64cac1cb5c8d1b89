// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include <utility>

#include "records/find_live.h"
#include "records/limits.h"
#include "records/record_json.h"
#include "requests/write_support.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

// Makes the records that copy orders ask for. Orders are short and sources may be large, so what they come to together
// is bounded as if the client had sent it.
class CopyMaker {
public:
    CopyMaker(ReadSession &view, const SaveContext &save) : view_(view), save_(save)
    {}

    // The source with what the order itself gives laid over it, as a new record to be saved.
    std::optional<Failure> Make(const Json::Value &order, Json::Value &copy)
    {
        std::string sourceId = TextMember(order, SOURCE_MEMBER);
        if (sourceId.empty()) {
            return Failure(ErrorCode::INVALID_RECORD,
                "a copy order is an object with the text \"srcRecordId\", came " + DescribeJson(order), SOURCE_MEMBER);
        }
        std::string recordType = TextMember(order, "recordType");
        StoredRecord source;
        std::optional<Failure> failure = FindLive(view_, save_.databaseId, recordType, sourceId, source, SOURCE_MEMBER);
        if (failure) {
            return failure;
        }
        bytes_ += ReplyBytesOf(source);
        if (bytes_ > MAX_PARCEL_TEXT) {
            throw RequestError(ErrorCode::BATCH_TOO_LARGE,
                "the copies come to more than " + std::to_string(MAX_PARCEL_TEXT) + " bytes; copy less at a time",
                "records");
        }
        copy = order;
        copy.removeMember(SOURCE_MEMBER);
        copy["isNew"] = true;
        LayUnder(RecordToJson(source), save_.container.FindType(recordType), copy);
        return std::nullopt;
    }

private:
    static constexpr const char *SOURCE_MEMBER = "srcRecordId";

    // A field that the schema has lost since the source was written is left behind.
    static void LayUnder(Json::Value source, const RecordTypeRule *rule, Json::Value &copy)
    {
        Json::Value &data = source["record"];
        for (const std::string &name : data.getMemberNames()) {
            if (rule != nullptr && rule->FindField(name) != nullptr && !copy.isMember(name)) {
                copy[name] = std::move(data[name]);
            }
        }
        if (!copy.isMember("relations")) {
            copy["relations"] = std::move(source["relations"]);
        }
    }

    ReadSession &view_;
    const SaveContext &save_;
    size_t bytes_ = 0;
};

// Every source is as it was before the request.
std::vector<RecordOutcome> CopyIn(WriteSession &session, const SaveContext &save, const Json::Value &orders)
{
    std::vector<RecordOutcome> outcomes(orders.size());
    std::vector<Json::ArrayIndex> made;
    Json::Value copies(Json::arrayValue);
    CopyMaker maker(session.View(), save);
    for (Json::ArrayIndex i = 0; i < orders.size(); ++i) {
        Json::Value copy;
        outcomes[i].failure = maker.Make(orders[i], copy);
        if (outcomes[i].failure) {
            outcomes[i].recordId = outcomes[i].localRecordId = TextMember(orders[i], "recordId");
            outcomes[i].recordType = TextMember(orders[i], "recordType");
        } else {
            made.push_back(i);
            copies.append(std::move(copy));
        }
    }
    std::vector<RecordOutcome> saved = RecordSaver(session, save).Save(std::move(copies));
    for (size_t i = 0; i < made.size(); ++i) {
        outcomes[made[i]] = std::move(saved[i]);
    }
    return outcomes;
}

} // namespace

Reply CopyRecords(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    uint64_t count = CountBatch(request, target, {"records"});

    std::unique_ptr<WriteSession> session = BeginRecordWrite(context, request, target, count);
    // A copy never goes over a record that is there.
    SaveContext save = MakeSaveContext(context, *session, request, target, SavePolicy::IF_UNCHANGED);
    std::vector<RecordOutcome> outcomes = CopyIn(*session, save, request.Array("records"));
    session->Commit();
    session.reset();

    Reply reply = Success();
    reply.Add("records", ListOutcomes(outcomes));
    return reply;
}

} // namespace DriveService
