// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Record ids and trace ids against the conversions of OpenSSL and libuuid that they are made of: prints one line of JSON
// for each row.

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <uuid/uuid.h>

#include "crid.h"
#include "harness.h"
#include "uuid_helper.h"

namespace {
using namespace NubisBench;

constexpr uint64_t UPID = 0x0123456789abcdef;
constexpr uint64_t NUMBER = 0xfedcba9876543210;
constexpr const char *HEX_ID = "00112233445566778899aabbccddeeff";
constexpr const char *RID = "a-record-id-of-the-app-0123456789";
constexpr size_t THREE_WORDS = 24;
constexpr size_t ONE_WORD = 8;
constexpr size_t ID_BYTES = 16;

// Every function returns what it made, so that nothing of it is left out by the compiler.
std::string Base64(size_t size)
{
    static const unsigned char bytes[THREE_WORDS] = {1, 2, 3};
    std::string text((size + 2) / 3 * 4, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char *>(text.data()), bytes, static_cast<int>(size));
    return text;
}

std::vector<unsigned char> FromBase64(size_t size)
{
    static const std::string text(THREE_WORDS / 3 * 4, 'A');
    const size_t length = (size + 2) / 3 * 4;
    std::vector<unsigned char> bytes(length / 4 * 3);
    EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char *>(text.data()), static_cast<int>(length));
    return bytes;
}

std::string Hex()
{
    static const unsigned char bytes[ID_BYTES] = {1, 2, 3};
    std::string text(2 * ID_BYTES + 1, '\0');
    size_t length = 0;
    OPENSSL_buf2hexstr_ex(text.data(), text.size(), &length, bytes, ID_BYTES, '\0');
    return text;
}

std::vector<unsigned char> FromHex()
{
    std::vector<unsigned char> bytes(ID_BYTES);
    size_t length = 0;
    OPENSSL_hexstr2buf_ex(bytes.data(), bytes.size(), &length, HEX_ID, '\0');
    return bytes;
}

template <typename Body>
std::function<void()> Once(Body body)
{
    return [body] { benchmark::DoNotOptimize(body()); };
}

template <typename Made>
std::string TextOf(const Made &crid)
{
    if (crid == nullptr) {
        throw std::runtime_error("no crid");
    }
    return crid->GetCrid();
}

struct Pair {
    Row row;
    std::function<void()> measured;
    std::function<void()> floor;
};

Row SmallRow(const std::string &id, const std::string &name, double goal, const std::string &floorName)
{
    return NewRow(id, name, goal, "library", floorName, "ns");
}

std::vector<Pair> MakePairs()
{
    using namespace Nubis;
    constexpr double cridGoal = 4;
    constexpr double traceGoal = 1.5;
    const std::string v0 = TextOf(CridV0::Encode(UPID, NUMBER));
    const std::string v1 = TextOf(CridV1::Encode(UPID, HEX_ID));
    const std::string v10 = TextOf(CridV10::Encode(UPID, RID));
    const auto row = [](const char *id, const char *name, const char *floor) {
        return SmallRow(id, name, cridGoal, floor);
    };
    return {
        {row("crid-0-encode", "crid version 0, encode", "Base64 and hex of the same bytes by OpenSSL"),
            Once([] { return CridV0::Encode(UPID, NUMBER); }),
            Once([] { return std::pair(Base64(THREE_WORDS), Hex()); })},
        {row("crid-0-decode", "crid version 0, decode", "Base64 and hex of the same bytes by OpenSSL"),
            Once([v0] { return CridV0::DecodeCrid(v0); }),
            Once([] { return std::pair(FromBase64(THREE_WORDS), Hex()); })},
        {row("crid-1-encode", "crid version 1, encode", "Base64 and hex of the same bytes by OpenSSL"),
            Once([] { return CridV1::Encode(UPID, HEX_ID); }),
            Once([] { return std::pair(FromHex(), Base64(THREE_WORDS)); })},
        {row("crid-1-decode", "crid version 1, decode", "Base64 and hex of the same bytes by OpenSSL"),
            Once([v1] { return CridV1::DecodeCrid(v1); }),
            Once([] { return std::pair(FromBase64(THREE_WORDS), Hex()); })},
        {row("crid-10-encode", "crid version 10, encode", "Base64 of the same bytes by OpenSSL"),
            Once([] { return CridV10::Encode(UPID, RID); }), Once([] { return Base64(ONE_WORD) + RID; })},
        {row("crid-10-decode", "crid version 10, decode", "Base64 of the same bytes by OpenSSL"),
            Once([v10] { return CridV10::DecodeCrid(v10); }),
            Once([] { return std::pair(FromBase64(ONE_WORD), std::string(RID)); })},
        {SmallRow("trace-id", "trace id", traceGoal, "one uuid_generate"),
            Once([] { return UuidHelper::GenerateTraceId(NB_SYNC_DEMON_DATA); }),
            [] {
                uuid_t uuid;
                uuid_generate(uuid);
                benchmark::DoNotOptimize(uuid);
            }},
    };
}

// Gathers the times of all repetitions by the names of the benchmarks.
class Gatherer : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context &) override
    {
        return true;
    }
    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            if (run.run_type == Run::RT_Iteration) {
                times[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
            }
        }
    }

    std::map<std::string, std::vector<double>> times;
};

void Register(const std::string &name, const Options &options, const std::function<void()> &body)
{
    auto *registered = benchmark::RegisterBenchmark(name.c_str(), [body](benchmark::State &state) {
        for (auto turn : state) {
            static_cast<void>(turn);
            body();
        }
    });
    registered->Repetitions(options.Pick(15, 2));
    registered->MinTime(options.isShort ? 0.001 : 0.05);
}
} // namespace

int main(int argc, char **argv)
{
    const Options options = ReadOptions(argc, argv);
    char program[] = "bench-small";
    char interleaved[] = "--benchmark_enable_random_interleaving=true";
    char *arguments[] = {program, interleaved, nullptr};
    int count = 2;
    benchmark::Initialize(&count, arguments);
    std::vector<Pair> pairs;
    for (Pair &pair : MakePairs()) {
        if (options.Wants(pair.row.id)) {
            Register(pair.row.id, options, pair.measured);
            Register(pair.row.id + " floor", options, pair.floor);
            pairs.push_back(std::move(pair));
        }
    }
    Gatherer gatherer;
    benchmark::RunSpecifiedBenchmarks(&gatherer);
    for (Pair &pair : pairs) {
        const auto &measured = gatherer.times[pair.row.id];
        const auto &floor = gatherer.times[pair.row.id + " floor"];
        for (size_t i = 0; i < measured.size(); ++i) {
            pair.row.rounds.emplace_back(measured[i], floor[i]);
        }
        Settle(pair.row);
        Print(pair.row);
    }
    return 0;
}
