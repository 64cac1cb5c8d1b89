// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_service_process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/ability_control.h"
#include "host/paths.h"

namespace NubisTest {
namespace {
constexpr char SERVICE_BUNDLE[] = "com.orvane.tyra.aerostash";
constexpr char SERVICE_ABILITY[] = "DriveServiceAbility";

// The service is no child of the test, so its end is seen through a descriptor of the process.
void WaitUntilGone(int pidDescriptor)
{
    pollfd gone{pidDescriptor, POLLIN, 0};
    while (poll(&gone, 1, -1) < 0 && errno == EINTR) {
    }
}
} // namespace

DriveServiceProcess::DriveServiceProcess()
{
    setenv("NUBIS_MANIFEST_PATH", NUBIS_TEST_MANIFESTS, 1);
}

DriveServiceProcess::~DriveServiceProcess()
{
    Kill();
}

void DriveServiceProcess::InstallNotesCatalogue()
{
    const std::string data = (folders_.State() / "drive").string();
    std::string output;
    const std::string command = std::string(NUBIS_TEST_BIN) + "/nubis-drive-service apply-catalogue --data '" + data +
                                "' '" NUBIS_TEST_DATA "/notes_catalogue.json' 2>&1";
    if (RunCommand(command, output) != 0) {
        throw std::runtime_error("the catalogue was refused: " + output);
    }
}

void DriveServiceProcess::InstallManifest(const std::string &abilityVersion)
{
    const std::filesystem::path folder = folders_.Root() / "manifests";
    std::filesystem::create_directories(folder);
    std::ofstream manifest(folder / (std::string(SERVICE_BUNDLE) + ".json"));
    manifest << R"({"bundleName": ")" << SERVICE_BUNDLE << R"(", "abilities": [{"name": ")" << SERVICE_ABILITY
             << R"(", "exec": [")" << NUBIS_TEST_BIN << R"(/nubis-drive-service", "--data", "${state}/drive",)"
             << R"( "--user", "${user}"], "metadata": [)";
    if (!abilityVersion.empty()) {
        manifest << R"({"name": "abilityVersion", "value": ")" << abilityVersion << R"("})";
    }
    manifest << "]}]}";
    setenv("NUBIS_MANIFEST_PATH", folder.c_str(), 1);
}

int DriveServiceProcess::Pid() const
{
    return Host::FindAbility(SERVICE_BUNDLE, SERVICE_ABILITY, Host::DEFAULT_USER_ID).pid;
}

void DriveServiceProcess::Kill()
{
    const int pid = Pid();
    if (pid <= 0) {
        return;
    }
    const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    if (descriptor < 0) {
        return;
    }
    kill(pid, SIGKILL);
    WaitUntilGone(descriptor);
    close(descriptor);
}

int RunCommand(const std::string &command, std::string &output)
{
    FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return -1;
    }
    std::array<char, 4096> buffer{};
    size_t count = 0;
    while ((count = fread(buffer.data(), 1, buffer.size(), pipe)) > 0) {
        output.append(buffer.data(), count);
    }
    const int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
} // namespace NubisTest
