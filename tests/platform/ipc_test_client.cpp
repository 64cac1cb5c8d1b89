// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <iostream>
#include <string>
#include <thread>

#include "ipc_test_support.h"

using namespace IpcTest;

// A client process of the tests: ipc_test_client BUNDLE MODE. "who" prints the process id of the service; "exit" returns
// from main while calls are under way.
int main(int argc, char **argv)
{
    if (argc != 3) {
        return 2;
    }
    OHOS::sptr<TestConnection> connection = new TestConnection();
    if (Connect(connection, argv[1]) != 0) {
        return 1;
    }
    auto ability = connection->AwaitAbility();
    if (ability == nullptr) {
        return 1;
    }
    if (argv[2] == std::string("who")) {
        OHOS::MessageParcel reply;
        if (Call(ability, WHO, {}, reply) != 0) {
            return 1;
        }
        reply.ReadInt32();
        reply.ReadInt32();
        reply.ReadString();
        std::cout << reply.ReadInt32() << std::endl;
        return 0;
    }
    constexpr int callers = 4;
    for (int i = 0; i < callers; ++i) {
        std::thread([ability, i] {
            std::string never = "exit";
            while (i % 2 == 0) {
                Call(ability, MAKE);
            }
            Call(ability, BLOCK, [&](OHOS::MessageParcel &data) { data.WriteString(never); });
        }).detach();
    }
    return Call(ability, RESULT);
}
