// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_callback_stub.h"

#include <json/value.h>

#include "json_helper.h"
#include "log.h"
#include "nb_container.h"
#include "nb_database.h"
#include "process_helper.h"

// The service's requests to upload the assets of records.
namespace Nubis {
namespace {
constexpr int32_t UPLOAD_OK = 0;
constexpr int32_t UPLOAD_FAILED = -1;

// Delivers the progress of the task that a request belongs to, as long as its upload runs.
class ProgressDelivery {
public:
    explicit ProgressDelivery(const Json::Value &request) : taskId_(JsonHelper::GetStringFromJson(request, "taskId"))
    {
        if (taskId_.empty()) {
            taskId_ = NBDatabase::GetTaskIdBySendData(request);
        }
        NBDatabase::EnableProgressCallBack(taskId_);
    }
    ~ProgressDelivery()
    {
        NBDatabase::DisableProgressCallBack(taskId_);
    }
    ProgressDelivery(const ProgressDelivery &) = delete;
    ProgressDelivery &operator=(const ProgressDelivery &) = delete;

private:
    std::string taskId_;
};
} // namespace

int32_t DriveCallbackStub::OnUploadRecordAssets(const Json::Value &request, std::string &reply)
{
    const std::string bundleName = JsonHelper::GetStringFromJson(request, "bundleName");
    const std::string containerName = JsonHelper::GetStringFromJson(request, "containerName");
    if (bundleName.empty() || containerName.empty()) {
        NB_LOGE("on upload record assets failed, bundlename or containername is null, bundleName:%{public}s, "
                "containerName:%{public}s",
            bundleName.c_str(), containerName.c_str());
        return UPLOAD_FAILED;
    }
    const auto kit = NubisNative::GetInstance(userId_);
    if (kit == nullptr) {
        return UPLOAD_FAILED;
    }
    const std::string processName = ProcessHelper::GetCurProcessName();
    const bool isOwner = !processName.empty() && processName == kit->GetUploadAssetBundleName();
    if (processName.empty()) {
        NB_LOGE("on upload record assets processName is empty");
    }
    if (processName.empty() || isOwner) {
        const auto callback = kit->GetUploadAssetCallBack();
        if (callback != nullptr) {
            return UploadByCallback(callback, request, reply);
        }
    }
    if (isOwner) {
        NB_LOGE("on upload record assets failed, no upload asset call back function");
        return UPLOAD_FAILED;
    }
    const auto container = kit->GetFileContainer(bundleName, containerName);
    const auto database = container == nullptr ? nullptr : container->GetPrivateDatabase();
    if (database == nullptr) {
        return UPLOAD_FAILED;
    }
    database->OnUploadRecordAssets(request, reply);
    return UPLOAD_OK;
}

int32_t DriveCallbackStub::UploadByCallback(
    const NBUploadAssetCallback &callback, const Json::Value &request, std::string &reply)
{
    const ProgressDelivery delivery(request);
    return callback(JsonHelper::JsonToString(request), reply);
}
} // namespace Nubis
