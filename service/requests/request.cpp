// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/request.h"

#include <limits>
#include <utility>

#include "records/limits.h"
#include "util/failure.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

constexpr int64_t PRIVATE_DATABASE = 1;
constexpr int64_t LAST_DATABASE_TYPE = 2;

[[noreturn]] void Refuse(const char *name, const std::string &expected, const Json::Value &came)
{
    throw RequestError(ErrorCode::INVALID_ARGUMENT,
        std::string("request member \"") + name + "\": expected " + expected + ", came " +
            (came.isNull() ? "nothing" : DescribeJson(came)),
        name);
}

} // namespace

std::string Request::Text(const char *name) const
{
    const Json::Value &value = json_[name];
    if (!value.isString()) {
        Refuse(name, "a text", value);
    }
    return value.asString();
}

std::string Request::NonEmptyText(const char *name) const
{
    const Json::Value &value = json_[name];
    if (!value.isString() || value.asString().empty()) {
        Refuse(name, "a text that is not empty", value);
    }
    return value.asString();
}

std::string Request::TextOr(const char *name, const std::string &other) const
{
    return json_[name].isNull() ? other : Text(name);
}

int64_t Request::Integer(const char *name, int64_t least, int64_t most) const
{
    const Json::Value &value = json_[name];
    bool integer = value.type() == Json::intValue || value.type() == Json::uintValue;
    if (!integer || !value.isInt64() || value.asInt64() < least || value.asInt64() > most) {
        Refuse(name, "an integer from " + std::to_string(least) + " to " + std::to_string(most), value);
    }
    return value.asInt64();
}

int64_t Request::IntegerOr(const char *name, int64_t other) const
{
    return json_[name].isNull()
               ? other
               : Integer(name, std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max());
}

bool Request::BooleanOr(const char *name, bool other) const
{
    const Json::Value &value = json_[name];
    if (value.isNull()) {
        return other;
    }
    if (!value.isBool()) {
        Refuse(name, "true or false", value);
    }
    return value.asBool();
}

const Json::Value &Request::Array(const char *name) const
{
    const Json::Value &value = json_[name];
    if (!value.isArray()) {
        Refuse(name, "an array", value);
    }
    return value;
}

Json::Value Request::TakeArray(const char *name)
{
    Array(name);
    return std::exchange(json_[name], Json::Value(Json::arrayValue));
}

const Json::Value *Request::Find(const char *name) const
{
    return json_.isMember(name) ? &json_[name] : nullptr;
}

std::vector<std::string> Request::Texts(const char *name, size_t most) const
{
    const Json::Value &array = Array(name);
    if (array.size() > most) {
        Refuse(name, "at most " + std::to_string(most) + " elements", Json::Value(array.size()));
    }
    std::vector<std::string> texts;
    for (const Json::Value &value : array) {
        if (!value.isString()) {
            Refuse(name, "an array of texts", value);
        }
        texts.push_back(value.asString());
    }
    return texts;
}

std::string Request::PrepareTraceId() const
{
    constexpr const char *name = "prepareTraceId";
    std::string traceId = TextOr(name, "");
    if (traceId.size() > MAX_TRACE_ID_BYTES) {
        Refuse(name, "at most " + std::to_string(MAX_TRACE_ID_BYTES) + " bytes", json_[name]);
    }
    return traceId;
}

std::shared_ptr<const AppEntry> FindApp(const ServiceContext &context, const Request &request)
{
    std::string bundleName = request.NonEmptyText("bundleName");
    std::shared_ptr<const AppEntry> app = context.catalogue.Find(bundleName);
    if (!app) {
        throw RequestError(ErrorCode::UNKNOWN_BUNDLE,
            "the catalogue has no bundle \"" + Excerpt(bundleName) + "\"; install one with apply-catalogue",
            "bundleName");
    }
    return app;
}

Target FindTarget(const ServiceContext &context, const Request &request)
{
    Target target;
    target.app = FindApp(context, request);
    std::string containerName = request.NonEmptyText("containerName");
    target.container = target.app->FindContainer(containerName);
    if (target.container == nullptr) {
        throw RequestError(ErrorCode::UNKNOWN_CONTAINER,
            "bundle \"" + target.app->bundleName + "\" has no container \"" + Excerpt(containerName) + "\"",
            "containerName");
    }
    int64_t type = PRIVATE_DATABASE;
    if (request.IntegerOr("databaseType", type) != type) {
        type = request.Integer("databaseType", 0, LAST_DATABASE_TYPE);
    }
    target.key = {target.app->bundleName, containerName, static_cast<int>(type)};
    return target;
}

const RecordTypeRule &FindRecordType(const Target &target, const Request &request)
{
    std::string name = request.NonEmptyText("recordType");
    const RecordTypeRule *rule = target.container->FindType(name);
    if (rule == nullptr) {
        throw RequestError(UnknownRecordType(target, name));
    }
    return *rule;
}

Failure UnknownRecordType(const Target &target, const std::string &recordType)
{
    return Failure(ErrorCode::UNKNOWN_RECORD_TYPE,
        "container \"" + target.container->name + "\" has no record type \"" + Excerpt(recordType) + "\"",
        "recordType");
}

DatabaseInfo FindDatabase(const ServiceContext &context, const Target &target)
{
    if (std::optional<DatabaseInfo> found = context.store.BeginRead()->FindDatabase(target.key)) {
        return *found;
    }
    std::unique_ptr<WriteSession> session = context.store.BeginWrite();
    DatabaseInfo made = session->EnsureDatabase(target.key);
    session->Commit();
    return made;
}

void RequireSameDatabase(ReadSession &session, const Target &target, const DatabaseInfo &database)
{
    std::optional<DatabaseInfo> present = session.FindDatabase(target.key);
    if (!present || present->uid != database.uid) {
        throw RequestError(
            ErrorCode::STORE_FAILED, "the data of container \"" + target.container->name +
                                         "\" was replaced by an import while the request was answered; send it again");
    }
}

Json::Value Success()
{
    Json::Value reply(Json::objectValue);
    reply["code"] = 0;
    return reply;
}

} // namespace DriveService
