// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "record_failures.h"

#include "command_error.h"
#include "error_text.h"

namespace NubisTool {

void RecordFailures::Add(const std::string &recordId, const Nubis::NBError &error)
{
    lines_ += "\n  " + recordId + ": " + ErrorText(error);
    if (!cause_.HasError() || ErrorReason(cause_) == "NOT_APPLIED") {
        cause_ = error;
    }
}

void RecordFailures::ThrowIfAny(const std::string &what) const
{
    if (!lines_.empty()) {
        throw CommandError(what + ":" + lines_, ErrorAdvice(cause_));
    }
}

} // namespace NubisTool
