// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_KIT_H
#define NUBIS_KIT_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <json/forwards.h>

#include "nb_app_info.h"
#include "nb_error.h"
#include "nb_subscription.h"
#include "nb_types.h"
#include "nubis_export.h"

namespace Nubis {
class DriveServiceProxy;
class NBContainer;
class NBContext;
class NBReport;

/// Serves the service's requests to upload the assets of records. The request is JSON text; 0 when it was handled, and
/// the reply, empty at first, is then sent as it stands; any other value fails the request.
///
/// Called once for each request, on a thread of the connection with no lock held, for several requests at once; the
/// service waits meanwhile. It may call the library, blocking calls and SetUploadAssetCallBack too. It must not throw:
/// an exception is logged and fails the request with -1. A call that is under way may outlast its removal.
using NBUploadAssetCallback = std::function<int(const std::string &request, std::string &reply)>;

/// The entry to the library: one instance per operating-system user, shared by every caller in the process.
///
/// It owns the connection to the cloud-drive service, caches the app catalogue, and hands out containers. Instances are
/// made at the first GetInstance of their user and live until the process ends. Any thread may call. Calls that ask the
/// service block until it has answered, failed or died.
///
/// Containers and catalogue exist in two kinds that never mix, told apart by the selector `syncType`: 0 for structured
/// data, 1 for cloud files. The file kind is open only to an instance whose sync demon is NB_SYNC_DEMON_FILE.
class NUBIS_EXPORT NubisNative : public std::enable_shared_from_this<NubisNative> {
public:
    /// The instance of the user. The first call for a user connects to the service and may take some seconds; a service
    /// that cannot be reached does not fail the call but the requests that follow.
    static std::shared_ptr<NubisNative> GetInstance(int userId);
    /// Also sets the sync demon of the instance, for everyone who shares it: the last caller wins.
    static std::shared_ptr<NubisNative> GetInstance(int userId, NBCloudSyncDemon demon);

    virtual ~NubisNative();
    NubisNative(const NubisNative &) = delete;
    NubisNative &operator=(const NubisNative &) = delete;

    ///@{
    /// Each returns the same object for the same container until it is released, and null when the catalogue of the
    /// bundle cannot be fetched, does not name the container or, for the file kind, the demon is not the file demon. A
    /// first call for a container asks the service for the catalogue, the record id rules and the service keys.
    std::shared_ptr<NBContainer> GetDefaultContainer(const std::string &bundleName);
    std::shared_ptr<NBContainer> GetDefaultFileContainer(const std::string &bundleName);
    std::shared_ptr<NBContainer> GetContainer(const std::string &bundleName, const std::string &containerName);
    std::shared_ptr<NBContainer> GetFileContainer(const std::string &bundleName, const std::string &containerName);
    ///@}

    ///@{
    /// Each drops the container from the registry after releasing its databases, and the bundle's catalogue entry, so
    /// that the next request fetches it again. Callers that still hold the container keep a released one. A default
    /// container is found through the catalogue: without an entry nothing happens.
    void ReleaseDefaultContainer(const std::string &bundleName);
    void ReleaseFileDefaultContainer(const std::string &bundleName);
    void ReleaseContainer(const std::string &bundleName, const std::string &containerName);
    void ReleaseFileContainer(const std::string &bundleName, const std::string &containerName);
    ///@}

    ///@{
    /// What the calls above do for the kind of the selector. None looks at the demon.
    std::shared_ptr<NBContainer> InnerGetDefaultContainer(const std::string &bundleName, int syncType);
    std::shared_ptr<NBContainer> InnerGetContainer(
        const std::string &bundleName, const std::string &containerName, int syncType);
    void InnerReleaseDefaultContainer(const std::string &bundleName, int syncType);
    void InnerReleaseContainer(const std::string &bundleName, const std::string &containerName, int syncType);
    ///@}
    /// Whether the catalogue names the container; asks the service when it has no entry of the bundle yet.
    bool CheckContainerName(const std::string &bundleName, const std::string &containerName, int syncType);

    /// Asks who is signed in, and keeps the push key for the verification of notifications. Without needSpaceInfo the
    /// service reports no space, which reads as full. On an error the output is as it was.
    NBError GetCloudUserInfo(NBUserInfo &userInfo, bool needSpaceInfo);
    /// Reads the reply to that request and keeps the push key; a failure of the service that the reply tells of is
    /// returned.
    NBError GetUserInfoFromJson(const Json::Value &reply, NBUserInfo &userInfo);
    /// After a sign-out: releases and drops every container and the whole catalogue.
    void ReleaseCloudUserInfo();
    /// Releases every container but keeps them and the catalogue: the same objects are handed out again.
    void CleanCloudUserInfo();

    /// NB_SYNC_DEMON_NONE until somebody has chosen one.
    NBCloudSyncDemon GetCloudSyncDemon() const;
    /// The event name under which change notifications for the current demon arrive; empty without a demon.
    std::string GetCloudSyncSaName() const;
    /// Of the last GetCloudUserInfo that succeeded; empty before.
    std::string GetPushKeyId() const;
    /// The operating-system user that the instance was asked for.
    int GetUserId() const;
    /// Always 8; nothing is inspected.
    int CheckNetConnection() const;
    /// A new reporter of sync milestones for this user and the current demon.
    std::shared_ptr<NBReport> GetReport() const;
    /// The version of the calling system service, sent with every request from now on.
    void SetSaVersion(int saVersion);

    /// Sets the callback for the service's upload requests, for everyone who shares the instance, and the bundle name
    /// that the requests are checked with: a process of this name serves them by the callback, one whose own name is not
    /// known by the callback if there is one; in any other process the databases serve them and the callback is never
    /// called. An empty function removes the callback, so that requests to a process of this name fail.
    void SetUploadAssetCallBack(const std::string &bundleName, NBUploadAssetCallback callback);
    ///@{
    /// Both as they were last set, empty when they were not.
    NBUploadAssetCallback GetUploadAssetCallBack() const;
    std::string GetUploadAssetBundleName() const;
    ///@}
    /// Hands an upload request, a JSON object with "bundleName" and "containerName", to the private database of that
    /// container of structured data, whatever the demon. 0 with the reply filled, or -1 with the reply as it was, when
    /// the request names no container or this one cannot be had. Gets the container as GetContainer does.
    int32_t OnUploadAsset(const std::string &request, std::string &reply);

    /// Sends one request, a JSON object, and fills the reply. The request itself is not changed; missing envelope
    /// members are added on the way. timeout, in seconds, ends only requests that the service answers asynchronously,
    /// below 1 none at all; for others it is the time (180 s when below 1) after which they are logged as late. At most
    /// twelve requests of a user are under way, further ones wait. Errors: local 1 when the service is not connected,
    /// local 2 when the request could not be sent or its time is over, local 11 for an empty reply (also when the
    /// service dies), a server error or local 24 when it answers with a failure. Without an answer the reply is as it
    /// was.
    NBError SendDataToCloudSrv(const Json::Value &request, Json::Value &reply, int timeout);

    ///@{
    /// Fetch the catalogue entries of the bundles into the map and into the cache. Live databases get the schema of a
    /// container whose schema version changed. On an error of the service map and cache are as they were.
    NBError GetCloudAppInfo(const std::vector<std::string> &bundleNames, std::map<std::string, NBAppInfo> &appInfos);
    NBError GetCloudFileAppInfo(
        const std::vector<std::string> &bundleNames, std::map<std::string, NBAppInfo> &appInfos);
    ///@}
    ///@{
    /// The switches of the bundles; nothing is cached.
    NBError GetCloudAppSwitches(
        const std::vector<std::string> &bundleNames, std::map<std::string, NBAppSwitchStatus> &switches);
    NBError GetCloudFileAppSwitches(
        const std::vector<std::string> &bundleNames, std::map<std::string, NBAppSwitchStatus> &switches);
    ///@}
    ///@{
    /// The same for the kind of the selector.
    NBError InnerGetCloudAppInfo(
        const std::vector<std::string> &bundleNames, std::map<std::string, NBAppInfo> &appInfos, int syncType);
    NBError InnerGetCloudAppSwitches(
        const std::vector<std::string> &bundleNames, std::map<std::string, NBAppSwitchStatus> &switches, int syncType);
    ///@}
    /// One page of all apps, appended to infos; start with index 0 and go on with nextIndex while hasMore.
    NBError GetCloudAppBriefInfo(
        int index, std::vector<NBAppBriefInfo> &infos, bool &hasMore, int &nextIndex, NBUploadSize &uploadSize);
    /// The texts among the bundle's configuration parameters, put into the map.
    NBError GetAppConfigParams(const std::string &bundleName, std::map<std::string, std::string> &params);

    /// Copies record types and schema text of a container out of the cached catalogue, nothing else; asks nobody.
    bool GetSchemaInfo(const std::string &bundleName, const std::string &containerName, NBSchema &schema, int syncType);
    /// Gives the schema to the private and the shared database of the container, if it is live.
    void UpdateDatabaseSchema(
        const std::string &bundleName, const std::string &containerName, const NBSchema &schema, int syncType);
    /// The same for every fresh container whose schema version differs from that of its cached namesake.
    void UpdateShareContainerSchema(
        const std::vector<NBContainerInfo> &cached, const std::vector<NBContainerInfo> &fresh, int syncType);

    ///@{
    /// The readers of the catalogue's JSON. What is missing or of the wrong type takes its default; malformed parts are
    /// logged and left out. None takes a lock.
    NBError GetAppInfoFromJson(const Json::Value &reply, std::map<std::string, NBAppInfo> &appInfos);
    void GetAppContainerFromJSon(const Json::Value &appJson, NBAppInfo &appInfo);
    bool GetContainerInfoFromJson(const Json::Value &containerJson, NBContainerInfo &info);
    void GetSchemaNodesFromRecord(const Json::Value &recordTypeJson, std::map<std::string, NBSchemaField> &fields);
    void GetDupCheckFieldsFromRecord(const Json::Value &recordTypeJson, std::vector<std::string> &dupCheckFields);
    void GetRelationsFromRecord(const Json::Value &recordTypeJson, std::vector<NBSchemaRelation> &relations);
    NBError GetAppSwitchsFromJson(const Json::Value &reply, std::map<std::string, NBAppSwitchStatus> &switches);
    NBError GetBriefInfoFromJson(const Json::Value &reply, std::vector<NBAppBriefInfo> &infos, bool &hasMore,
        int &nextIndex, NBUploadSize &uploadSize);
    ///@}
    /// False, with NB_FIELD_NULL, for a name that is no type.
    bool StringToRecordFieldType(const std::string &name, NBRecordFieldType &type);
    /// False, with the unknown status, for a value of 4 or more.
    bool IntToSwitchStatus(int value, NBAppSwitchStatus &status);

    ///@{
    /// Ask for, or end, many subscriptions in one request, which may take as long as the service needs. Each receiver is
    /// the current demon, as with NBContainer::SaveSubscription. The context is only handed on to the callback.
    void BatchSaveSubscription(std::shared_ptr<NBContext> context, std::vector<NBContainerSubscription> &subscriptions,
        NBBatchSubscriptionCallback callback);
    void BatchDeleteSubscription(std::shared_ptr<NBContext> context,
        std::vector<NBContainerSubscription> &subscriptions, NBBatchSubscriptionCallback callback);
    ///@}
    ///@{
    /// What the two above do on their worker task. A reply without an array of results is NB_LOCAL_BAD_DATA.
    void InnerBatchSaveSubscription(
        std::shared_ptr<NBContext> context, Json::Value request, NBBatchSubscriptionCallback callback);
    void InnerBatchDelSubscription(
        std::shared_ptr<NBContext> context, Json::Value request, NBBatchSubscriptionCallback callback);
    ///@}

    /// Whether a notification comes from the cloud side unchanged: checks its signature with the push key that
    /// GetCloudUserInfo fetched last. NB_LOCAL_BAD_NOTIFICATION when it is no object or key or signature is missing,
    /// NB_LOCAL_UNEXPECTED_REPLY when the signature is wrong. Only texts are protected: a member of another kind counts as
    /// one of empty value.
    NBError VerifyNotificationFromJson(const Json::Value &notification);
    /// Takes a notification apart, without verifying it. Names are replaced, lists and properties are added to those that
    /// the event has; what is missing or malformed is left out. Never an error.
    NBError ResolveNotificationEvent(const std::string &notification, NBRecordChangeEvent &event);
    /// The same for the parts, each a JSON text.
    NBError ResolveNotificationEvent(const std::string &databaseScopes, const std::string &recordTypes,
        const std::string &properties, const std::string &context, NBRecordChangeEvent &event);

protected:
    /// Made by GetInstance; derived by tests only.
    explicit NubisNative(int userId);

private:
    friend class NBContainer;
    friend class NBDatabase;

    // The two values of the selector.
    static constexpr int DATA_KIND = 0;
    static constexpr int FILE_KIND = 1;
    // Of the kit's own requests, in seconds.
    static constexpr int REQUEST_TIMEOUT = 60;
    // The form of signatures that the library can verify.
    static constexpr int SIGN_VERSION = 2;

    // Entries of one kind under the lock that guards them. A catalogue lock may be held while a container lock is
    // taken, never the other way round.
    template <typename Entry>
    struct Guarded {
        std::mutex mutex;
        std::map<std::string, Entry> entries;
    };
    using Containers = Guarded<std::shared_ptr<NBContainer>>;
    using AppInfos = Guarded<NBAppInfo>;

    /// The app's container of this name; null when it has none.
    static const NBContainerInfo *FindContainer(const NBAppInfo &appInfo, const std::string &containerName);
    Containers &ContainersOf(int syncType);
    AppInfos &AppInfosOf(int syncType);
    std::shared_ptr<NBContainer> FindOrCreateContainer(
        const std::string &bundleName, const std::string &containerName, int syncType);
    void DropContainer(const std::string &key, int syncType);

    /// SendDataToCloudSrv that leaves the envelope members in the request, for callers that need no copy of it.
    NBError SendInPlace(Json::Value &request, Json::Value &reply, int timeout);
    NBError JudgeReply(const std::string &replyText, const std::string &traceId, Json::Value &reply);

    /// Says in a subscription where to notify and with which key to sign; nothing without a demon.
    void AddNotificationTarget(Json::Value &subscription) const;

    Containers containers_;
    Containers fileContainers_;
    AppInfos appInfos_;
    AppInfos fileAppInfos_;
    const int32_t userId_;
    /// Null when it could not be allocated.
    DriveServiceProxy *proxy_;
    /// Atomic because GetInstance sets it without the lock below.
    std::atomic<NBCloudSyncDemon> syncDemon_{NB_SYNC_DEMON_NONE};
    mutable std::mutex userInfoMutex_;
    std::string pushKeyId_;
    /// Never null. Replaced and read atomically, because notifications are verified without the lock above.
    std::shared_ptr<const std::string> pushKeyValue_ = std::make_shared<const std::string>();
    mutable std::mutex uploadCallbackMutex_;
    NBUploadAssetCallback uploadAssetCallback_;
    std::string uploadAssetBundleName_;
    std::atomic<int32_t> saVersion_{0};
};
} // namespace Nubis

#endif // NUBIS_KIT_H
