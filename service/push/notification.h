// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_PUSH_NOTIFICATION_H
#define NUBIS_SERVICE_PUSH_NOTIFICATION_H

#include <functional>
#include <string>

#include "store/store_types.h"

namespace DriveService {

// The text that is pushed for a notice: a JSON object of texts.
//
//   "data"           JSON text {"accountId", "bundleName", "containerName", "databaseScopes", "recordTypes", "properties",
//                    "context"}; the last four are JSON texts themselves
//   "keyId"          of the push key
//   "notifyId"       the same when the notice is sent again
//   "signV2"         the signature of all members but this and the next, as NAME=VALUE in ascending order of the names,
//                    joined by '&'
//   "x-ov-trace-id"  for logs
//
// `sign` makes the signature of a text.
std::string MakeNotification(const Notice &notice, const std::string &accountId, const std::string &keyId,
    const std::function<std::string(const std::string &)> &sign);

} // namespace DriveService

#endif // NUBIS_SERVICE_PUSH_NOTIFICATION_H
