// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <chrono>
#include <csignal>
#include <iostream>

#include <openssl/crypto.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "command_line.h"
#include "drive_service_stub.h"
#include "host/ability_server.h"
#include "requests/request_pool.h"
#include "service_instance.h"
#include "util/log.h"

namespace {

using DriveService::DriveServiceStub;
using DriveService::ServiceInstance;

constexpr const char *BUNDLE_NAME = "com.orvane.tyra.aerostash";
constexpr const char *ABILITY_NAME = "DriveServiceAbility";

// Longer than any request takes, unless it waits for a client that does not answer.
constexpr std::chrono::seconds FINISH_TIME(10);

std::atomic<Host::AbilityServer *> g_server{nullptr};

void StopServer(int)
{
    if (Host::AbilityServer *server = g_server.load()) {
        server->Stop();
    }
}

// Each client takes about ten descriptors; the usual limit is made for programs that serve nobody.
void RaiseDescriptorLimit()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < limit.rlim_max) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

int Serve(const DriveService::ServeOptions &options)
{
    RaiseDescriptorLimit();
    // Never destroyed: requests may still be under way on IPC threads when the server has stopped.
    static auto *instance = new ServiceInstance(options.dataFolder, options.userId, DriveService::SystemNowMs);
    Host::AbilityServerOptions serverOptions;
    serverOptions.bundleName = BUNDLE_NAME;
    serverOptions.abilityName = ABILITY_NAME;
    serverOptions.userId = options.userId;
    serverOptions.idleTimeout = std::chrono::seconds(options.idleSeconds);
    serverOptions.beforeClose = [] {
        if (!DriveService::RequestPool::Get().Finish(FINISH_TIME)) {
            DriveService::LogError("the service ends although requests are still being answered");
        }
    };
    // Nor is this: a signal's handler may still use it, on any thread.
    static auto *server = new Host::AbilityServer(serverOptions, new DriveServiceStub(instance->Router()));
    g_server = server;
    std::signal(SIGINT, StopServer);
    std::signal(SIGTERM, StopServer);
    std::string error;
    bool started = server->Start(error);
    if (started) {
        server->Run();
    } else {
        std::cerr << "nubis-drive-service: " << error << "\n";
    }
    if (!instance->GetNotifier().Finish(FINISH_TIME)) {
        DriveService::LogError("the service ends with notifications unsent; the next one sends them");
    }
    return started ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    // Everything that the service keeps is its user's alone.
    umask(S_IRWXG | S_IRWXO);
    // Requests may still be under way when main returns; the random generator must not be taken from them.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
    return DriveService::RunCommandLine(argc, argv, std::cout, std::cerr, Serve);
}
