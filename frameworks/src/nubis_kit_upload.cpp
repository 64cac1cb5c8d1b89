// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nubis_kit.h"

#include <utility>

#include <json/value.h>

#include "json_helper.h"
#include "log.h"
#include "nb_container.h"
#include "nb_database.h"

// The routing of the service's upload requests.
namespace Nubis {
namespace {
constexpr int32_t UPLOAD_OK = 0;
constexpr int32_t UPLOAD_FAILED = -1;
} // namespace

void NubisNative::SetUploadAssetCallBack(const std::string &bundleName, NBUploadAssetCallback callback)
{
    std::lock_guard<std::mutex> lock(uploadCallbackMutex_);
    uploadAssetBundleName_ = bundleName;
    // What is replaced goes with the parameter, after unlocking: it may hold objects of the caller.
    uploadAssetCallback_.swap(callback);
}

NBUploadAssetCallback NubisNative::GetUploadAssetCallBack() const
{
    std::lock_guard<std::mutex> lock(uploadCallbackMutex_);
    return uploadAssetCallback_;
}

std::string NubisNative::GetUploadAssetBundleName() const
{
    std::lock_guard<std::mutex> lock(uploadCallbackMutex_);
    return uploadAssetBundleName_;
}

int32_t NubisNative::OnUploadAsset(const std::string &request, std::string &reply)
{
    const Json::Value requestJson = JsonHelper::StringToJson(request);
    if (!requestJson.isObject()) {
        NB_LOGE("OnUploadAsset failed, request is not object, request:%{public}s", request.c_str());
        return UPLOAD_FAILED;
    }
    const std::string bundleName = JsonHelper::GetStringFromJson(requestJson, "bundleName");
    const std::string containerName = JsonHelper::GetStringFromJson(requestJson, "containerName");
    if (bundleName.empty() || containerName.empty()) {
        NB_LOGE("OnUploadAsset failed, bundlename or containername is null, bundleName:%{public}s, "
                "containerName:%{public}s",
            bundleName.c_str(), containerName.c_str());
        return UPLOAD_FAILED;
    }
    const auto container = InnerGetContainer(bundleName, containerName, DATA_KIND);
    if (container == nullptr) {
        NB_LOGE("OnUploadAsset failed, Get container failed, bundleName:%{public}s, containerName:%{public}s",
            bundleName.c_str(), containerName.c_str());
        return UPLOAD_FAILED;
    }
    const auto database = container->GetPrivateDatabase();
    if (database == nullptr) {
        NB_LOGE("OnUploadAsset failed, Get database failed, bundleName:%{public}s, containerName:%{public}s",
            bundleName.c_str(), containerName.c_str());
        return UPLOAD_FAILED;
    }
    database->ResetStopUploadFlag();
    database->OnUploadRecordAssets(requestJson, reply);
    return UPLOAD_OK;
}
} // namespace Nubis
