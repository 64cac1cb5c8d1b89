// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_UTIL_FAILURE_H
#define NUBIS_SERVICE_UTIL_FAILURE_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include <json/json.h>

#include "util/error_codes.h"

namespace DriveService {

// Checks stop looking for problems at about so many: what a request holds must not be multiplied in its reply.
constexpr size_t MAX_FAILURE_DETAILS = 16;

struct FailureDetail {
    std::string description;
    std::string position; // the field or member that is at fault; empty when none is
};

// Why a request or a record was refused. A value: copy and move as needed.
struct Failure {
    Failure(ErrorCode failureCode, std::string text, std::string position = "");

    // More than one thing is wrong: the description is then the first detail's.
    Failure(ErrorCode failureCode, std::vector<FailureDetail> allDetails);

    // {"code", "description", "errorType", "errorDetail": [{"domain", "reason", "errorCode", "description", "errorPos"}]}
    Json::Value ToJson() const;

    ErrorCode code;
    std::string description;
    std::vector<FailureDetail> details;
};

// Thrown inside the service to refuse a whole request; the router turns it into the reply.
class RequestError : public std::runtime_error {
public:
    explicit RequestError(Failure failure) : std::runtime_error(failure.description), failure_(std::move(failure))
    {}
    RequestError(ErrorCode code, std::string description, std::string position = "")
        : RequestError(Failure(code, std::move(description), std::move(position)))
    {}

    const Failure &GetFailure() const
    {
        return failure_;
    }

private:
    Failure failure_;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_UTIL_FAILURE_H
