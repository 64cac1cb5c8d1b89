// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <unistd.h>

#include "host/ability_server.h"
#include "ipc_test_ability.h"

// Serves the ability of the tests: ipc_test_service BUNDLE USER IDLE_MILLISECONDS [STARTS_FILE]. Adds a line to the file
// when it has the place.
int main(int argc, char **argv)
{
    if (argc < 4) {
        return 2;
    }
    Host::AbilityServerOptions options;
    options.bundleName = argv[1];
    options.abilityName = IpcTest::ABILITY;
    options.userId = std::atoi(argv[2]);
    options.idleTimeout = std::chrono::milliseconds(std::atoi(argv[3]));
    Host::AbilityServer server(options, new IpcTest::TestAbility());
    std::string error;
    if (!server.Start(error)) {
        std::cerr << error << std::endl;
        return 1;
    }
    if (argc > 4) {
        std::ofstream(argv[4], std::ios::app) << getpid() << std::endl;
    }
    server.Run();
    return 0;
}
