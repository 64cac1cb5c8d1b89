// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_FINDINGS_H
#define NUBIS_TOOL_FINDINGS_H

#include <string>
#include <vector>

namespace NubisTool {

enum class Verdict {
    OK,
    WARNING, // it works, but not as it should, or not for long
    FAILED
};

struct Finding {
    std::string check;
    Verdict verdict;
    std::string what;
    std::string next; // what the person can do; empty when all is well
};

// What the doctor found out, in the order of the checks.
class Findings {
public:
    void Ok(const std::string &check, const std::string &what);
    void Warn(const std::string &check, const std::string &what, const std::string &next);
    void Fail(const std::string &check, const std::string &what, const std::string &next);

    size_t Count(Verdict verdict) const;

    const std::vector<Finding> &All() const
    {
        return findings_;
    }

private:
    std::vector<Finding> findings_;
};

const char *VerdictName(Verdict verdict);

} // namespace NubisTool

#endif
