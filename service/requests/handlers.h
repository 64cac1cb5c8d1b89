// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_REQUESTS_HANDLERS_H
#define NUBIS_SERVICE_REQUESTS_HANDLERS_H

#include <json/json.h>

#include "requests/reply.h"
#include "requests/request.h"

namespace DriveService {

// One function for each request, by the request's name. Any thread may call them, several at once. They return the
// reply's members ("code" is 0) and throw RequestError to refuse the request as a whole.

// account_requests.cpp
Json::Value GetCloudUserInfo(ServiceContext &context, const Request &request);
Json::Value GetAppState(ServiceContext &context, const Request &request);
Json::Value GetSysParameters(ServiceContext &context, const Request &request);
Json::Value GetReportInfo(ServiceContext &context, const Request &request);

// settings_requests.cpp
Json::Value GetSettings(ServiceContext &context, const Request &request);
Json::Value SetSetting(ServiceContext &context, const Request &request);

// backup_requests.cpp
Json::Value ExportData(ServiceContext &context, const Request &request);
Json::Value ImportData(ServiceContext &context, const Request &request);

// check_requests.cpp
Json::Value CheckData(ServiceContext &context, const Request &request);

// catalogue_requests.cpp
Json::Value GetCloudAppInfo(ServiceContext &context, const Request &request);
Json::Value GetCloudAppSwitches(ServiceContext &context, const Request &request);
Json::Value GetCloudAppBriefInfo(ServiceContext &context, const Request &request);
Json::Value GetAppConfigParams(ServiceContext &context, const Request &request);

// container_requests.cpp
Json::Value GetRecordIdRules(ServiceContext &context, const Request &request);
Json::Value GetServiceKey(ServiceContext &context, const Request &request);

// write_requests.cpp
Reply SaveRecords(ServiceContext &context, Request &request);
Reply DeleteRecords(ServiceContext &context, const Request &request);
Reply ModifyRecords(ServiceContext &context, Request &request);

// copy_requests.cpp
Reply CopyRecords(ServiceContext &context, const Request &request);

// share_requests.cpp
Json::Value SetPreShared(ServiceContext &context, const Request &request);

// key_requests.cpp
Json::Value GetCommonKey(ServiceContext &context, const Request &request);
Json::Value GetAccessToken(ServiceContext &context, const Request &request);

// lock_requests.cpp
Json::Value GetLock(ServiceContext &context, const Request &request);
Json::Value DeleteLock(ServiceContext &context, const Request &request);
Json::Value GetLockState(ServiceContext &context, const Request &request);

// fetch_requests.cpp
Reply FetchRecordsWithQuery(ServiceContext &context, const Request &request);
Json::Value FetchRecordWithId(ServiceContext &context, const Request &request);
Reply FetchRecordWithIds(ServiceContext &context, const Request &request);
Reply BatchDownloadRecords(ServiceContext &context, const Request &request);

// asset_requests.cpp
Json::Value FetchAssetStatusWithId(ServiceContext &context, const Request &request);
Reply BatchCreateAsset(ServiceContext &context, const Request &request);
Json::Value UpdateAssetRevision(ServiceContext &context, const Request &request);

// subscription_requests.cpp
Json::Value SaveSubscription(ServiceContext &context, const Request &request);
Json::Value DeleteSubscription(ServiceContext &context, const Request &request);
Json::Value ChangesNotify(ServiceContext &context, const Request &request);
Json::Value BatchSaveSubscription(ServiceContext &context, const Request &request);
Json::Value BatchDeleteSubscription(ServiceContext &context, const Request &request);
Json::Value GetSubscriptions(ServiceContext &context, const Request &request);

// change_requests.cpp
Reply FetchDatabaseChanges(ServiceContext &context, const Request &request);
Json::Value GetStartCursor(ServiceContext &context, const Request &request);

} // namespace DriveService

#endif // NUBIS_SERVICE_REQUESTS_HANDLERS_H
