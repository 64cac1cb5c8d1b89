// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Starts saves and ends at once, by "return" from main or by "exit", with all of them under way.

#include <cstdlib>
#include <memory>
#include <string>

#include "nb_container.h"
#include "note_builder.h"
#include "nubis_kit.h"

using namespace Nubis;

int main(int argc, char **argv)
{
    const auto container = NubisNative::GetInstance(100, NB_SYNC_DEMON_DATA)->GetDefaultContainer("com.example.notes");
    if (container == nullptr || argc != 2) {
        return 2;
    }
    for (int i = 0; i < 50; ++i) {
        container->GetPrivateDatabase()->SaveRecord(std::make_shared<NBContext>(),
            NubisTest::Note("x").Id("n" + std::to_string(i)), NB_SAVE_OVERWRITE, nullptr);
    }
    if (std::string(argv[1]) == "exit") {
        std::exit(0);
    }
    return 0;
}
