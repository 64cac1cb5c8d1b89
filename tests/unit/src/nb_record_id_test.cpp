// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_record_id.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "log_capture.h"

namespace Nubis {
namespace {
std::string HexId(uint64_t high, uint64_t low)
{
    const std::string digits = "0123456789abcdef";
    std::string text;
    for (uint64_t half : {high, low}) {
        for (int shift = 60; shift >= 0; shift -= 4) {
            text.push_back(digits[(half >> shift) & 15U]);
        }
    }
    return text;
}

RC_GTEST_PROP(NBRecordId, DecodesWhatItEncodes, (uint64_t upid, uint64_t high, uint64_t low))
{
    const std::string hexId = HexId(high, low);
    // The last version gives its record id back without the first character.
    const std::vector<std::pair<int, std::string>> forms = {
        {0, std::to_string(low)}, {1, hexId}, {5, hexId}, {10, "x" + hexId}};
    for (const auto &[version, id] : forms) {
        NBRecordId made;
        RC_ASSERT(EncodeRecordId(version, upid, id, made));
        NBRecordId taken;
        RC_ASSERT(DecodeRecordId(made.crid, taken));
        RC_ASSERT(taken.version == version);
        RC_ASSERT(taken.upid == upid);
        RC_ASSERT(taken.crid == made.crid);
        RC_ASSERT(taken.recordId == (version == 10 ? hexId : made.recordId));
    }
}

RC_GTEST_PROP(NBRecordId, NoTextIsDecodedIntoSomethingElseThanItself, (const std::string &text))
{
    NubisTest::LogCapture silence;
    for (const std::string &crid : {text, "A" + text, "K" + text, "J" + text}) {
        NBRecordId id;
        id.version = 77;
        if (DecodeRecordId(crid, id)) {
            RC_ASSERT(id.crid == crid);
            RC_ASSERT(id.version == crid[0] - 'A');
        } else {
            RC_ASSERT(id.version == 77);
        }
    }
}

TEST(NBRecordId, RefusesWhatAVersionDoesNotTake)
{
    const std::vector<std::pair<int, std::string>> wrong = {{0, ""}, {0, "-1"}, {0, "1x"}, {0, "18446744073709551616"},
        {1, "abc"}, {1, std::string(31, '0') + "g"}, {5, std::string(33, '0')}, {10, ""}, {2, HexId(1, 2)}, {-1, "1"},
        {11, "1"}};
    for (const auto &[version, id] : wrong) {
        NBRecordId out;
        EXPECT_FALSE(EncodeRecordId(version, 1, id, out)) << version << " " << id;
        EXPECT_TRUE(out.crid.empty());
    }
}
} // namespace
} // namespace Nubis
