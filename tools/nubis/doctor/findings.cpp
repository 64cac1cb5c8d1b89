// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "findings.h"

#include <algorithm>

namespace NubisTool {

void Findings::Ok(const std::string &check, const std::string &what)
{
    findings_.push_back({check, Verdict::OK, what, ""});
}

void Findings::Warn(const std::string &check, const std::string &what, const std::string &next)
{
    findings_.push_back({check, Verdict::WARNING, what, next});
}

void Findings::Fail(const std::string &check, const std::string &what, const std::string &next)
{
    findings_.push_back({check, Verdict::FAILED, what, next});
}

size_t Findings::Count(Verdict verdict) const
{
    return static_cast<size_t>(std::count_if(
        findings_.begin(), findings_.end(), [verdict](const Finding &finding) { return finding.verdict == verdict; }));
}

const char *VerdictName(Verdict verdict)
{
    switch (verdict) {
        case Verdict::OK:
            return "ok";
        case Verdict::WARNING:
            return "warning";
        default:
            return "failed";
    }
}

} // namespace NubisTool
