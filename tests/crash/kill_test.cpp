// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Processes are killed while they work.

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "crash_test.h"

using namespace NubisTest;

namespace Crash {
namespace {
constexpr int CLIENTS = 3;
// Lines that the clients of a round write together when nobody dies, about.
constexpr uint32_t LINES = 250;
constexpr uint32_t REQUEST_MICROSECONDS = 3000;

class KillTest : public CrashTest {
protected:
    using Clients = std::vector<std::unique_ptr<ClientProcess>>;

    Clients StartClients(int round)
    {
        Clients clients;
        for (int i = 0; i < CLIENTS; ++i) {
            clients.push_back(std::make_unique<ClientProcess>(std::vector<std::string>{
                NUBIS_TEST_LOAD_CLIENT, std::to_string(round), std::to_string(i), std::to_string(Random(1U << 30U))}));
        }
        return clients;
    }

    // Reads what the clients tell until they have written so many lines, or all are at their end.
    void Listen(Clients &clients, size_t lines)
    {
        for (size_t heard = 0; heard < lines;) {
            std::vector<pollfd> outputs;
            for (const auto &client : clients) {
                outputs.push_back({client->Output(), POLLIN, 0});
            }
            if (std::all_of(outputs.begin(), outputs.end(), [](const pollfd &output) { return output.fd < 0; })) {
                return;
            }
            const int patience = std::chrono::milliseconds(PATIENCE).count();
            if (poll(outputs.data(), outputs.size(), patience) == 0) {
                throw std::runtime_error("the clients hang");
            }
            for (size_t i = 0; i < clients.size(); ++i) {
                if (outputs[i].revents == 0) {
                    continue;
                }
                for (const std::string &line : clients[i]->ReadLines()) {
                    journal_.Read(line);
                    ++heard;
                }
            }
        }
    }

    void ListenToTheEnd(Clients &clients)
    {
        Listen(clients, SIZE_MAX);
    }

    // Lets a moment within a request pass.
    void PassMoment()
    {
        AwaitReadable(-1, std::chrono::microseconds(Random(REQUEST_MICROSECONDS)));
    }

    void ReportFigures(const char *victim) const
    {
        std::cout << "figures: " << g_options.rounds << " " << victim << " killed, " << journal_.Acknowledged()
                  << " requests acknowledged, " << journal_.Lost() << " under way\n";
    }

    Journal journal_;
};

TEST_F(KillTest, Service)
{
    for (int round = 1; round <= g_options.rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        Clients clients = StartClients(round);
        Listen(clients, Random(LINES));
        PassMoment();
        Service().Kill();
        ListenToTheEnd(clients);
        for (const auto &client : clients) {
            EXPECT_EQ(client->AwaitEnd(), 0);
        }
        CheckData(journal_, round);
    }
    CheckAllData(journal_);
    ReportFigures("services");
}

TEST_F(KillTest, Clients)
{
    const pid_t service = RunningService();
    const Holdings before = HoldingsOf(service);
    for (int round = 1; round <= g_options.rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        Clients clients = StartClients(round);
        // The last one sees whether the service goes on.
        for (int victim = 0; victim < CLIENTS - 1; ++victim) {
            Listen(clients, Random(LINES / 2));
            PassMoment();
            clients[victim]->Kill();
        }
        ListenToTheEnd(clients);
        for (int victim = 0; victim < CLIENTS - 1; ++victim) {
            clients[victim]->AwaitEnd();
        }
        EXPECT_EQ(clients.back()->AwaitEnd(), 0);
        CheckData(journal_, round);
        // Threads without work stay for some seconds.
        ExpectHoldings(service, {SIZE_MAX, before.sockets, before.files});
    }
    EXPECT_EQ(Service().Pid(), service);
    ExpectHoldings(service, before);
    CheckAllData(journal_);
    ReportFigures("pairs of clients");
}
} // namespace
} // namespace Crash
