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

// The state of an app's cloud switch. What 0, 1 and 2 stand for is the service's; the library passes them on.
enum NBAppSwitchStatus : int32_t {
    NB_APP_SWITCH_0 = 0,
    NB_APP_SWITCH_1 = 1,
    NB_APP_SWITCH_2 = 2,
    // A value that this library does not know.
    NB_APP_SWITCH_UNKNOWN = 3,
};

// One container of an app.
struct NBContainerInfo {
    std::string bundleName;
    std::string containerName;
    std::string databaseName;
    NBSchema schema;
    int32_t optimisticLock = 0;
    // The most records that one request should carry.
    uint32_t maxBatchNumber = 10;
};

// The catalogue entry of an app.
struct NBAppInfo {
    std::string bundleName;
    std::string appId;
    std::string sha256;
    // Changes whenever the schema of some container of the app changes.
    int32_t schemaGroupVersion = 0;
    int32_t enableCloud = 0;
    NBAppSwitchStatus switchStatus = NB_APP_SWITCH_0;
    int32_t verifyRemainSpace = 1;
    NBContainerInfo defaultContainer;
    std::vector<NBContainerInfo> sharedContainers;
};

// The catalogue entry of an app without its containers.
struct NBAppBriefInfo {
    std::string bundleName;
    std::string appId;
    int32_t schemaGroupVersion = 0;
    int32_t enableCloud = 0;
    NBAppSwitchStatus switchStatus = NB_APP_SWITCH_0;
    int32_t verifyRemainSpace = 1;
};

// How much one upload request may carry.
struct NBUploadSize {
    uint32_t maxBatchNumber = 30;
    // In bytes.
    uint32_t maxBodySize = 1572864;
};

// The signed-in cloud user.
struct NBUserInfo {
    std::string userId;
    // 0 to 4.
    int32_t cloudStatus = 0;
    // True when remainSpace is 0, so also when the space was not asked for.
    bool isSpaceFull = false;
    // In bytes.
    uint64_t totalSpace = 0;
    uint64_t remainSpace = 0;
    std::string pushKeyId;
    std::string pushKeyValue;
};
} // namespace Nubis

#endif // NB_APP_INFO_H
