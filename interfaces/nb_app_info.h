// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_APP_INFO_H
#define NB_APP_INFO_H

#include <cstdint>
#include <string>
#include <vector>

#include "nb_schema.h"

namespace Nubis {
// The types below are what the service tells about the signed-in user and the apps that use the cloud database. They
// are plain values.

/// The state of an app's cloud switch. What 0, 1 and 2 stand for is the service's; the library passes them on.
enum NBAppSwitchStatus : int32_t {
    NB_APP_SWITCH_0 = 0,
    NB_APP_SWITCH_1 = 1,
    NB_APP_SWITCH_2 = 2,
    /// A value that this library does not know.
    NB_APP_SWITCH_UNKNOWN = 3,
};

/// One container of an app.
struct NBContainerInfo {
    /// The app that the container belongs to.
    std::string bundleName;
    /// Unique within its app; what NubisNative::GetContainer takes.
    std::string containerName;
    /// The name that the catalogue suggests for a local copy; the library does not use it.
    std::string databaseName;
    /// The record types; empty when the catalogue holds none that can be read.
    NBSchema schema;
    /// As the service sends it, 0 when it does not; the library passes it on.
    int32_t optimisticLock = 0;
    /// The most records that one request should carry.
    uint32_t maxBatchNumber = 10;
};

/// The catalogue entry of an app.
struct NBAppInfo {
    /// The key of the entry; never empty in what the kit hands out.
    std::string bundleName;
    /// The id of the app at the service. Stands in the create and modify infos of records.
    std::string appId;
    /// A digest that the service knows the app by; empty when it sends none.
    std::string sha256;
    /// Changes whenever the schema of some container of the app changes.
    int32_t schemaGroupVersion = 0;
    /// Whether the app may use the cloud: not 0 for yes, as the service sends it.
    int32_t enableCloud = 0;
    /// The user's switch for this app.
    NBAppSwitchStatus switchStatus = NB_APP_SWITCH_0;
    /// Whether an upload is to look at the remaining space first: as the service sends it.
    int32_t verifyRemainSpace = 1;
    /// What NubisNative::GetDefaultContainer hands out; its name is empty when the service sent none.
    NBContainerInfo defaultContainer;
    /// Further containers, to be had by name.
    std::vector<NBContainerInfo> sharedContainers;
};

/// The catalogue entry of an app without its containers.
struct NBAppBriefInfo {
    ///@{
    /// As the member of the same name in NBAppInfo.
    std::string bundleName;
    std::string appId;
    int32_t schemaGroupVersion = 0;
    int32_t enableCloud = 0;
    NBAppSwitchStatus switchStatus = NB_APP_SWITCH_0;
    int32_t verifyRemainSpace = 1;
    ///@}
};

/// How much one upload request may carry.
struct NBUploadSize {
    /// In records.
    uint32_t maxBatchNumber = 30;
    /// In bytes.
    uint32_t maxBodySize = 1572864;
};

/// The signed-in cloud user.
struct NBUserInfo {
    /// The cloud account, not the operating-system user.
    std::string userId;
    /// 0 to 4.
    int32_t cloudStatus = 0;
    /// True when remainSpace is 0, so also when the space was not asked for.
    bool isSpaceFull = false;
    /// In bytes.
    uint64_t totalSpace = 0;
    /// In bytes; 0 when the space was not asked for.
    uint64_t remainSpace = 0;
    /// Names the key of notifications; sent with subscriptions.
    std::string pushKeyId;
    /// The public key of notifications: DER in hexadecimal digits. The kit keeps it for VerifyNotificationFromJson.
    std::string pushKeyValue;
};
} // namespace Nubis

#endif // NB_APP_INFO_H
