// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_ASYNC_H
#define NUBIS_ASYNC_H

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "nb_container.h"
#include "nb_database.h"
#include "nubis_async_operation.h"
#include "nubis_error_code.h"
#include "nubis_kit.h"

/// The asynchronous operations with their outcomes as named values, to be had as a future, awaited by a coroutine (where
/// the compiler has them), or handed to a function:
///
///     std::future<RecordsResult> saving = Async::SaveRecords(database, records, NB_SAVE_OVERWRITE).Start();
///     RecordsResult saved = co_await Async::SaveRecords(database, records, NB_SAVE_OVERWRITE);
///
/// Everything here is a thin form of the operation of the same name: arguments, errors and threads are as told there. It
/// keeps no state and has no thread of its own. Without a context an operation gets an empty one, so that its request has
/// trace ids.
namespace Nubis::Async {
/// The outcome of an operation on several records.
struct RecordsResult {
    /// By record id, each with its own error.
    NBResultMap results;
    /// Of the call, or of its refusal to start, which leaves the results empty.
    NBError error;
};
/// The outcome of an operation on one record.
struct RecordResult {
    /// Empty, as the result is, when there is not exactly one result.
    std::string recordId;
    /// Has an error of its own.
    NBRecordOperResult result;
    /// Of the call, or of its refusal to start.
    NBError error;
};
/// The outcome of saving and deleting with one request.
struct ModifyResult {
    ///@{
    /// By record id, each with its own error.
    NBResultMap saved;
    NBResultMap deleted;
    ///@}
    /// Of the call, or of its refusal to start, which leaves the results empty.
    NBError error;
};
/// A page of records.
struct QueryResult {
    /// With an error those that could be had, often none.
    std::vector<NBRecord> records;
    /// Of the next page; empty after the last one.
    std::string cursor;
    /// Of the call, or of its refusal to start.
    NBError error;
};
/// A page of changes.
struct ChangesResult {
    /// Tombstones among them. With an error those that could be had, often none.
    std::vector<NBRecord> records;
    /// To go on from, now or later.
    std::string cursor;
    /// More changes wait behind the cursor.
    bool hasMore = false;
    /// Of the call, or of its refusal to start.
    NBError error;
};
/// One record.
struct FetchResult {
    /// That was asked for; empty when the operation refused to start.
    std::string recordId;
    /// With an error it carries its id at most.
    NBRecord record;
    /// Of the call, or of its refusal to start.
    NBError error;
};
/// A record that was marked as shared.
struct PreSharedResult {
    /// As the service now has it; with an error it carries its id at most.
    NBRecord record;
    /// Of the call, or of its refusal to start.
    NBError error;
};
/// A subscription: the library's own type, which has an error.
using SubscriptionResult = NBSubscriptionResult;
/// The outcome of what has no other result.
struct DoneResult {
    /// Of the call, or of its refusal to start.
    NBError error;
};
/// The outcome of a batch of subscriptions.
struct BatchSubscriptionResult {
    /// In the order of the service's reply, each with its own error.
    std::vector<NBContainerSubscriptionResult> results;
    /// Of the call, or of its refusal to start, which leaves the results empty.
    NBError error;
};

namespace Detail {
using ContextPointer = std::shared_ptr<NBContext>;
using DatabasePointer = std::shared_ptr<NBDatabase>;

// start(target, continuation) starts the operation; an empty pointer of the caller's is refused.
template <typename Result, typename Target, typename Start>
Operation<Result> OperationOn(std::shared_ptr<Target> target, Start start)
{
    return Operation<Result>(
        [target = std::move(target), start = std::move(start)](std::function<void(Result)> done) mutable -> int {
            return target == nullptr ? NB_LOCAL_EMPTY_REPLY : start(*target, std::move(done));
        });
}

// The callbacks of the operations, each handing its arguments on as one result.
inline NBRecordsCallback HandResults(std::function<void(RecordsResult)> done)
{
    return [done = std::move(done)](
               ContextPointer, DatabasePointer, std::shared_ptr<NBResultMap> results, const NBError &error) {
        done({std::move(*results), error});
    };
}

inline NBSingleRecordCallback HandResult(std::function<void(RecordResult)> done)
{
    return [done = std::move(done)](
               ContextPointer, DatabasePointer, std::string recordId, NBRecordOperResult result, const NBError &error) {
        done({std::move(recordId), std::move(result), error});
    };
}

inline NBQueryCallback HandPage(std::function<void(QueryResult)> done)
{
    return [done = std::move(done)](ContextPointer, DatabasePointer, std::shared_ptr<std::vector<NBRecord>> records,
               std::string cursor, const NBError &error) {
        done({std::move(*records), std::move(cursor), error});
    };
}

inline NBChangesCallback HandChanges(std::function<void(ChangesResult)> done)
{
    return [done = std::move(done)](ContextPointer, DatabasePointer, std::shared_ptr<std::vector<NBRecord>> records,
               std::string cursor, bool hasMore, const NBError &error) {
        done({std::move(*records), std::move(cursor), hasMore, error});
    };
}

inline NBFetchCallback HandRecord(std::function<void(FetchResult)> done)
{
    return [done = std::move(done)](
               ContextPointer, DatabasePointer, std::string recordId, NBRecord &record, const NBError &error) {
        done({std::move(recordId), std::move(record), error});
    };
}

inline NBErrorCallback HandError(std::function<void(DoneResult)> done)
{
    return [done = std::move(done)](ContextPointer, const NBError &error) { done({error}); };
}

inline NBBatchSubscriptionCallback HandBatch(std::function<void(BatchSubscriptionResult)> done)
{
    return [done = std::move(done)](
               ContextPointer, const std::vector<NBContainerSubscriptionResult> &results, const NBError &error) {
        done({results, error});
    };
}
} // namespace Detail

///@{
/// NBDatabase: writing.
inline Operation<RecordsResult> SaveRecords(std::shared_ptr<NBDatabase> database, std::vector<NBRecord> records,
    NBSavePolicy policy, std::shared_ptr<NBContext> context = std::make_shared<NBContext>(),
    NBProgressCallback progress = nullptr)
{
    return Detail::OperationOn<RecordsResult>(std::move(database),
        [records = std::move(records), policy, context, progress](NBDatabase &target, auto done) mutable {
            return target.SaveRecords(
                context, std::move(records), policy, Detail::HandResults(std::move(done)), std::move(progress));
        });
}

inline Operation<RecordResult> SaveRecord(std::shared_ptr<NBDatabase> database, NBRecord record, NBSavePolicy policy,
    std::shared_ptr<NBContext> context = std::make_shared<NBContext>(), NBProgressCallback progress = nullptr)
{
    return Detail::OperationOn<RecordResult>(std::move(database),
        [record = std::move(record), policy, context, progress](NBDatabase &target, auto done) mutable {
            return target.SaveRecord(
                context, std::move(record), policy, Detail::HandResult(std::move(done)), std::move(progress));
        });
}

inline Operation<RecordsResult> DeleteRecords(std::shared_ptr<NBDatabase> database, std::vector<NBRecord> records,
    NBSavePolicy policy, std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<RecordsResult>(
        std::move(database), [records = std::move(records), policy, context](NBDatabase &target, auto done) mutable {
            return target.DeleteRecords(context, std::move(records), policy, Detail::HandResults(std::move(done)));
        });
}

inline Operation<ModifyResult> ModifyRecords(std::shared_ptr<NBDatabase> database, std::vector<NBRecord> recordsToSave,
    std::vector<NBRecord> recordsToDelete, NBSavePolicy policy, bool atomic,
    std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<ModifyResult>(std::move(database),
        [saves = std::move(recordsToSave), deletions = std::move(recordsToDelete), policy, atomic, context](
            NBDatabase &target, std::function<void(ModifyResult)> done) mutable {
            return target.ModifyRecords(context, std::move(saves), std::move(deletions), policy, atomic,
                [done = std::move(done)](auto, auto, auto saved, auto deleted, const NBError &error) {
                    done({std::move(*saved), std::move(*deleted), error});
                });
        });
}

inline Operation<RecordsResult> CopyRecords(std::shared_ptr<NBDatabase> database, std::vector<NBCopyRecord> records,
    std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<RecordsResult>(
        std::move(database), [records = std::move(records), context](NBDatabase &target, auto done) mutable {
            return target.CopyRecords(context, std::move(records), Detail::HandResults(std::move(done)));
        });
}

inline Operation<RecordResult> CopyRecord(std::shared_ptr<NBDatabase> database, NBCopyRecord record,
    std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<RecordResult>(
        std::move(database), [record = std::move(record), context](NBDatabase &target, auto done) mutable {
            return target.CopyRecord(context, std::move(record), Detail::HandResult(std::move(done)));
        });
}

inline Operation<PreSharedResult> SetPreShared(std::shared_ptr<NBDatabase> database, std::string recordType,
    std::string recordId, std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<PreSharedResult>(
        std::move(database), [recordType = std::move(recordType), recordId = std::move(recordId), context](
                                 NBDatabase &target, std::function<void(PreSharedResult)> done) {
            return target.SetPreShared(context, recordType, recordId,
                [done = std::move(done)](auto, auto, NBRecord &record, const NBError &error) {
                    done({std::move(record), error});
                });
        });
}
///@}

///@{
/// NBDatabase: reading.
inline Operation<QueryResult> FetchRecords(std::shared_ptr<NBDatabase> database, std::string recordType,
    std::vector<std::string> desiredKeys, int resultLimit, std::string cursor,
    std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<QueryResult>(
        std::move(database), [recordType = std::move(recordType), desiredKeys = std::move(desiredKeys), resultLimit,
                                 cursor = std::move(cursor), context](NBDatabase &target, auto done) {
            return target.FetchRecords(
                context, recordType, desiredKeys, resultLimit, cursor, Detail::HandPage(std::move(done)));
        });
}

inline Operation<QueryResult> FetchRecordsWithQuery(std::shared_ptr<NBDatabase> database,
    std::vector<std::string> desiredKeys, NBQuery query, int resultLimit, std::string cursor,
    std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<QueryResult>(
        std::move(database), [desiredKeys = std::move(desiredKeys), query = std::move(query), resultLimit,
                                 cursor = std::move(cursor), context](NBDatabase &target, auto done) {
            return target.FetchRecordsWithQuery(
                context, desiredKeys, query, resultLimit, cursor, Detail::HandPage(std::move(done)));
        });
}

inline Operation<FetchResult> FetchRecordWithId(std::shared_ptr<NBDatabase> database, std::string recordType,
    std::string recordId, std::vector<std::string> desiredKeys,
    std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<FetchResult>(
        std::move(database), [recordType = std::move(recordType), recordId = std::move(recordId),
                                 desiredKeys = std::move(desiredKeys), context](NBDatabase &target, auto done) {
            return target.FetchRecordWithId(
                context, recordType, recordId, desiredKeys, Detail::HandRecord(std::move(done)));
        });
}

inline Operation<FetchResult> FetchRecordWithId(std::shared_ptr<NBDatabase> database, NBRecord record,
    std::vector<std::string> desiredKeys, std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<FetchResult>(std::move(database),
        [record = std::move(record), desiredKeys = std::move(desiredKeys), context](NBDatabase &target, auto done) {
            return target.FetchRecordWithId(context, record, desiredKeys, Detail::HandRecord(std::move(done)));
        });
}

inline Operation<RecordsResult> FetchRecordWithIds(std::shared_ptr<NBDatabase> database, std::vector<NBRecord> records,
    std::vector<std::string> desiredKeys, std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<RecordsResult>(
        std::move(database), [records = std::move(records), desiredKeys = std::move(desiredKeys), context](
                                 NBDatabase &target, auto done) mutable {
            return target.FetchRecordWithIds(
                context, std::move(records), desiredKeys, Detail::HandResults(std::move(done)));
        });
}

inline Operation<ChangesResult> FetchDatabaseChanges(std::shared_ptr<NBDatabase> database, std::string recordType,
    std::vector<std::string> desiredKeys, int resultLimit, std::string cursor,
    std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<ChangesResult>(
        std::move(database), [recordType = std::move(recordType), desiredKeys = std::move(desiredKeys), resultLimit,
                                 cursor = std::move(cursor), context](NBDatabase &target, auto done) {
            return target.FetchDatabaseChanges(
                context, recordType, desiredKeys, resultLimit, cursor, Detail::HandChanges(std::move(done)));
        });
}

inline Operation<ChangesResult> FetchDatabaseChangesWithQuery(std::shared_ptr<NBDatabase> database,
    std::vector<std::string> desiredKeys, NBQuery query, int resultLimit, std::string cursor,
    std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<ChangesResult>(
        std::move(database), [desiredKeys = std::move(desiredKeys), query = std::move(query), resultLimit,
                                 cursor = std::move(cursor), context](NBDatabase &target, auto done) {
            return target.FetchDatabaseChangesWithQuery(
                context, desiredKeys, query, resultLimit, cursor, Detail::HandChanges(std::move(done)));
        });
}
///@}

///@{
/// NBContainer and NubisNative: subscriptions.
inline Operation<SubscriptionResult> SaveSubscription(std::shared_ptr<NBContainer> container,
    NBSubscription subscription, std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<SubscriptionResult>(std::move(container),
        [subscription, context](NBContainer &target, std::function<void(SubscriptionResult)> done) mutable {
            target.SaveSubscription(context, subscription,
                [done = std::move(done)](auto, auto, SubscriptionResult &result) { done(std::move(result)); });
            return NB_LOCAL_SUCCESS;
        });
}

inline Operation<DoneResult> DeleteSubscription(std::shared_ptr<NBContainer> container, std::string id,
    std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<DoneResult>(
        std::move(container), [id = std::move(id), context](NBContainer &target, auto done) {
            target.DeleteSubscription(context, id, Detail::HandError(std::move(done)));
            return NB_LOCAL_SUCCESS;
        });
}

inline Operation<DoneResult> ChangesNotify(std::shared_ptr<NBContainer> container, std::string id,
    std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<DoneResult>(
        std::move(container), [id = std::move(id), context](NBContainer &target, auto done) {
            target.ChangesNotify(context, id, Detail::HandError(std::move(done)));
            return NB_LOCAL_SUCCESS;
        });
}

inline Operation<BatchSubscriptionResult> BatchSaveSubscription(std::shared_ptr<NubisNative> kit,
    std::vector<NBContainerSubscription> subscriptions,
    std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<BatchSubscriptionResult>(
        std::move(kit), [subscriptions = std::move(subscriptions), context](NubisNative &target, auto done) mutable {
            target.BatchSaveSubscription(context, subscriptions, Detail::HandBatch(std::move(done)));
            return NB_LOCAL_SUCCESS;
        });
}

inline Operation<BatchSubscriptionResult> BatchDeleteSubscription(std::shared_ptr<NubisNative> kit,
    std::vector<NBContainerSubscription> subscriptions,
    std::shared_ptr<NBContext> context = std::make_shared<NBContext>())
{
    return Detail::OperationOn<BatchSubscriptionResult>(
        std::move(kit), [subscriptions = std::move(subscriptions), context](NubisNative &target, auto done) mutable {
            target.BatchDeleteSubscription(context, subscriptions, Detail::HandBatch(std::move(done)));
            return NB_LOCAL_SUCCESS;
        });
}
///@}
} // namespace Nubis::Async

#endif // NUBIS_ASYNC_H
