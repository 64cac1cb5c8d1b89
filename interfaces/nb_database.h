// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_DATABASE_H
#define NB_DATABASE_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

#include <json/forwards.h>

#include "nb_context.h"
#include "nb_error.h"
#include "nb_record.h"
#include "nb_record_oper_result.h"
#include "nb_schema.h"
#include "nb_types.h"
#include "nb_user_key.h"
#include "nubis_export.h"

namespace ffrt {
class mutex;
}

namespace Nubis {
class NBAssetReadSession;
class NBAssetsDownloader;
class NBContainer;
class NBDatabase;
class NBReport;
class NubisNative;

/// Results and progress by record id.
using NBResultMap = std::map<std::string, NBRecordOperResult>;
using NBProgressMap = std::map<std::string, NBProgressResult>;

/// The callbacks of the asynchronous operations. Each is called exactly once, on a worker task of the library and with
/// no lock held, unless the operation returned a code other than 0: then never. They may block, call the library again
/// and drop the last reference to the database; they must not throw. The first two arguments are the caller's context
/// and the database. With an error the records are those that could be had, often none.
///
/// One result per record, by record id. A record that the service did not answer for has NB_LOCAL_UNEXPECTED_REPLY.
using NBRecordsCallback = std::function<void(
    std::shared_ptr<NBContext>, std::shared_ptr<NBDatabase>, std::shared_ptr<NBResultMap>, const NBError &)>;
/// The id and the result of the one record; both empty when there is not exactly one result.
using NBSingleRecordCallback = std::function<void(
    std::shared_ptr<NBContext>, std::shared_ptr<NBDatabase>, std::string, NBRecordOperResult, const NBError &)>;
/// The results of what was saved and of what was deleted, by record id.
using NBModifyCallback = std::function<void(std::shared_ptr<NBContext>, std::shared_ptr<NBDatabase>,
    std::shared_ptr<NBResultMap>, std::shared_ptr<NBResultMap>, const NBError &)>;
/// A page of records and the cursor of the next one, empty after the last page.
using NBQueryCallback = std::function<void(std::shared_ptr<NBContext>, std::shared_ptr<NBDatabase>,
    std::shared_ptr<std::vector<NBRecord>>, std::string, const NBError &)>;
/// A page of changes, the cursor to go on from, and whether more changes wait behind it.
using NBChangesCallback = std::function<void(std::shared_ptr<NBContext>, std::shared_ptr<NBDatabase>,
    std::shared_ptr<std::vector<NBRecord>>, std::string, bool, const NBError &)>;
/// The requested id and the record, which with an error carries only its id. The record may be moved from.
using NBFetchCallback = std::function<void(
    std::shared_ptr<NBContext>, std::shared_ptr<NBDatabase>, std::string, NBRecord &, const NBError &)>;
/// The record as the service now has it, which with an error carries only its id. It may be moved from.
using NBPreSharedCallback =
    std::function<void(std::shared_ptr<NBContext>, std::shared_ptr<NBDatabase>, NBRecord &, const NBError &)>;
/// The progress of a save: called every 10 s while the task is enabled (EnableProgressCallBack), never after the save's
/// own callback has begun. It runs under the lock of the progress registry, so it must not start a save with progress or
/// wait for one, nor enable or disable one; the next delivery of every task waits for it.
using NBProgressCallback = std::function<void(std::shared_ptr<NBContext>, std::shared_ptr<NBProgressMap>)>;

/// One database of a container.
///
/// The container owns it; callers share it. It refers to its container weakly: when the container is gone, requests fail
/// with NB_LOCAL_EMPTY_REPLY. Operations that are under way keep the database alive. It must be held by a shared
/// pointer: otherwise asynchronous operations throw std::bad_weak_ptr. Any thread may call.
///
/// An operation with a callback builds its request on the caller's thread, returns at once and sends on a worker task;
/// it returns 0 when the worker was started, else the NBLocalErrorCode of what was wrong. An empty callback is allowed.
/// The context may be null; then the request carries no trace ids of the caller. Operations without a callback block
/// until the service has answered, failed or died.
class NUBIS_EXPORT NBDatabase : public std::enable_shared_from_this<NBDatabase> {
public:
    /// syncType: the kind of the container, 0 for structured data, 1 for files. Copies the container's schema out of the
    /// cached catalogue; asks nobody.
    NBDatabase(std::shared_ptr<NBContainer> container, NBDatabaseScope scope, int syncType);
    virtual ~NBDatabase();
    NBDatabase(const NBDatabase &) = delete;
    NBDatabase &operator=(const NBDatabase &) = delete;

    /// Called once, by the container. The private database fetches its record id rules and its service keys; the others
    /// do nothing.
    void Init();
    /// Called when the container is released: as CleanUserInfo and StopUploadTask. Operations that are under way end
    /// normally.
    void Release();

    /// Writing. New records (GetNewCreate) without an id get one; when none can be made the operation returns
    /// NB_LOCAL_EMPTY_REPLY and nothing is sent. The records are moved from.
    ///
    /// Without a reply record, or when the request fails, a record's result holds the record as it was to be written.
    /// Records with equal ids share one result, the later one's.
    int SaveRecords(std::shared_ptr<NBContext> context, std::vector<NBRecord> &&records, NBSavePolicy policy,
        NBRecordsCallback callback, NBProgressCallback progressCallback = nullptr);
    /// As SaveRecords for one record.
    int SaveRecord(std::shared_ptr<NBContext> context, NBRecord &&record, NBSavePolicy policy,
        NBSingleRecordCallback callback, NBProgressCallback progressCallback = nullptr);
    /// Sends one request for each record type, types in ascending order; only type, id and what the policy looks at (the
    /// version) need be set. The callback's error is that of the last request; records of a request that failed have its
    /// error in their results. Records that the service does not answer for have none.
    int DeleteRecords(std::shared_ptr<NBContext> context, std::vector<NBRecord> &&records, NBSavePolicy policy,
        NBRecordsCallback callback);
    /// Saves and deletes in one request; atomic: all of it or nothing. What is saved has results as for SaveRecords, what
    /// is deleted as for DeleteRecords; when the request fails, a deleted record's result holds only its id and type.
    int ModifyRecords(std::shared_ptr<NBContext> context, std::vector<NBRecord> &&recordsToSave,
        std::vector<NBRecord> &&recordsToDelete, NBSavePolicy policy, bool atomic, NBModifyCallback callback);
    /// Writes new records with what the service takes from their sources. Results are kept under the id that the service
    /// gave, else a generated one, else the order's number; when the request fails, or the service does not answer for
    /// exactly the orders given (NB_LOCAL_UNEXPECTED_REPLY), under the order's own id, else as before.
    int CopyRecords(
        std::shared_ptr<NBContext> context, std::vector<NBCopyRecord> &&records, NBRecordsCallback callback);
    /// As CopyRecords for one order.
    int CopyRecord(std::shared_ptr<NBContext> context, NBCopyRecord &&record, NBSingleRecordCallback callback);
    /// Marks a record as shared in advance.
    int SetPreShared(
        std::shared_ptr<NBContext> context, std::string recordType, std::string recordId, NBPreSharedCallback callback);

    /// Reading. desiredKeys names the fields to read; empty reads all. resultLimit is the size of a page in records, as
    /// the service understands it. An empty cursor starts at the beginning.
    int FetchRecords(std::shared_ptr<NBContext> context, std::string recordType,
        const std::vector<std::string> &desiredKeys, int resultLimit, std::string cursor, NBQueryCallback callback);
    /// As FetchRecords for the records that pass the query, in its orderings. A cursor belongs to its query.
    int FetchRecordsWithQuery(std::shared_ptr<NBContext> context, const std::vector<std::string> &desiredKeys,
        NBQuery query, int resultLimit, std::string cursor, NBQueryCallback callback);
    /// One live record. A deleted one, or none, is an error of the service.
    int FetchRecordWithId(std::shared_ptr<NBContext> context, std::string recordType, std::string recordId,
        const std::vector<std::string> &desiredKeys, NBFetchCallback callback);
    /// Takes type, id and owner from the record.
    int FetchRecordWithId(std::shared_ptr<NBContext> context, const NBRecord &record,
        const std::vector<std::string> &desiredKeys, NBFetchCallback callback);
    /// Sends one request for each record type, types in ascending order. The callback's error is that of the last one;
    /// records of a request that failed have its error in their results.
    int FetchRecordWithIds(std::shared_ptr<NBContext> context, std::vector<NBRecord> &&records,
        const std::vector<std::string> &desiredKeys, NBRecordsCallback callback);
    /// Reads a page of what has changed since the cursor, tombstones (GetIsDelete) included, in the order of the
    /// changes; a record that changed several times is there once, as it is now. An empty cursor reads everything from
    /// the beginning, an empty recordType the records of all types.
    int FetchDatabaseChanges(std::shared_ptr<NBContext> context, std::string recordType,
        const std::vector<std::string> &desiredKeys, int resultLimit, std::string cursor, NBChangesCallback callback);
    /// The same for records that pass the query. A record that a change takes out of the query is not reported.
    int FetchDatabaseChangesWithQuery(std::shared_ptr<NBContext> context, const std::vector<std::string> &desiredKeys,
        NBQuery query, int resultLimit, std::string cursor, NBChangesCallback callback);
    /// The cursor from which FetchDatabaseChanges reports what happens from now on. On an error cursor is as it was.
    NBError GetStartCursor(std::shared_ptr<NBContext> context, std::string recordType, std::string &cursor);
    /// As above, without a context.
    NBError GetStartCursor(std::string recordType, std::string &cursor);

    /// Record ids, made here by the rules that the service gave for the container.
    ///
    /// Asks the service for the rules and keeps them.
    NBError GetRecordIdRules();
    /// A new id; a key that is not empty is carried in it. Fetches the rules if there are none. Empty on failure.
    std::string GenerateId(const std::string &key);
    /// Append ids to the vector; at the first failure NB_LOCAL_EMPTY_REPLY, keeping those made so far.
    NBError GenerateIds(int count, std::vector<std::string> &ids);
    /// As GenerateIds, one id for each key; the ids carry their keys.
    NBError GenerateIdsWithKey(const std::vector<std::string> &keys, std::vector<std::string> &ids);
    /// The container's root record id; always asks the service.
    NBError GetRootId(std::string &rootId);

    /// The lock, which keeps others from writing. While the database holds a session, every request for records carries
    /// it. Taking or deleting a lock while operations are being started on other threads is the caller's concern.
    ///
    /// Takes the lock, or renews it when `lock` names the session that holds it. On success `lock` and the database have
    /// the session, else both are as they were.
    NBError GetLock(std::shared_ptr<NBContext> context, NBLock &lock);
    /// As above, without a context.
    NBError GetLock(NBLock &lock);
    /// Gives the lock back. The database forgets its session when that was the lock's, and on every failure.
    NBError DeleteLock(std::shared_ptr<NBContext> context, NBLock lock);
    /// As above, without a context.
    NBError DeleteLock(NBLock lock);

    /// A key that the service keeps for the two types, and a token for the container. Empty on failure.
    std::string GetCommonKey(int dataType, int keyType);
    /// An access token for the container, to be used until the service gives another. Empty on failure.
    std::string GetAT();

    /// The service keys of the private database. A fetch that failed, or was for another user than the given one (empty
    /// accepts any), is repeated first. An empty record when there are no keys.
    std::shared_ptr<UserKey> GetUserKey(const std::string &userId);
    /// Asks the service for the keys and keeps them; a failure is only logged.
    void GetServiceKey();
    /// Checks the keys of a reply and keeps them; ends at the first one that is wrong.
    void ParseServiceKey(const Json::Value &reply);

    /// The operating-system user of the kit; -1 when the container is gone.
    int GetUserId() const;
    ///@{
    /// The names of the container that the database belongs to.
    std::string GetAppBundleName() const;
    std::string GetContainerName() const;
    ///@}
    /// Empty when no lock is held.
    std::string GetLockSessionId() const;
    /// NB_SYNC_DEMON_NONE when the container is gone.
    NBCloudSyncDemon GetNubisSyncDemon() const;
    /// A new reporter of sync milestones, for the user and the demon that the two above tell.
    std::shared_ptr<NBReport> GetReport() const;
    /// Forgets what is known of the user: the rules, the keys and the lock are to be fetched again.
    void CleanUserInfo();
    /// Raises the flag that ResetStopUploadFlag reads; uploads that the application does should end when it is up.
    void StopUploadTask();
    /// Whether StopUploadTask was called since the last reset.
    bool ResetStopUploadFlag();
    /// Always null: the library offers no download of assets.
    std::shared_ptr<NBAssetsDownloader> GetAssetsDownloader();
    /// Always null: the library does not read the contents of assets.
    std::shared_ptr<NBAssetReadSession> NewAssetReadSession(
        std::string recordType, std::string recordId, std::string fieldName, std::string assetId);
    ///@{
    /// The targets of the service's requests to upload the assets of records. The library uploads none: a request with
    /// an array of "records" leaves the reply as it was, as does one that is no object; any other gets the text "null".
    void OnUploadRecordAssets(const Json::Value &recordAssets, std::string &reply);
    Json::Value InnerUploadOneRecordAssets(const Json::Value &recordAssets, const std::string &userId);
    void InnnerUploadRecordAssets(const Json::Value &recordAssets, std::string &reply, std::string &userId);
    ///@}
    /// From now on replies are read with a copy of this schema.
    void UpdateSchema(const NBSchema &schema);

    /// Puts the trace ids of the context into the request, fresh ones where the context has none. Null does nothing.
    void AddTraceId(const std::shared_ptr<NBContext> &context, Json::Value &request) const;
    /// As NubisNative::SendDataToCloudSrv, with the sync demon put into the request first.
    NBError SendDataToCloudSrv(Json::Value &request, Json::Value &reply, int timeout);

    /// Progress of saves, by the task id that the request of the save carries as "taskId": its prepare trace id followed
    /// by its trace id, as GetTaskIdBySendData reads them, or a new id when it has neither. Deliveries begin with the
    /// first Enable and stop when as many Disable calls have followed. All databases of the process share one registry
    /// and one timer. SaveRecords adds and removes.
    static std::string GetTaskIdBySendData(const Json::Value &request);
    /// Enters the task, or replaces its callback, and starts the timer. The map is handed to the callback as it is
    /// then.
    static void AddProgressCallBack(const std::string &taskId, NBProgressCallback callback,
        std::shared_ptr<NBContext> context, std::shared_ptr<NBProgressMap> progress);
    /// Takes the task out; a delivery that is under way is waited for. The timer ends with the last task.
    static void RemoveProgressCallBack(const std::string &taskId);
    ///@{
    /// Begins or ends the deliveries of a task; calls are counted. A task that is not there is only logged.
    static void EnableProgressCallBack(const std::string &taskId);
    static void DisableProgressCallBack(const std::string &taskId);
    ///@}
    ///@{
    /// The timer of all tasks, each 10 s; starting a running one, or stopping a stopped one, does nothing.
    /// AddProgressCallBack and RemoveProgressCallBack see to it; TimerProgressFunc is its tick and ignores its
    /// argument.
    static void StartProgressTimer();
    static void StopProgressTimer();
    static void TimerProgressFunc(void *data);
    ///@}

    ///@{
    /// The worker halves of the operations above. Each blocks until the service has answered its request, then calls
    /// back on the same thread. The results and records that are passed in, never null, are filled and handed to the
    /// callback.
    using RecordList = std::shared_ptr<std::vector<NBRecord>>;
    using RecordsByType = std::map<std::string, std::vector<NBRecord>>;
    void InnerSaveRecords(std::shared_ptr<NBContext> context, Json::Value request, std::shared_ptr<NBResultMap> results,
        NBRecordsCallback callback);
    void InnerDeleteRecords(std::shared_ptr<NBContext> context, std::shared_ptr<NBResultMap> results,
        RecordsByType groups, NBSavePolicy policy, NBRecordsCallback callback);
    void InnerModifyRecords(std::shared_ptr<NBContext> context, Json::Value request,
        std::shared_ptr<NBResultMap> savedResults, NBModifyCallback callback);
    void InnerCopyRecords(std::shared_ptr<NBContext> context, Json::Value request, std::shared_ptr<NBResultMap> results,
        std::vector<NBCopyRecord> orders, NBRecordsCallback callback);
    void InnerSetPreShared(
        std::shared_ptr<NBContext> context, Json::Value request, NBRecord record, NBPreSharedCallback callback);
    void InnerFetchRecordWithQuery(
        std::shared_ptr<NBContext> context, Json::Value request, RecordList records, NBQueryCallback callback);
    void InnerFetchDatabaseChanges(
        std::shared_ptr<NBContext> context, Json::Value request, RecordList records, NBChangesCallback callback);
    void InnerFetchRecordWithId(
        std::shared_ptr<NBContext> context, Json::Value request, NBRecord record, NBFetchCallback callback);
    void InnerFetchRecordWithIds(std::shared_ptr<NBContext> context, Json::Value request,
        std::shared_ptr<NBResultMap> results, RecordsByType groups, NBRecordsCallback callback);
    ///@}
    /// Reads the service's answer for one record and keeps it under the record's id; without an id or a map it is
    /// dropped.
    void InsertRecordOperResult(const Json::Value &request, const Json::Value &reply, const Json::Value &replyRecord,
        const std::shared_ptr<NBResultMap> &results);
    /// Gives every record of an array of records as they were sent, if it is one and there is a map, a result that holds
    /// the error and the record's id and type.
    static void InsertDelRecordResult(
        const Json::Value &records, const std::shared_ptr<NBResultMap> &results, const NBError &error);
    /// Sends an O&M event about the result of a record, or of the whole request, if it is an error. May ask the service
    /// where to report to, so never under a lock that a reply needs.
    void ReportOmRecordResult(const Json::Value &request, const Json::Value &reply, const Json::Value &replyRecord,
        const NBError &result) const;

private:
    enum FetchedFlag : uint32_t {
        RULES_FETCHED = 1,
        SERVICE_KEY_FETCHED = 2,
    };

    std::shared_ptr<NubisNative> GetKit() const;
    // A request with "function", "bundleName" and "containerName".
    Json::Value MakeRequest(const char *function) const;
    // The same with "lockSessionId" and "databaseType".
    Json::Value MakeRecordRequest(const char *function) const;
    Json::Value MakeChangesRequest(const std::shared_ptr<NBContext> &context, const std::string &recordType,
        const std::vector<std::string> &desiredKeys, int resultLimit, const std::string &cursor) const;
    Json::Value MakeFetchRequest(const std::shared_ptr<NBContext> &context, const std::string &recordType,
        const std::string &recordId, const std::vector<std::string> &desiredKeys) const;
    // Types in ascending order, records in the order given.
    static RecordsByType GroupByType(std::vector<NBRecord> &&records);
    template <typename... Parameters, typename... Arguments>
    void StartWorker(void (NBDatabase::*inner)(Parameters...), Arguments &&...arguments);
    template <typename ReadReply>
    NBError Exchange(Json::Value &request, int timeout, ReadReply &&readReply);
    template <typename FillRequest>
    NBError SendGroups(Json::Value &request, RecordsByType &groups, const std::shared_ptr<NBResultMap> &results,
        FillRequest &&fillRequest);

    int AddRecordToSave(NBRecord &&record, Json::Value &recordArray, NBResultMap &results, std::string &recordId);
    void ReadSavedRecords(
        const Json::Value &request, const Json::Value &reply, const Json::Value &replyRecords, NBResultMap &results);
    // Gives every record the error of the call, if there is one.
    static void SetErrors(const NBError &error, NBResultMap &results);
    void ParseOperResult(const Json::Value &replyRecord, NBRecordOperResult &result);
    void ReadRecords(const Json::Value &replyRecords, std::vector<NBRecord> &records);
    NBError FetchRecord(Json::Value &request, NBRecord &record);
    void ReadRecordReply(const Json::Value &reply, NBRecord &record, NBError &error);
    void ReadCopyReply(const Json::Value &request, const Json::Value &reply, const std::vector<NBCopyRecord> &orders,
        NBResultMap &results, NBError &error);
    // The id, or when it is empty a new one, or when there is none the number.
    std::string ResultKey(std::string recordId, size_t number);
    void SetLockSessionId(const std::string &lockSessionId);

    // Both with serviceKeyMutex_ held.
    void FetchServiceKey();
    void StoreServiceKeys(const Json::Value &reply);
    bool StoreServiceKey(const Json::Value &keyJson);

    // Constant after construction.
    const std::weak_ptr<NBContainer> container_;
    const NBDatabaseScope scope_;
    const int syncType_;
    std::string bundleName_;
    std::string containerName_;

    mutable std::shared_mutex schemaMutex_;
    NBSchema schema_;

    mutable std::mutex lockSessionMutex_;
    std::string lockSessionId_;

    // Held while a request is sent, so it must be one that a task may keep over a wait.
    const std::unique_ptr<ffrt::mutex> serviceKeyMutex_;
    std::shared_ptr<UserKey> serviceKey_;

    mutable std::mutex recordIdRulesMutex_;
    uint32_t ruleId_ = 0;
    uint64_t upid_ = 0;
    std::string localRule_;
    std::string rootId_;

    // The FetchedFlag bits; one variable, so that a clean clears both at once.
    std::atomic<uint32_t> fetched_{0};
    std::atomic<bool> stopUpload_{false};
};

/// Adapt a callback for one record to an operation on many. A single result is moved out of the map.
NUBIS_EXPORT NBRecordsCallback RecordsToRecordCallback(NBSingleRecordCallback callback);
NUBIS_EXPORT NBRecordsCallback CopyRecordsToRecordCallback(NBSingleRecordCallback callback);
} // namespace Nubis

#endif // NB_DATABASE_H
