// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_REQUESTS_REQUEST_H
#define NUBIS_SERVICE_REQUESTS_REQUEST_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <json/json.h>

#include "account/push_key.h"
#include "catalogue/catalogue.h"
#include "requests/client_callback.h"
#include "store/store.h"
#include "util/failure.h"

namespace DriveService {

class Notifier;

// What all requests work on. Lives as long as the service; the parts look after their own threads.
struct ServiceContext {
    Store &store;
    Catalogue &catalogue;
    PushKey &pushKey;
    Notifier &notifier;
    std::string dataFolder;
    std::function<int64_t()> nowMs; // since the epoch
};

// One request while it is answered. Its readers throw RequestError (INVALID_ARGUMENT) that names the member when one
// is missing or of the wrong type. The callback must outlive it.
class Request {
public:
    Request(Json::Value json, std::string deviceName, const ClientCallback *callback)
        : json_(std::move(json)), deviceName_(std::move(deviceName)), callback_(callback)
    {}

    std::string Text(const char *name) const;                             // required, may be empty
    std::string NonEmptyText(const char *name) const;                     // required
    std::string TextOr(const char *name, const std::string &other) const; // null and absent: the other
    int64_t Integer(const char *name, int64_t least, int64_t most) const;
    int64_t IntegerOr(const char *name, int64_t other) const;
    bool BooleanOr(const char *name, bool other) const;
    const Json::Value &Array(const char *name) const; // required
    Json::Value TakeArray(const char *name);          // the same; the request is left with an empty one
    const Json::Value *Find(const char *name) const;  // of any type; null when it is absent
    std::vector<std::string> Texts(const char *name, size_t most) const;

    // The user action that led to the request; may be empty. It stands in every notification of what the request
    // changes, so it is refused when it is long.
    std::string PrepareTraceId() const;

    // The device of the caller.
    const std::string &DeviceName() const
    {
        return deviceName_;
    }

    // What the client can be called by while the request is answered; null when it sent nothing for that.
    const ClientCallback *Callback() const
    {
        return callback_;
    }

private:
    Json::Value json_;
    std::string deviceName_;
    const ClientCallback *callback_;
};

// The database that a request names, as the catalogue describes it.
struct Target {
    std::shared_ptr<const AppEntry> app;
    const ContainerEntry *container = nullptr; // owned by app
    DatabaseKey key;
};

// The request's bundle; throws RequestError (UNKNOWN_BUNDLE).
std::shared_ptr<const AppEntry> FindApp(const ServiceContext &context, const Request &request);

// The request's "bundleName", "containerName" and "databaseType" (absent: the private one); throws RequestError.
Target FindTarget(const ServiceContext &context, const Request &request);

// The request's "recordType"; throws RequestError (UNKNOWN_RECORD_TYPE).
const RecordTypeRule &FindRecordType(const Target &target, const Request &request);

// Why a record of this type is refused when the container has no such type.
Failure UnknownRecordType(const Target &target, const std::string &recordType);

// The target's database, made when it is not there yet.
DatabaseInfo FindDatabase(const ServiceContext &context, const Target &target);

// Throws RequestError when an import has replaced the database since it was found.
void RequireSameDatabase(ReadSession &session, const Target &target, const DatabaseInfo &database);

// {"code": 0}
Json::Value Success();

} // namespace DriveService

#endif // NUBIS_SERVICE_REQUESTS_REQUEST_H
