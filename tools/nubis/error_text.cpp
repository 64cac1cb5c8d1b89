// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "error_text.h"

#include <map>

#include "command_error.h"
#include "host/ability_control.h"

namespace NubisTool {
namespace {

using Nubis::NBError;

// How the service classes its failures.
constexpr int TYPE_STATE = 1;
constexpr int TYPE_SERVICE = 2;

std::string LocalText(Nubis::NBLocalErrorCode code)
{
    switch (code) {
        case Nubis::NB_LOCAL_NOT_CONNECTED: {
            const std::string reason = Host::LastConnectError();
            return "the drive service cannot be reached" + (reason.empty() ? "" : ": " + reason);
        }
        case Nubis::NB_LOCAL_IPC_FAILED:
            return "the request to the drive service was lost or not answered in time";
        case Nubis::NB_LOCAL_BAD_DATA:
            return "the drive service's answer is not what was expected";
        case Nubis::NB_LOCAL_EMPTY_REPLY:
            return "the drive service gave no answer";
        case Nubis::NB_LOCAL_UNEXPECTED_REPLY:
            return "the drive service's answer says nothing of this";
        default:
            return "the library failed";
    }
}

std::string ServerText(const NBError &error)
{
    std::string text = error.GetErrorMsg().empty() ? "the drive service refused it" : error.GetErrorMsg();
    std::string details;
    for (const Nubis::NBErrorDetail &detail : error.GetErrorDetails()) {
        // The first one is often the message itself, which should not be said twice.
        if (!detail.description.empty() && text.find(detail.description) == std::string::npos) {
            details += (details.empty() ? "" : "; ") + (detail.errorPos.empty() ? "" : detail.errorPos + ": ") +
                       detail.description;
        }
    }
    if (!details.empty()) {
        text += " [" + details + "]";
    }
    std::string reason = ErrorReason(error);
    return text + " (" + (reason.empty() ? "" : reason + ", ") + "code " + std::to_string(error.GetServerErrorCode()) +
           ")";
}

// For failures that people meet often and whose way out depends on more than their class.
std::string AdviceForReason(const std::string &reason)
{
    static const std::map<std::string, std::string> ADVICE = {
        {"RECORD_EXISTS", "overwrite records that are there with `nubis record import --existing`, or change them with "
                          "`nubis record save --id`"},
        {"RECORD_NOT_FOUND",
            "see with `nubis record query` which records there are; `nubis record save --new` creates one"},
        {"VERSION_CONFLICT", "read it with `nubis record get`, and save it with the version that it has now"},
        {"NOT_APPLIED", "correct what the other records were refused for, and send all of them again"},
        {"DUPLICATE_RECORD",
            "change the record that is there, or give this one other values in the fields that tell duplicates"},
        {"LOCK_HELD",
            "see with `nubis lock show` who holds the lock; wait for it and write with `nubis lock exec --wait "
            "SECONDS -- COMMAND`"},
        {"UNKNOWN_SUBSCRIPTION", "see `nubis subscription list`"},
        {"LIMIT_REACHED", "see docs/limits.md for how many there may be"},
        {"UNKNOWN_BUNDLE", "see `nubis catalogue list`, or add it with `nubis catalogue apply FILE`"},
        {"UNKNOWN_REFERENCE", "save the record that it refers to first"},
        {"INVALID_CURSOR", "begin again without --since"}};
    auto advice = ADVICE.find(reason);
    return advice == ADVICE.end() ? "" : advice->second;
}

} // namespace

std::string CountText(size_t count, const std::string &noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string ErrorReason(const NBError &error)
{
    return error.GetErrorDetails().empty() ? "" : error.GetErrorDetails().front().reason;
}

std::string ErrorText(const NBError &error)
{
    if (error.IsServerError()) {
        return ServerText(error);
    }
    return LocalText(error.GetLocalErrorCode()) + " (local code " + std::to_string(error.GetLocalErrorCode()) + ")";
}

std::string ErrorAdvice(const NBError &error)
{
    if (std::string advice = AdviceForReason(ErrorReason(error)); error.IsServerError() && !advice.empty()) {
        return advice;
    }
    if (error.IsServerError()) {
        switch (error.GetErrorType()) {
            case TYPE_STATE:
                return "read the record's present state with `nubis record get` and try again";
            case TYPE_SERVICE:
                return "try again; if it stays, run the command with NUBIS_LOG_LEVEL=info to see the library's log";
            default:
                return "change what the message names; `nubis catalogue show BUNDLE` lists types and fields";
        }
    }
    if (IsTransportError(error)) {
        return "run `nubis doctor --start`, which looks at all that the service needs";
    }
    return "run the command with NUBIS_LOG_LEVEL=info to see the library's log";
}

bool IsTransportError(const NBError &error)
{
    auto code = error.GetLocalErrorCode();
    return error.IsLocalError() && !error.IsServerError() &&
           (code == Nubis::NB_LOCAL_NOT_CONNECTED || code == Nubis::NB_LOCAL_IPC_FAILED ||
               code == Nubis::NB_LOCAL_EMPTY_REPLY);
}

void ThrowIfError(const NBError &error, const std::string &doing)
{
    if (error.HasError()) {
        throw CommandError(doing + " failed: " + ErrorText(error), ErrorAdvice(error));
    }
}

} // namespace NubisTool
