// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_RECORD_FAILURES_H
#define NUBIS_TOOL_RECORD_FAILURES_H

#include <string>

#include "nb_error.h"

namespace NubisTool {

// The records of a command for which the service did not do what was asked, told together at its end.
class RecordFailures {
public:
    void Add(const std::string &recordId, const Nubis::NBError &error);

    // Throws CommandError when there are any: `what`, a line for each of them, and the advice for the first that was
    // refused for a reason of its own.
    void ThrowIfAny(const std::string &what) const;

private:
    std::string lines_;
    Nubis::NBError cause_;
};

} // namespace NubisTool

#endif
