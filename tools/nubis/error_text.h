// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_ERROR_TEXT_H
#define NUBIS_TOOL_ERROR_TEXT_H

#include <cstddef>
#include <string>

#include "nb_error.h"

namespace NubisTool {

// "1 record", "2 records".
std::string CountText(size_t count, const std::string &noun);

// The service's name of the failure, as "VERSION_CONFLICT"; empty when it gave none.
std::string ErrorReason(const Nubis::NBError &error);

// What happened, in one line: "the service refused it: ... (VERSION_CONFLICT, 1106)".
std::string ErrorText(const Nubis::NBError &error);

// What the person can do about it.
std::string ErrorAdvice(const Nubis::NBError &error);

// Whether the request did not reach the service or its answer was lost, so that other requests will fare no better.
bool IsTransportError(const Nubis::NBError &error);

// Throws CommandError with both when there is an error; doing names what was tried: "reading the catalogue".
void ThrowIfError(const Nubis::NBError &error, const std::string &doing);

} // namespace NubisTool

#endif
