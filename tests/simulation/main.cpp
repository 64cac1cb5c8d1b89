// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Runs seeds, each in a process of its own, so that none meets the kits of another, and one that crashes or hangs is
// reported like one that fails.

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "account/push_key.h"
#include "simulation.h"

namespace {

constexpr unsigned SECONDS_OF_RUN = 120;

struct Options {
    std::vector<uint64_t> seeds;
    bool isTraced = false;
    bool isRepeated = false;
};

bool ReadOptions(int argc, char **argv, Options &options)
{
    uint64_t from = 1;
    uint64_t count = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        const char *value = i + 1 < argc ? argv[i + 1] : nullptr;
        if (name == "--trace") {
            options.isTraced = true;
        } else if (name == "--repeat") {
            options.isRepeated = true;
        } else if (value == nullptr) {
            return false;
        } else if (name == "--seed") {
            options.seeds.push_back(std::strtoull(argv[++i], nullptr, 10));
        } else if (name == "--from") {
            from = std::strtoull(argv[++i], nullptr, 10);
        } else if (name == "--count") {
            count = std::strtoull(argv[++i], nullptr, 10);
        } else if (name == "--list") {
            std::ifstream file(argv[++i]);
            for (std::string line; std::getline(file, line);) {
                if (!line.empty() && line[0] != '#') {
                    options.seeds.push_back(std::strtoull(line.c_str(), nullptr, 10));
                }
            }
        } else {
            return false;
        }
    }
    for (uint64_t i = 0; i < count; ++i) {
        options.seeds.push_back(from + i);
    }
    return !options.seeds.empty();
}

// Writes the trace to the descriptor, then what was wrong to standard output.
int RunSeed(uint64_t seed, const std::string &pushKey, int traceFd)
{
    // A run that hangs ends by the signal, with what it has written so far.
    alarm(SECONDS_OF_RUN);
    std::ostringstream trace;
    std::string problems;
    const Simulation::Plan plan(seed);
    // Lives on when something is wrong, because operations may still be under way.
    auto *simulation = new Simulation::Simulation(plan, pushKey, trace);
    try {
        problems = simulation->Run();
    } catch (const std::exception &failure) {
        problems = failure.what();
    }
    if (problems.empty()) {
        delete simulation;
    }
    const std::string text = trace.str();
    const bool isWritten = write(traceFd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    std::cout << problems << std::flush;
    return problems.empty() && isWritten ? 0 : 1;
}

// Runs the seed in a child. False when something was wrong.
bool RunChild(uint64_t seed, const std::string &pushKey, std::string &trace)
{
    std::FILE *file = std::tmpfile();
    if (file == nullptr) {
        return false;
    }
    const pid_t child = fork();
    if (child == 0) {
        int status = 1;
        try {
            status = RunSeed(seed, pushKey, fileno(file));
        } catch (const std::exception &failure) {
            std::cout << failure.what() << std::endl;
        }
        if (status != 0) {
            _exit(status);
        }
        std::exit(status);
    }
    int status = -1;
    waitpid(child, &status, 0);
    std::rewind(file);
    char buffer[4096];
    for (size_t length = 0; (length = std::fread(buffer, 1, sizeof(buffer), file)) > 0;) {
        trace.append(buffer, length);
    }
    std::fclose(file);
    if (WIFSIGNALED(status)) {
        std::cout << "ended by signal " << WTERMSIG(status) << "\n";
    }
    return status == 0;
}

// The orders and what was to strike are the same each time. So are the fates, request by request, but how many requests
// leave, and which comes first, is for the threads to decide.
bool IsSameRun(const std::string &first, const std::string &second)
{
    std::istringstream firstLines(first);
    std::istringstream secondLines(second);
    std::string one;
    std::string other;
    while (std::getline(firstLines, one)) {
        if (!std::getline(secondLines, other)) {
            return false;
        }
        const size_t length = one.rfind("fates ", 0) == 0 ? std::min(one.size(), other.size()) : std::string::npos;
        if (one.substr(0, length) != other.substr(0, length)) {
            return false;
        }
    }
    return !std::getline(secondLines, other);
}

std::string MakePushKey()
{
    std::string folder = (std::filesystem::temp_directory_path() / "nubis-key-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        return "";
    }
    const std::string path = folder + "/key.pem";
    DriveService::PushKey(path).Id();
    std::ostringstream key;
    key << std::ifstream(path).rdbuf();
    std::filesystem::remove_all(folder);
    return key.str();
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    if (!ReadOptions(argc, argv, options)) {
        std::cerr << "usage: " << argv[0] << " [--seed N]... [--from N --count N] [--list FILE] [--trace] [--repeat]\n";
        return 2;
    }
    // In memory where the machine has room for it there: a run writes much and keeps nothing.
    if (access("/dev/shm", W_OK) == 0) {
        setenv("TMPDIR", "/dev/shm", 0);
    }
    setenv("NUBIS_LOG_LEVEL", "none", 0);
    const std::string pushKey = MakePushKey();
    size_t failures = 0;
    for (const uint64_t seed : options.seeds) {
        std::string trace;
        std::string again;
        bool isGood = RunChild(seed, pushKey, trace);
        if (isGood && options.isRepeated) {
            isGood = RunChild(seed, pushKey, again);
            if (isGood && !IsSameRun(trace, again)) {
                std::cout << "the second run differs\n" << again;
                isGood = false;
            }
        }
        if (!isGood) {
            ++failures;
            std::cout << "seed " << seed << " failed; run it again with: " << argv[0] << " --seed " << seed << "\n";
        }
        if (options.isTraced || !isGood) {
            std::cout << trace << std::flush;
        }
    }
    std::cout << options.seeds.size() << " seeds, " << failures << " failed\n";
    return failures == 0 ? 0 : 1;
}
