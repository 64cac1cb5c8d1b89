// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "harness.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <sys/wait.h>
#include <thread>
#include <utility>

#include <json/value.h>
#include <json/writer.h>

namespace NubisBench {
namespace {
constexpr std::chrono::minutes PATIENCE(5);

[[noreturn]] void RefuseArguments(const char *program)
{
    std::cerr << "usage: " << program << " [--short] [--only TEXT]\n";
    std::exit(2);
}
} // namespace

bool Options::Wants(const std::string &rowId) const
{
    return rowId.find(only) != std::string::npos;
}

Options ReadOptions(int argc, char **argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--short") {
            options.isShort = true;
        } else if (argument == "--only" && i + 1 < argc) {
            options.only = argv[++i];
        } else if (argument == "--child" && i + 1 < argc) {
            options.child = argv[++i];
        } else {
            RefuseArguments(argv[0]);
        }
    }
    return options;
}

Row NewRow(
    std::string id, std::string name, double goal, std::string measuredName, std::string floorName, std::string unit)
{
    Row row;
    row.id = std::move(id);
    row.name = std::move(name);
    row.goal = goal;
    row.measuredName = std::move(measuredName);
    row.floorName = std::move(floorName);
    row.unit = std::move(unit);
    return row;
}

double Median(std::vector<double> values)
{
    if (values.empty()) {
        throw std::invalid_argument("no rounds");
    }
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

void Settle(Row &row)
{
    std::vector<double> measured;
    std::vector<double> floors;
    std::vector<double> ratios;
    for (const auto &[value, floor] : row.rounds) {
        measured.push_back(value);
        floors.push_back(floor);
        ratios.push_back(value / floor);
    }
    row.measured = Median(measured);
    row.floor = Median(floors);
    row.value = Median(ratios);
}

void Print(const Row &row)
{
    Json::Value json(Json::objectValue);
    json["id"] = row.id;
    json["name"] = row.name;
    json["goal"] = row.goal;
    json["atLeast"] = row.isAtLeast;
    json["value"] = row.value;
    json["measuredName"] = row.measuredName;
    json["floorName"] = row.floorName;
    json["unit"] = row.unit;
    json["measured"] = row.measured;
    json["floor"] = row.floor;
    json["rounds"] = Json::Value(Json::arrayValue);
    for (const auto &[value, floor] : row.rounds) {
        Json::Value round(Json::arrayValue);
        round.append(value);
        round.append(floor);
        json["rounds"].append(round);
    }
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["precision"] = 6;
    std::cout << Json::writeString(builder, json) << std::endl;
}

void Interleave(Row &row, int rounds, int slices, const std::function<double()> &measured,
    const std::function<double()> &floor, double scale)
{
    for (int round = -1; round < rounds; ++round) {
        double measuredSeconds = 0;
        double floorSeconds = 0;
        for (int slice = 0; slice < slices; ++slice) {
            const bool isMeasuredFirst = (round + slice) % 2 == 0;
            measuredSeconds += isMeasuredFirst ? measured() : 0;
            floorSeconds += floor();
            measuredSeconds += isMeasuredFirst ? 0 : measured();
        }
        if (round >= 0) {
            row.rounds.emplace_back(measuredSeconds / slices * scale, floorSeconds / slices * scale);
        }
    }
    Settle(row);
}

OwnThread::OwnThread() : thread_([this] { Work(); })
{}

OwnThread::~OwnThread()
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        isOver_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

double OwnThread::Run(const std::function<double()> &body)
{
    std::packaged_task<double()> task(body);
    auto result = task.get_future();
    {
        std::lock_guard<std::mutex> lock(mutex_);
        next_ = std::move(task);
    }
    changed_.notify_one();
    return result.get();
}

void OwnThread::Work()
{
    std::unique_lock<std::mutex> lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return isOver_ || next_.valid(); });
        if (isOver_) {
            return;
        }
        std::exchange(next_, {})();
    }
}

void Countdown::Done()
{
    if (--left_ == 0) {
        ended_.set_value();
    }
}

void Countdown::Wait()
{
    if (ended_.get_future().wait_for(PATIENCE) != std::future_status::ready) {
        throw std::runtime_error(std::to_string(left_) + " calls did not end");
    }
}

double CallsPerSecond(int threads, double seconds, const std::function<void(int)> &body)
{
    std::atomic<bool> isOver{false};
    std::atomic<uint64_t> calls{0};
    std::mutex mutex;
    std::exception_ptr failure;
    const auto run = [&](int number) {
        try {
            while (!isOver) {
                body(number);
                ++calls;
            }
        } catch (...) {
            std::lock_guard<std::mutex> lock(mutex);
            failure = std::current_exception();
        }
    };
    std::vector<std::thread> running;
    const Stopwatch watch;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back(run, i);
    }
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    // Read before the stop: what ends afterwards ends on threads that go one by one.
    const auto counted = static_cast<double>(calls);
    const double passed = watch.Seconds();
    isOver = true;
    for (auto &thread : running) {
        thread.join();
    }
    if (failure != nullptr) {
        std::rethrow_exception(failure);
    }
    return counted / passed;
}

std::string RunChild(const std::string &what, const Options &options)
{
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    const std::string command = "'" + program + "'" + (options.isShort ? " --short" : "") + " --child " + what;
    FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        throw std::runtime_error("cannot run " + command);
    }
    std::string output;
    std::array<char, 4096> buffer{};
    size_t count = 0;
    while ((count = fread(buffer.data(), 1, buffer.size(), pipe)) > 0) {
        output.append(buffer.data(), count);
    }
    const int status = pclose(pipe);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error(command + " failed");
    }
    return output;
}
} // namespace NubisBench
