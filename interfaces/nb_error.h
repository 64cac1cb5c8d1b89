// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_ERROR_H
#define NB_ERROR_H

#include <cstdint>
#include <string>
#include <vector>

#include <json/forwards.h>

#include "nubis_export.h"

namespace Nubis {
/// Failures that the library itself finds.
enum NBLocalErrorCode : int32_t {
    NB_LOCAL_SUCCESS = 0,
    /// There is no connection to the cloud-drive service.
    NB_LOCAL_NOT_CONNECTED = 1,
    /// The request could not be sent or was lost on its way.
    NB_LOCAL_IPC_FAILED = 2,
    /// A reply, or a part of it, is not what was expected; also a value of another type than the one asked for.
    NB_LOCAL_BAD_DATA = 3,
    /// The reply is empty, the kit or container is gone, or no record id could be made.
    NB_LOCAL_EMPTY_REPLY = 11,
    /// A subscription request found its kit gone.
    NB_LOCAL_KIT_GONE = 22,
    /// A notification is no object, or its key or signature is missing.
    NB_LOCAL_BAD_NOTIFICATION = 23,
    /// A failure without a description, no result for a record, or a notification whose signature is wrong.
    NB_LOCAL_UNEXPECTED_REPLY = 24,
};

/// One entry of the service's list of details. A plain value.
struct NBErrorDetail {
    /// The part of the service that failed.
    std::string domain;
    /// The name of the failure.
    std::string reason;
    /// Eight characters when well formed; the last four are the number of the failure.
    std::string errorCode;
    /// For people.
    std::string description;
    /// The member of the request that is to blame; may be empty.
    std::string errorPos;
    /// Not filled from replies.
    std::string detailExtra;
    /// The number in the last four characters of a well formed errorCode, otherwise 0.
    int32_t detailCode = 0;
};

/// The outcome of a call: no error, a local error (the library failed), a server error (the service answered with a
/// failure), or both.
///
/// A plain value: copy it freely; one object must not be changed and used by several threads at once. Nothing throws.
class NUBIS_EXPORT NBError {
public:
    NBError() = default;
    /// An error that holds just this local code.
    explicit NBError(NBLocalErrorCode code);

    /// True when a local or a server error is set.
    bool HasError() const;

    /// NB_LOCAL_SUCCESS clears the local error; the server part stays as it is.
    void SetLocalError(NBLocalErrorCode code);
    /// Sets the server error to this code; whatever the code is, HasError is true then. The text and the details stay.
    void SetServerError(int code);

    ///@{
    /// The two parts of the error; a code means something only while its part is set.
    bool IsLocalError() const;
    NBLocalErrorCode GetLocalErrorCode() const;
    bool IsServerError() const;
    int GetServerErrorCode() const;
    ///@}
    /// The service's description of the failure; may be empty.
    const std::string &GetErrorMsg() const;
    /// In the order of the service; may be empty.
    const std::vector<NBErrorDetail> &GetErrorDetails() const;
    /// The service's class of the failure: 0, 1 or 2.
    int GetErrorType() const;

    /// The code under which the failure is reported: the local code, else the code of the first detail when the server
    /// code is a general one (below 1001), else the server code.
    std::string GetReportErrorCode() const;

    /// Fills the server part from the service's "error" object. defaultCode stands in for a missing or zero "code".
    /// Details are added to those already held. A value that is no object sets the server error with no text.
    void ParseErrorFromJson(const Json::Value &errorJson, int defaultCode);

private:
    void ParseErrorDetails(const Json::Value &detailsJson);

    bool isLocalError_ = false;
    NBLocalErrorCode localErrorCode_ = NB_LOCAL_SUCCESS;
    bool isServerError_ = false;
    int32_t serverErrorCode_ = 0;
    std::string errorMsg_;
    std::vector<NBErrorDetail> errorDetails_;
    int32_t errorType_ = 0;
};
} // namespace Nubis

#endif // NB_ERROR_H
