// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_REPORT_H
#define NUBIS_TOOL_DEMO_REPORT_H

#include <cstddef>
#include <string>
#include <vector>

#include <json/json.h>

#include "console.h"

namespace NubisTool {

// What the demo tells: headed steps with aligned numbers for people, or one JSON document at the end. Steps are written
// as they happen.
class DemoReport {
public:
    DemoReport(const Console &console, bool json);

    void Title(const std::string &text);
    void Step(const std::string &heading);
    // A number with what it counts, and its unit behind it.
    void Number(const std::string &label, size_t number, const std::string &unit = "");
    void Seconds(const std::string &label, double seconds, size_t records = 0);
    // What somebody was told, as it was said.
    void Text(const std::string &label, const std::string &text);
    // An expectation and whether it held; a few of the differences when it did not.
    void Check(const std::string &expectation, bool held, const std::vector<std::string> &differences = {});

    // Whether every check held.
    bool Held() const;
    // The outcome, as the last line or as the JSON document.
    void Finish(double seconds);

private:
    const Console &console_;
    bool isJson_;
    bool held_ = true;
    int steps_ = 0;
    Json::Value json_;
};

// The texts of a JSON array, sorted.
std::vector<std::string> SortedIds(const Json::Value &ids);

// What is in only one of two sorted lists, as lines.
std::vector<std::string> IdDifferences(const std::vector<std::string> &sent, const std::vector<std::string> &received);

} // namespace NubisTool

#endif
