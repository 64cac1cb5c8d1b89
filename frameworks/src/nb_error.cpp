// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_error.h"

#include <cstdlib>
#include <utility>

#include <json/value.h>

#include "json_helper.h"
#include "log.h"

namespace Nubis {
namespace {
constexpr int32_t MAX_ERROR_TYPE = 2;
// Server codes below are general ones; the first detail says more.
constexpr int32_t FIRST_SPECIFIC_CODE = 1001;
constexpr size_t DETAIL_CODE_LENGTH = 8;
constexpr size_t DETAIL_NUMBER_START = 4;

NBErrorDetail ParseErrorDetail(const Json::Value &json)
{
    NBErrorDetail detail;
    detail.description = JsonHelper::GetStringFromJson(json, "description");
    detail.domain = JsonHelper::GetStringFromJson(json, "domain");
    detail.reason = JsonHelper::GetStringFromJson(json, "reason");
    detail.errorCode = JsonHelper::GetStringFromJson(json, "errorCode");
    detail.errorPos = JsonHelper::GetStringFromJson(json, "errorPos");
    if (detail.errorCode.size() == DETAIL_CODE_LENGTH) {
        detail.detailCode = std::atoi(detail.errorCode.c_str() + DETAIL_NUMBER_START);
    }
    return detail;
}
} // namespace

NBError::NBError(NBLocalErrorCode code)
{
    SetLocalError(code);
}

bool NBError::HasError() const
{
    return isLocalError_ || isServerError_;
}

void NBError::SetLocalError(NBLocalErrorCode code)
{
    isLocalError_ = code != NB_LOCAL_SUCCESS;
    localErrorCode_ = code;
}

void NBError::SetServerError(int code)
{
    isServerError_ = true;
    serverErrorCode_ = code;
}

bool NBError::IsLocalError() const
{
    return isLocalError_;
}

NBLocalErrorCode NBError::GetLocalErrorCode() const
{
    return localErrorCode_;
}

bool NBError::IsServerError() const
{
    return isServerError_;
}

int NBError::GetServerErrorCode() const
{
    return serverErrorCode_;
}

const std::string &NBError::GetErrorMsg() const
{
    return errorMsg_;
}

const std::vector<NBErrorDetail> &NBError::GetErrorDetails() const
{
    return errorDetails_;
}

int NBError::GetErrorType() const
{
    return errorType_;
}

std::string NBError::GetReportErrorCode() const
{
    if (isLocalError_) {
        return std::to_string(static_cast<int32_t>(localErrorCode_));
    }
    if (serverErrorCode_ < FIRST_SPECIFIC_CODE && !errorDetails_.empty() && !errorDetails_.front().errorCode.empty()) {
        return errorDetails_.front().errorCode;
    }
    return std::to_string(serverErrorCode_);
}

void NBError::ParseErrorFromJson(const Json::Value &errorJson, int defaultCode)
{
    int code = JsonHelper::GetIntFromJson(errorJson, "code");
    SetServerError(code != 0 ? code : defaultCode);
    errorMsg_ = JsonHelper::GetStringFromJson(errorJson, "description");
    int errorType = JsonHelper::GetIntFromJson(errorJson, "errorType");
    if (errorType >= 0 && errorType <= MAX_ERROR_TYPE) {
        errorType_ = errorType;
    } else {
        NB_LOGE("unknown error type:%{public}d", errorType);
    }
    const Json::Value *details = JsonHelper::FindMember(errorJson, "errorDetail");
    if (details != nullptr) {
        ParseErrorDetails(*details);
    }
}

void NBError::ParseErrorDetails(const Json::Value &detailsJson)
{
    if (!detailsJson.isArray()) {
        errorDetails_.push_back(ParseErrorDetail(detailsJson));
    } else if (detailsJson.empty()) {
        return;
    } else {
        for (const Json::Value &detailJson : detailsJson) {
            errorDetails_.push_back(ParseErrorDetail(detailJson));
        }
    }
    if (errorMsg_.empty()) {
        const NBErrorDetail &last = errorDetails_.back();
        errorMsg_ = last.reason.empty() ? last.description : last.reason;
    }
}
} // namespace Nubis
