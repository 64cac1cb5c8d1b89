// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_process.h"

#include <chrono>
#include <cstdlib>
#include <optional>

#include "command_error.h"
#include "interrupt.h"
#include "record_json.h"
#include "row_reader.h"

namespace NubisTool {
namespace {

constexpr std::chrono::minutes ANSWER_TIME(5);

Environment DeviceEnvironment(const std::string &name, const std::string &stateFolder)
{
    Environment environment = {{"NUBIS_DEVICE_NAME", name}, {"NUBIS_STATE_DIR", stateFolder}};
    // The demo provokes refusals and tells of them itself; whoever asks for a log gets all of it.
    if (std::getenv("NUBIS_LOG_LEVEL") == nullptr) {
        environment["NUBIS_LOG_LEVEL"] = "fatal";
    }
    return environment;
}

} // namespace

void ThrowIfInterrupted()
{
    if (Interrupted()) {
        throw CommandError("interrupted", "nothing is left behind; run `nubis demo` again", EXIT_INTERRUPTED);
    }
}

DeviceProcess::DeviceProcess(const std::string &name, const std::string &stateFolder, int user)
    : name_(name), process_({{OwnProgram(), "demo-device", "--user", std::to_string(user)},
                       DeviceEnvironment(name, stateFolder), true, false})
{}

Json::Value DeviceProcess::Do(const Json::Value &order)
{
    std::string what = order["order"].asString();
    std::optional<std::string> line;
    if (process_.WriteLine(CompactText(order))) {
        line = process_.ReadLine(ANSWER_TIME);
    }
    ThrowIfInterrupted();
    Json::Value answer;
    std::string error;
    if (!line || !ParseJsonText(*line, answer, error) || !answer.isObject()) {
        throw CommandError(name_ + " gave no answer to \"" + what + "\"",
            "run the demo again with NUBIS_LOG_LEVEL=info to see the library's log");
    }
    if (answer.isMember("error")) {
        throw CommandError(name_ + ", " + what + ": " + answer["error"].asString(), answer["advice"].asString());
    }
    return answer;
}

} // namespace NubisTool
