// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_CONTAINER_H
#define NB_CONTAINER_H

#include <cstdint>
#include <memory>
#include <string>

#include <json/forwards.h>

#include "nb_subscription.h"
#include "nb_types.h"
#include "nubis_export.h"

namespace Nubis {
class NBContext;
class NBDatabase;
class NubisNative;

/// One container of an application bundle, with its public, private and shared database.
///
/// The kit creates it (NubisNative::GetContainer and its kin) and keeps it in its registry; every caller that asks for
/// it gets the same object until it is released. It holds its kit strongly, and its databases refer back to it weakly:
/// a database works only as long as somebody holds its container. Any thread may call once Init has returned, which is
/// so for every container that the kit hands out.
class NUBIS_EXPORT NBContainer : public std::enable_shared_from_this<NBContainer> {
public:
    /// syncType: 0 for structured data, 1 for files. Only stores its arguments.
    NBContainer(
        std::string bundleName, std::string containerName, std::shared_ptr<NubisNative> nubis, int32_t syncType);
    virtual ~NBContainer();
    NBContainer(const NBContainer &) = delete;
    NBContainer &operator=(const NBContainer &) = delete;

    /// Creates the databases; called once, by the kit. Asks the service for the record id rules and the service keys
    /// of the private database, so it blocks for as long as these requests take. Without a kit nothing is created.
    /// Throws std::bad_weak_ptr when the container is not held by a shared pointer.
    void Init();

    ///@{
    /// The user's own database, and the one of what others share with him. Null before Init.
    std::shared_ptr<NBDatabase> GetPrivateDatabase() const;
    std::shared_ptr<NBDatabase> GetSharedDatabase() const;
    ///@}
    /// Null for a value that is no scope.
    std::shared_ptr<NBDatabase> GetDatabaseWithdatabaseScope(NBDatabaseScope scope) const;

    /// Releases the private and the shared database: they forget what they know of the user and stop uploads.
    void Release();

    ///@{
    /// The names that the container was made with; valid as long as it lives.
    const std::string &GetBundleName() const;
    const std::string &GetContainerName() const;
    ///@}
    /// Null when the container was made without one.
    std::shared_ptr<NubisNative> GetNubis() const;

    /// Asks the service to notify the current demon of the kit (NubisNative::GetCloudSyncSaName) of changes in this
    /// container until the subscription expires. A kit without a demon leaves the receiver to the service.
    void SaveSubscription(
        std::shared_ptr<NBContext> context, NBSubscription &subscription, NBSubscriptionCallback callback);
    /// Ends the subscription of this id.
    void DeleteSubscription(std::shared_ptr<NBContext> context, std::string id, NBErrorCallback callback);
    /// Asks the service to notify the subscription of this id as if the container had changed.
    void ChangesNotify(std::shared_ptr<NBContext> context, std::string id, NBErrorCallback callback);
    ///@{
    /// What the three above do on their worker task: at most 60 s, then the callback. A container without a kit sends
    /// nothing: NB_LOCAL_KIT_GONE.
    void InnerSaveSubscription(
        std::shared_ptr<NBContext> context, Json::Value request, NBSubscriptionCallback callback);
    void InnerDelSubscription(std::shared_ptr<NBContext> context, Json::Value request, NBErrorCallback callback);
    void InnerChangeNotify(std::shared_ptr<NBContext> context, Json::Value request, NBErrorCallback callback);
    ///@}

    /// Puts the trace ids of the context into the request, each only if the context has it.
    void AddTraceId(const std::shared_ptr<NBContext> &context, Json::Value &request) const;

private:
    Json::Value MakeSubscriptionRequest(const char *function) const;
    Json::Value MakeSubscriptionRequest(const char *function, const std::string &id) const;
    // Sends through the kit, which must be there.
    template <typename ReadReply>
    NBError Exchange(const Json::Value &request, ReadReply &&readReply);

    const std::shared_ptr<NubisNative> nubis_;
    // Written by Init only.
    std::shared_ptr<NBDatabase> publicDatabase_;
    std::shared_ptr<NBDatabase> privateDatabase_;
    std::shared_ptr<NBDatabase> sharedDatabase_;
    const std::string bundleName_;
    const std::string containerName_;
    const int32_t syncType_;
};
} // namespace Nubis

#endif // NB_CONTAINER_H
