// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "crash_test.h"

namespace Crash {
Options g_options;
} // namespace Crash

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    Crash::g_options.seed = std::random_device()();
    for (int i = 1; i < argc; i += 2) {
        const std::string name = argv[i];
        const unsigned long value = i + 1 < argc ? std::strtoul(argv[i + 1], nullptr, 10) : 0;
        if (name == "--rounds" && value > 0) {
            Crash::g_options.rounds = static_cast<int>(value);
        } else if (name == "--seed" && value > 0) {
            Crash::g_options.seed = static_cast<uint32_t>(value);
        } else {
            std::cerr << "usage: " << argv[0] << " [--rounds N] [--seed N]\n";
            return 2;
        }
    }
    // Deaths make many lines.
    setenv("NUBIS_LOG_LEVEL", "none", 0);
    std::cout << "seed " << Crash::g_options.seed << "\n";
    return RUN_ALL_TESTS();
}
