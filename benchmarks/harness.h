// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_BENCH_HARNESS_H
#define NUBIS_BENCH_HARNESS_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// What every benchmark program does alike: options, rounds, medians, rows of the report as lines of JSON.
namespace NubisBench {
struct Options {
    // Everything is done once and small: shows that the programs work, says nothing about speed.
    bool isShort = false;
    // Rows whose id contains this; all when empty.
    std::string only;
    // What a program that starts itself again is to do; empty in the first one.
    std::string child;

    bool Wants(const std::string &rowId) const;
    // The first in a full run, the second in a short one.
    int Pick(int full, int small) const
    {
        return isShort ? small : full;
    }
};

// Ends the program with status 2 when the arguments are wrong.
Options ReadOptions(int argc, char **argv);

// One row of the table. What is judged is `value`.
struct Row {
    std::string id;
    std::string name;
    double goal = 0;
    // The value is to be at least the goal, not at most.
    bool isAtLeast = false;
    double value = 0;
    // What was measured, and what it is held against, in `unit`; medians of the rounds.
    std::string measuredName;
    std::string floorName;
    std::string unit;
    double measured = 0;
    double floor = 0;
    // Measured and floor of each round.
    std::vector<std::pair<double, double>> rounds;
};

// A row that is to be at most the goal; nothing is measured yet.
Row NewRow(
    std::string id, std::string name, double goal, std::string measuredName, std::string floorName, std::string unit);

double Median(std::vector<double> values);

// Fills in the medians, and the value: the median of the rounds' own ratios, which bears a machine whose speed changes
// between rounds.
void Settle(Row &row);
// Writes the row to standard output as one line of JSON.
void Print(const Row &row);

// Each round runs `slices` times measured() and floor() in turn, who begins changing each time, and adds up the seconds
// that they return. One round goes before and does not count. Fills in the rounds, in units of a second / `scale`.
void Interleave(Row &row, int rounds, int slices, const std::function<double()> &measured,
    const std::function<double()> &floor, double scale);

// A thread on which a floor runs from round to round, with a part of the heap of its own: on the main thread it would find
// what the library's callers have left there, on a new one each time what its workers have.
class OwnThread {
public:
    OwnThread();
    ~OwnThread();
    OwnThread(const OwnThread &) = delete;
    OwnThread &operator=(const OwnThread &) = delete;

    // Runs it there and waits for its end.
    double Run(const std::function<double()> &body);

private:
    void Work();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::packaged_task<double()> next_;
    bool isOver_ = false;
    std::thread thread_;
};

class Stopwatch {
public:
    double Seconds() const
    {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Counts calls that end on other threads. Shared by the one who waits and those who end.
class Countdown {
public:
    explicit Countdown(size_t count) : left_(count)
    {}
    void Done();
    // Once. Throws when they do not end in time.
    void Wait();

private:
    std::atomic<size_t> left_;
    std::promise<void> ended_;
};

// Runs body(thread number) on so many threads until a time has passed, each again and again. Returns runs per second.
double CallsPerSecond(int threads, double seconds, const std::function<void(int)> &body);

// Starts this program again with --child WHAT and returns what it wrote. Throws when it fails.
std::string RunChild(const std::string &what, const Options &options);
} // namespace NubisBench

#endif // NUBIS_BENCH_HARNESS_H
