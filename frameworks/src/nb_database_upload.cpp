// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_database.h"

#include <json/value.h>

#include "json_helper.h"
#include "log.h"

// The targets of the service's upload requests.
namespace Nubis {
void NBDatabase::OnUploadRecordAssets(const Json::Value &recordAssets, std::string &reply)
{
    if (!recordAssets.isObject()) {
        NB_LOGI("OnUploadRecordAssets fail, recordAssets is not object");
        return;
    }
    std::string userId = JsonHelper::GetStringFromJson(recordAssets, "userId");
    const Json::Value *records = JsonHelper::FindMember(recordAssets, "records");
    if (records != nullptr && records->isArray()) {
        InnnerUploadRecordAssets(recordAssets, reply, userId);
        return;
    }
    reply = JsonHelper::JsonToString(InnerUploadOneRecordAssets(recordAssets, userId));
}

Json::Value NBDatabase::InnerUploadOneRecordAssets(const Json::Value &, const std::string &)
{
    return {};
}

void NBDatabase::InnnerUploadRecordAssets(const Json::Value &, std::string &, std::string &)
{}
} // namespace Nubis
