// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "util/failure.h"

namespace DriveService {

namespace {

constexpr const char *ERROR_DOMAIN = "nubis-drive-service";
constexpr const char *DETAIL_CODE_PREFIX = "3100";

} // namespace

ErrorType TypeOf(ErrorCode code)
{
    switch (code) {
        case ErrorCode::RECORD_NOT_FOUND:
        case ErrorCode::RECORD_DELETED:
        case ErrorCode::RECORD_EXISTS:
        case ErrorCode::VERSION_CONFLICT:
        case ErrorCode::DUPLICATE_RECORD:
        case ErrorCode::UNKNOWN_REFERENCE:
        case ErrorCode::UNKNOWN_RELATION:
        case ErrorCode::NOT_APPLIED:
        case ErrorCode::ASSET_NOT_FOUND:
        case ErrorCode::LOCK_HELD:
        case ErrorCode::UNKNOWN_SUBSCRIPTION:
        case ErrorCode::LIMIT_REACHED:
            return ErrorType::STATE;
        case ErrorCode::STORE_FAILED:
        case ErrorCode::INTERNAL_ERROR:
            return ErrorType::SERVICE;
        default:
            return ErrorType::CALLER;
    }
}

const char *ReasonOf(ErrorCode code)
{
    switch (code) {
        case ErrorCode::MALFORMED_REQUEST:
            return "MALFORMED_REQUEST";
        case ErrorCode::UNKNOWN_FUNCTION:
            return "UNKNOWN_FUNCTION";
        case ErrorCode::INVALID_ARGUMENT:
            return "INVALID_ARGUMENT";
        case ErrorCode::UNKNOWN_BUNDLE:
            return "UNKNOWN_BUNDLE";
        case ErrorCode::UNKNOWN_CONTAINER:
            return "UNKNOWN_CONTAINER";
        case ErrorCode::UNKNOWN_RECORD_TYPE:
            return "UNKNOWN_RECORD_TYPE";
        case ErrorCode::BATCH_TOO_LARGE:
            return "BATCH_TOO_LARGE";
        case ErrorCode::INVALID_CURSOR:
            return "INVALID_CURSOR";
        case ErrorCode::INVALID_QUERY:
            return "INVALID_QUERY";
        case ErrorCode::UNKNOWN_FIELD:
            return "UNKNOWN_FIELD";
        case ErrorCode::REPLY_TOO_LARGE:
            return "REPLY_TOO_LARGE";
        case ErrorCode::LOCK_HELD:
            return "LOCK_HELD";
        case ErrorCode::UNKNOWN_SUBSCRIPTION:
            return "UNKNOWN_SUBSCRIPTION";
        case ErrorCode::LIMIT_REACHED:
            return "LIMIT_REACHED";
        case ErrorCode::INVALID_RECORD:
            return "INVALID_RECORD";
        case ErrorCode::INVALID_FIELD:
            return "INVALID_FIELD";
        case ErrorCode::RECORD_NOT_FOUND:
            return "RECORD_NOT_FOUND";
        case ErrorCode::RECORD_DELETED:
            return "RECORD_DELETED";
        case ErrorCode::RECORD_EXISTS:
            return "RECORD_EXISTS";
        case ErrorCode::VERSION_CONFLICT:
            return "VERSION_CONFLICT";
        case ErrorCode::DUPLICATE_RECORD:
            return "DUPLICATE_RECORD";
        case ErrorCode::UNKNOWN_REFERENCE:
            return "UNKNOWN_REFERENCE";
        case ErrorCode::UNKNOWN_RELATION:
            return "UNKNOWN_RELATION";
        case ErrorCode::RECORD_TYPE_MISMATCH:
            return "RECORD_TYPE_MISMATCH";
        case ErrorCode::NOT_APPLIED:
            return "NOT_APPLIED";
        case ErrorCode::ASSET_NOT_FOUND:
            return "ASSET_NOT_FOUND";
        case ErrorCode::STORE_FAILED:
            return "STORE_FAILED";
        case ErrorCode::INTERNAL_ERROR:
            return "INTERNAL_ERROR";
    }
    return "INTERNAL_ERROR";
}

Failure::Failure(ErrorCode failureCode, std::string text, std::string position)
    : code(failureCode), description(text), details{FailureDetail{std::move(text), std::move(position)}}
{}

Failure::Failure(ErrorCode failureCode, std::vector<FailureDetail> allDetails)
    : code(failureCode), details(std::move(allDetails))
{
    if (!details.empty()) {
        description = details.front().description;
    }
}

Json::Value Failure::ToJson() const
{
    Json::Value error(Json::objectValue);
    error["code"] = static_cast<int>(code);
    error["description"] = description;
    error["errorType"] = static_cast<int>(TypeOf(code));
    Json::Value &list = error["errorDetail"] = Json::Value(Json::arrayValue);
    for (const FailureDetail &detail : details) {
        Json::Value item(Json::objectValue);
        item["domain"] = ERROR_DOMAIN;
        item["reason"] = ReasonOf(code);
        item["errorCode"] = DETAIL_CODE_PREFIX + std::to_string(static_cast<int>(code));
        item["description"] = detail.description;
        item["errorPos"] = detail.position;
        list.append(std::move(item));
    }
    return error;
}

} // namespace DriveService
