// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_report.h"

#include <algorithm>
#include <iomanip>
#include <iterator>
#include <ostream>
#include <sstream>

#include "record_json.h"
#include "table.h"

namespace NubisTool {
namespace {

constexpr size_t LABEL_WIDTH = 42;
constexpr int NUMBER_WIDTH = 12;
constexpr size_t MOST_DIFFERENCES = 5;

std::string Padded(const std::string &label)
{
    size_t width = DisplayWidth(label);
    return label + std::string(width < LABEL_WIDTH ? LABEL_WIDTH - width : 0, ' ');
}

} // namespace

DemoReport::DemoReport(const Console &console, bool json) : console_(console), isJson_(json), json_(Json::objectValue)
{
    json_["steps"] = Json::Value(Json::arrayValue);
}

void DemoReport::Title(const std::string &text)
{
    if (!isJson_) {
        console_.out << text << '\n' << std::flush;
    }
}

void DemoReport::Step(const std::string &heading)
{
    ++steps_;
    Json::Value step(Json::objectValue);
    step["heading"] = heading;
    json_["steps"].append(step);
    if (!isJson_) {
        console_.out << '\n' << steps_ << ". " << heading << '\n' << std::flush;
    }
}

void DemoReport::Number(const std::string &label, size_t number, const std::string &unit)
{
    json_["steps"][steps_ - 1][label] = Json::UInt64(number);
    if (!isJson_) {
        console_.out << "   " << Padded(label) << std::setw(NUMBER_WIDTH) << number << (unit.empty() ? "" : " ") << unit
                     << '\n'
                     << std::flush;
    }
}

void DemoReport::Seconds(const std::string &label, double seconds, size_t records)
{
    json_["steps"][steps_ - 1][label] = seconds;
    if (isJson_) {
        return;
    }
    std::ostringstream line;
    line << "   " << Padded(label) << std::setw(NUMBER_WIDTH) << std::fixed << std::setprecision(3) << seconds << " s";
    if (records > 0 && seconds > 0) {
        line << "  (" << static_cast<size_t>(static_cast<double>(records) / seconds) << " records/s)";
    }
    console_.out << line.str() << '\n' << std::flush;
}

void DemoReport::Text(const std::string &label, const std::string &text)
{
    json_["steps"][steps_ - 1][label] = text;
    if (!isJson_) {
        console_.out << "   " << label << ": " << text << '\n' << std::flush;
    }
}

void DemoReport::Check(const std::string &expectation, bool held, const std::vector<std::string> &differences)
{
    held_ = held_ && held;
    Json::Value check(Json::objectValue);
    check["expectation"] = expectation;
    check["held"] = held;
    for (size_t i = 0; i < std::min(differences.size(), MOST_DIFFERENCES); ++i) {
        check["differences"].append(differences[i]);
    }
    json_["steps"][steps_ - 1]["checks"].append(check);
    if (isJson_) {
        return;
    }
    console_.out << "   " << (held ? "[holds] " : "[FAILS] ") << expectation << '\n';
    for (const Json::Value &difference : check["differences"]) {
        console_.out << "           " << difference.asString() << '\n';
    }
    if (differences.size() > MOST_DIFFERENCES) {
        console_.out << "           ... and " << differences.size() - MOST_DIFFERENCES << " more\n";
    }
    console_.out << std::flush;
}

bool DemoReport::Held() const
{
    return held_;
}

void DemoReport::Finish(double seconds)
{
    json_["held"] = held_;
    json_["seconds"] = seconds;
    if (isJson_) {
        console_.out << PrettyText(json_) << '\n';
        return;
    }
    console_.out << '\n'
                 << (held_ ? "Everything held" : "NOT everything held: see [FAILS] above") << ", after " << std::fixed
                 << std::setprecision(1) << seconds << " s.\n";
}

std::vector<std::string> SortedIds(const Json::Value &ids)
{
    std::vector<std::string> sorted;
    for (const Json::Value &id : ids) {
        sorted.push_back(id.isString() ? id.asString() : "?");
    }
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

std::vector<std::string> IdDifferences(const std::vector<std::string> &sent, const std::vector<std::string> &received)
{
    std::vector<std::string> missing;
    std::vector<std::string> surplus;
    std::set_difference(sent.begin(), sent.end(), received.begin(), received.end(), std::back_inserter(missing));
    std::set_difference(received.begin(), received.end(), sent.begin(), sent.end(), std::back_inserter(surplus));
    std::vector<std::string> lines;
    lines.reserve(missing.size() + surplus.size());
    for (const std::string &id : missing) {
        lines.push_back(id + " did not arrive");
    }
    for (const std::string &id : surplus) {
        lines.push_back(id + " arrived, though it was not sent or sent once only");
    }
    return lines;
}

} // namespace NubisTool
