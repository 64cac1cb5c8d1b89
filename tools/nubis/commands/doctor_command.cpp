// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <algorithm>
#include <memory>
#include <ostream>

#include <json/json.h>

#include "checks.h"
#include "command_error.h"
#include "common_options.h"
#include "error_text.h"
#include "record_json.h"
#include "table.h"

namespace NubisTool {
namespace {

struct DoctorOptions {
    int user = 100;
    bool json = false;
    bool start = false;
};

const char *ColourOf(Verdict verdict)
{
    switch (verdict) {
        case Verdict::OK:
            return "\033[32m";
        case Verdict::WARNING:
            return "\033[33m";
        default:
            return "\033[31m";
    }
}

void PrintText(const Findings &findings, const Console &console)
{
    size_t width = 0;
    for (const Finding &finding : findings.All()) {
        width = std::max(width, finding.check.size());
    }
    for (const Finding &finding : findings.All()) {
        std::string verdict = VerdictName(finding.verdict);
        const std::string padding(std::string(VerdictName(Verdict::WARNING)).size() - verdict.size() + 2, ' ');
        if (console.colour) {
            verdict = ColourOf(finding.verdict) + verdict + "\033[0m";
        }
        console.out << verdict << padding << finding.check << std::string(width - finding.check.size() + 2, ' ')
                    << Printable(finding.what) << (finding.next.empty() ? "" : "; next: " + Printable(finding.next))
                    << '\n';
    }
    const size_t failed = findings.Count(Verdict::FAILED);
    const size_t warnings = findings.Count(Verdict::WARNING);
    console.out << (failed == 0 && warnings == 0
                           ? "all is well"
                           : std::to_string(failed) + " failed, " + CountText(warnings, "warning"))
                << '\n';
}

void PrintJson(const Findings &findings, const Console &console)
{
    Json::Value json(Json::objectValue);
    json["ok"] = findings.Count(Verdict::FAILED) == 0;
    Json::Value &checks = json["checks"] = Json::Value(Json::arrayValue);
    for (const Finding &finding : findings.All()) {
        Json::Value entry(Json::objectValue);
        entry["check"] = finding.check;
        entry["verdict"] = VerdictName(finding.verdict);
        entry["what"] = finding.what;
        entry["next"] = finding.next;
        checks.append(entry);
    }
    console.out << PrettyText(json) << '\n';
}

int Examine(const DoctorOptions &options, const Console &console)
{
    Findings findings;
    CheckVersions(findings);
    CheckLog(findings);
    CheckFolders(options.user, findings);
    CheckManifests(options.user, findings);
    const std::string program = CheckProgram(options.user, findings);
    const ServiceStatus status = CheckSocket(options.user, findings);
    const bool isServed = CheckService(options.user, options.start, status, findings);
    CheckData(options.user, program, isServed, findings);
    if (options.json) {
        PrintJson(findings, console);
    } else {
        PrintText(findings, console);
    }
    return findings.Count(Verdict::FAILED) == 0 ? EXIT_DONE : EXIT_OPERATION_FAILED;
}

} // namespace

void AddDoctorCommand(CLI::App &app, Chosen &chosen)
{
    auto options = std::make_shared<DoctorOptions>();
    CLI::App *command = AddCommand(app, "doctor",
        "Look at all that the tool and the service need: folders, manifests, program, socket, data. Changes nothing",
        "nubis doctor --start");
    AddUserOption(*command, options->user);
    AddJsonOption(*command, options->json);
    command->add_flag("--start", options->start, "Start the service when it does not run, to see whether it can be");
    SetAction(*command, chosen, options, Examine);
}

} // namespace NubisTool
