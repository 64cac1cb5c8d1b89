// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "database_calls.h"

#include <utility>

namespace NubisTool {
namespace {

using Nubis::NBContext;
using Nubis::NBDatabase;
using Nubis::NBError;

template <typename Outcome>
using Promise = std::shared_ptr<std::promise<Outcome>>;

// Starts an operation whose callback keeps the promise; one that does not start keeps it here.
template <typename Outcome, typename Start>
std::future<Outcome> StartCall(Start &&start)
{
    auto promise = std::make_shared<std::promise<Outcome>>();
    std::future<Outcome> future = promise->get_future();
    int code = start(promise);
    if (code != 0) {
        Outcome outcome;
        outcome.error.SetLocalError(static_cast<Nubis::NBLocalErrorCode>(code));
        promise->set_value(std::move(outcome));
    }
    return future;
}

std::shared_ptr<NBContext> ContextOf(const std::string &prepareTraceId)
{
    auto context = std::make_shared<NBContext>();
    context->SetPrepareTarceId(prepareTraceId);
    return context;
}

Nubis::NBRecordsCallback KeepResults(const Promise<SaveOutcome> &promise)
{
    return [promise](std::shared_ptr<NBContext>, std::shared_ptr<NBDatabase>,
               std::shared_ptr<Nubis::NBResultMap> results, const NBError &error) {
        promise->set_value({std::move(results), error});
    };
}

void KeepResult(
    const Promise<SaveOutcome> &promise, const std::string &id, Nubis::NBRecord &record, const NBError &error)
{
    SaveOutcome outcome;
    outcome.error = error;
    outcome.results->emplace(id, Nubis::NBRecordOperResult(error, std::move(record)));
    promise->set_value(std::move(outcome));
}

} // namespace

Nubis::NBError ErrorFor(const SaveOutcome &outcome, const std::string &recordId)
{
    auto result = outcome.results->find(recordId);
    if (result != outcome.results->end()) {
        return result->second;
    }
    return outcome.error.HasError() ? outcome.error : NBError(Nubis::NB_LOCAL_UNEXPECTED_REPLY);
}

std::future<SaveOutcome> StartSave(NBDatabase &database, std::vector<Nubis::NBRecord> records,
    Nubis::NBSavePolicy policy, const std::string &prepareTraceId)
{
    return StartCall<SaveOutcome>([&](const Promise<SaveOutcome> &promise) {
        return database.SaveRecords(ContextOf(prepareTraceId), std::move(records), policy, KeepResults(promise));
    });
}

std::future<SaveOutcome> StartDelete(NBDatabase &database, std::vector<Nubis::NBRecord> records,
    Nubis::NBSavePolicy policy, const std::string &prepareTraceId)
{
    return StartCall<SaveOutcome>([&](const Promise<SaveOutcome> &promise) {
        return database.DeleteRecords(ContextOf(prepareTraceId), std::move(records), policy, KeepResults(promise));
    });
}

std::future<ModifyOutcome> StartModify(NBDatabase &database, std::vector<Nubis::NBRecord> saves,
    std::vector<Nubis::NBRecord> deletions, Nubis::NBSavePolicy policy, bool atomic)
{
    return StartCall<ModifyOutcome>([&](const Promise<ModifyOutcome> &promise) {
        auto keep = [promise](std::shared_ptr<NBContext>, std::shared_ptr<NBDatabase>,
                        std::shared_ptr<Nubis::NBResultMap> saved, std::shared_ptr<Nubis::NBResultMap> deleted,
                        const NBError &error) {
            promise->set_value({{std::move(saved), {}}, {std::move(deleted), {}}, error});
        };
        return database.ModifyRecords(
            std::make_shared<NBContext>(), std::move(saves), std::move(deletions), policy, atomic, keep);
    });
}

std::future<SaveOutcome> StartCopy(NBDatabase &database, std::vector<Nubis::NBCopyRecord> orders)
{
    return StartCall<SaveOutcome>([&](const Promise<SaveOutcome> &promise) {
        return database.CopyRecords(std::make_shared<NBContext>(), std::move(orders), KeepResults(promise));
    });
}

std::future<SaveOutcome> StartShare(NBDatabase &database, const std::string &recordType, const std::string &recordId)
{
    return StartCall<SaveOutcome>([&](const Promise<SaveOutcome> &promise) {
        auto keep = [promise, recordId](std::shared_ptr<NBContext>, std::shared_ptr<NBDatabase>,
                        Nubis::NBRecord &record,
                        const NBError &error) { KeepResult(promise, recordId, record, error); };
        return database.SetPreShared(std::make_shared<NBContext>(), recordType, recordId, keep);
    });
}

std::future<SaveOutcome> StartFetchById(NBDatabase &database, const Nubis::NBRecord &record)
{
    return StartCall<SaveOutcome>([&](const Promise<SaveOutcome> &promise) {
        auto keep = [promise](std::shared_ptr<NBContext>, std::shared_ptr<NBDatabase>, const std::string &id,
                        Nubis::NBRecord &found, const NBError &error) { KeepResult(promise, id, found, error); };
        return database.FetchRecordWithId(std::make_shared<NBContext>(), record, {}, keep);
    });
}

std::future<SaveOutcome> StartFetchByIds(NBDatabase &database, std::vector<Nubis::NBRecord> records)
{
    return StartCall<SaveOutcome>([&](const Promise<SaveOutcome> &promise) {
        return database.FetchRecordWithIds(std::make_shared<NBContext>(), std::move(records), {}, KeepResults(promise));
    });
}

std::future<PageOutcome> StartQuery(NBDatabase &database, const std::vector<std::string> &fields, Nubis::NBQuery query,
    int pageSize, const std::string &cursor)
{
    return StartCall<PageOutcome>([&](const Promise<PageOutcome> &promise) {
        auto keep = [promise](std::shared_ptr<NBContext>, std::shared_ptr<NBDatabase>,
                        std::shared_ptr<std::vector<Nubis::NBRecord>> records, std::string next, const NBError &error) {
            bool hasMore = !next.empty();
            promise->set_value({std::move(*records), std::move(next), hasMore, error});
        };
        return database.FetchRecordsWithQuery(
            std::make_shared<NBContext>(), fields, std::move(query), pageSize, cursor, keep);
    });
}

std::future<PageOutcome> StartChanges(NBDatabase &database, const std::string &recordType,
    const std::vector<std::string> &fields, int pageSize, const std::string &cursor)
{
    return StartCall<PageOutcome>([&](const Promise<PageOutcome> &promise) {
        auto keep = [promise](std::shared_ptr<NBContext>, std::shared_ptr<NBDatabase>,
                        std::shared_ptr<std::vector<Nubis::NBRecord>> records, std::string next, bool hasMore,
                        const NBError &error) {
            promise->set_value({std::move(*records), std::move(next), hasMore, error});
        };
        return database.FetchDatabaseChanges(std::make_shared<NBContext>(), recordType, fields, pageSize, cursor, keep);
    });
}

} // namespace NubisTool
