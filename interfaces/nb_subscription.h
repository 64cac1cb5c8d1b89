// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_SUBSCRIPTION_H
#define NB_SUBSCRIPTION_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <json/forwards.h>

#include "nb_error.h"
#include "nb_types.h"
#include "nubis_export.h"

namespace Nubis {
class NBContainer;
class NBContext;

// The types below are plain values. Times of expiry are the service's: the library passes them on without looking at
// them.

/// What is asked for with NBContainer::SaveSubscription.
struct NBSubscription {
    /// The expiry that is asked for.
    int64_t expirationTime = 0;
};

/// What came of it. With an error only the error means something.
struct NBSubscriptionResult {
    /// Of the call.
    NBError error;
    /// Names the subscription in later requests.
    std::string id;
    /// The expiry that was granted, which may differ from the one asked for.
    int64_t expirationTime = 0;
};

/// One subscription of a batch: what is asked for when saving (the id is then not looked at), what is to go when deleting
/// (the expiry is then not looked at).
struct NBContainerSubscription {
    ///@{
    /// The container, and as the case is the subscription or the expiry.
    std::string bundleName;
    std::string containerName;
    std::string id;
    int64_t expirationTime = 0;
    ///@}
};

/// What came of one subscription of a batch.
struct NUBIS_EXPORT NBContainerSubscriptionResult {
    /// Fills the result from one item of a batch's reply. A failed item has an error and the names, another one id and
    /// expiry as well; what is missing or of the wrong type takes its default. A failure without a description is
    /// NB_LOCAL_UNEXPECTED_REPLY. Accepts every value.
    void ParseFromJsonValue(const Json::Value &item);

    /// Of this item only.
    NBError error;
    ///@{
    /// The names of the item, so that it can be told from the others.
    std::string bundleName;
    std::string containerName;
    ///@}
    ///@{
    /// As in NBSubscriptionResult.
    std::string id;
    int64_t expirationTime = 0;
    ///@}
};

/// What a notification tells: something of these databases and record types of the container has changed.
struct NBRecordChangeEvent {
    /// The cloud account whose data has changed.
    std::string accountId;
    ///@{
    /// The container that has changed.
    std::string bundleName;
    std::string containerName;
    ///@}
    /// The private and the shared database, as named.
    std::vector<NBDatabaseScope> databaseScopes;
    /// In the order of the notification.
    std::vector<std::string> recordTypes;
    /// Carried for the application.
    std::map<std::string, std::string> properties;
    /// Of the user action that led to the change; empty when the notification names none.
    std::string prepareTraceId;
};

// All callbacks below run once, on the worker task of their call, with no lock held, and never before their call has
// started that task. They get the context of the call. An empty callback is left out; the request is sent all the same.

/// The container is the one that was asked. The result may be moved from.
using NBSubscriptionCallback =
    std::function<void(std::shared_ptr<NBContext>, std::shared_ptr<NBContainer>, NBSubscriptionResult &)>;
using NBErrorCallback = std::function<void(std::shared_ptr<NBContext>, const NBError &)>;
/// One result for each item of the service's reply, in its order; none when the call as a whole failed. Items may have
/// errors of their own when the call has none.
using NBBatchSubscriptionCallback = std::function<void(
    std::shared_ptr<NBContext>, const std::vector<NBContainerSubscriptionResult> &, const NBError &)>;
} // namespace Nubis

#endif // NB_SUBSCRIPTION_H
