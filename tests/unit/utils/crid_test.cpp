// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "crid.h"

#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "base64.h"
#include "byte_buffer.h"
#include "log_capture.h"

using namespace Nubis;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
// A crid as the service makes it: the tag and the bytes of these hexadecimal texts.
std::string ServiceCrid(char tag, const std::string &hex, const std::string &rid = "")
{
    std::string crid(1, tag);
    Base64UrlEncode(ByteBuffer::HexStringToValueArray(hex), crid);
    return crid + rid;
}

std::string Hex64(uint64_t value)
{
    char text[17] = {0};
    snprintf(text, sizeof(text), "%016llx", static_cast<unsigned long long>(value));
    return text;
}

constexpr uint64_t UPID = 0x0123456789ABCDEF;
const std::string UPID_HEX = "0123456789abcdef";
const std::string ID_HEX = "00112233445566778899aabbccddeeff";
} // namespace

TEST(Crid, Version0LaysOutTheWordsMostSignificantFirst)
{
    auto crid = CridV0::Encode(UPID, 1);
    EXPECT_EQ(crid->GetRid(), "A89abcdef01234566"
                              "0000000000000001");
    EXPECT_EQ(crid->GetCrid(), ServiceCrid('A', "0123456789abcdee"
                                                "89abcdef01234566"
                                                "0000000000000001"));
    EXPECT_EQ(crid->GetVersion(), "A");
}

RC_GTEST_PROP(Crid, Version0ComesBackBothWays, (uint64_t upid, uint64_t id))
{
    auto made = CridV0::Encode(upid, id);
    auto fromCrid = CridV0::DecodeCrid(made->GetCrid());
    RC_ASSERT(fromCrid != nullptr);
    RC_ASSERT(fromCrid->GetUpid() == upid && fromCrid->GetId() == id && fromCrid->GetRid() == made->GetRid());
    auto fromRid = CridV0::Decode(upid, made->GetRid());
    RC_ASSERT(fromRid != nullptr);
    RC_ASSERT(fromRid->GetCrid() == made->GetCrid());
    RC_ASSERT(CridV0::Decode(upid + 1, made->GetRid()) == nullptr);
}

TEST(Crid, Version0RefusesWhatItDidNotMake)
{
    NubisTest::LogCapture log;
    const std::string good = CridV0::Encode(UPID, 5)->GetCrid();
    std::string altered = good;
    altered[15] = altered[15] == 'A' ? 'B' : 'A';
    EXPECT_EQ(CridV0::DecodeCrid(altered), nullptr);
    EXPECT_THAT(log.TakeErrors(), ElementsAre("crid decord crid failed, crid is illegal. crid:" + altered));
    for (const std::string &bad : {good.substr(1), good + "A", "B" + good.substr(1), std::string()}) {
        EXPECT_EQ(CridV0::DecodeCrid(bad), nullptr);
        EXPECT_THAT(log.TakeErrors(), ElementsAre("crid decord crid failed, crid:" + bad));
    }
    EXPECT_EQ(CridV0::DecodeCrid("A" + std::string(32, '=')), nullptr);

    const std::string rid = CridV0::Encode(1, 5)->GetRid();
    log.TakeErrors();
    EXPECT_EQ(CridV0::Decode(2, rid), nullptr);
    EXPECT_THAT(log.TakeErrors(), ElementsAre("crid decord rid failed, rid:" + rid + ", upid:2"));
    EXPECT_EQ(CridV0::Decode(1, rid + "0"), nullptr);
    EXPECT_THAT(log.TakeErrors(), ElementsAre("crid decord rid failed, rid:" + rid + "0"));
    EXPECT_EQ(CridV0::Decode(0, "A" + std::string(32, 'z')), nullptr);
}

RC_GTEST_PROP(Crid, Versions1And5ComeBackFromTheirCrids, (uint64_t upid, uint64_t high, uint64_t low))
{
    const std::string hexId = Hex64(high) + Hex64(low);
    auto first = CridV1::Encode(upid, hexId);
    RC_ASSERT(first->GetRid() == "B" + hexId);
    RC_ASSERT(first->GetCrid() == ServiceCrid('B', Hex64(upid ^ low) + hexId));
    auto decoded = CridV1::DecodeCrid(first->GetCrid());
    RC_ASSERT(decoded->GetUpid() == upid && decoded->GetRid() == "B" + hexId && decoded->GetHexId() == hexId);
    RC_ASSERT(CridV1::Decode(upid, first->GetRid())->GetCrid() == first->GetCrid());

    auto fifth = CridV5::Encode(upid, hexId);
    RC_ASSERT(fifth->GetRid() == hexId);
    RC_ASSERT(fifth->GetCrid() == "F" + first->GetCrid().substr(1));
    auto fifthDecoded = CridV5::Decode(upid, fifth->GetCrid());
    RC_ASSERT(fifthDecoded->GetUpid() == upid && fifthDecoded->GetRid() == hexId);
    RC_ASSERT(CridV5::Decode(upid + 1, fifth->GetCrid()) == nullptr);
}

TEST(Crid, RandomIdsDifferAndBelongToTheirUpid)
{
    EXPECT_NE(CridV1::Random(UPID)->GetCrid(), CridV1::Random(UPID)->GetCrid());
    EXPECT_EQ(CridV1::DecodeCrid(CridV1::Random(UPID)->GetCrid())->GetUpid(), UPID);
    EXPECT_EQ(CridV5::DecodeCrid(CridV5::Random(UPID)->GetCrid())->GetUpid(), UPID);
}

TEST(Crid, ShortIdsCountAsZeroWhenEncoded)
{
    NubisTest::LogCapture log;
    EXPECT_EQ(CridV1::Encode(UPID, "")->GetCrid(), ServiceCrid('B', UPID_HEX + std::string(32, '0')));
    EXPECT_EQ(
        CridV5::Encode(UPID, "0102")->GetCrid(), ServiceCrid('F', UPID_HEX + "0000000000000102" + "0000000000000000"));
}

TEST(Crid, Version2DisagreesWithItselfAboutTheTagOfTheRid)
{
    auto fromRid = CridV2::Decode(UPID, "C" + ID_HEX);
    ASSERT_NE(fromRid, nullptr);
    EXPECT_EQ(fromRid->GetRid(), "C" + ID_HEX);
    EXPECT_EQ(fromRid->GetCrid(), "C" + CridV1::Encode(UPID, ID_HEX)->GetCrid().substr(1));
    auto fromCrid = CridV2::DecodeCrid(fromRid->GetCrid());
    EXPECT_EQ(fromCrid->GetRid(), "B" + ID_HEX);
    EXPECT_EQ(fromCrid->GetUpid(), UPID);
    EXPECT_EQ(fromCrid->GetVersion(), "C");
}

TEST(Crid, Version10LosesTheFirstCharacterOfTheRid)
{
    auto made = CridV10::Encode(UPID, "xyz");
    EXPECT_EQ(made->GetRid(), "xyz");
    EXPECT_EQ(made->GetCrid(), ServiceCrid('K', UPID_HEX, "xyz"));
    auto decoded = CridV10::Decode(UPID, made->GetCrid());
    ASSERT_NE(decoded, nullptr);
    EXPECT_EQ(decoded->GetRid(), "yz");
    // A first character outside the alphabet ends the upid's span early, which must not matter.
    EXPECT_EQ(CridV10::DecodeCrid(CridV10::Encode(UPID, "/yz")->GetCrid())->GetUpid(), UPID);
    EXPECT_EQ(CridV10::DecodeCrid("K" + std::string(11, 'A')), nullptr);
    EXPECT_EQ(CridV3::DecodeCrid("D" + made->GetCrid().substr(1))->GetRid(), "yz");
}

TEST(Crid, ReadsTheFormsThatOnlyTheServiceMakes)
{
    auto fourth = CridV4::Decode(UPID, ServiceCrid('E', UPID_HEX + "01020304" + "1112131415161718"));
    ASSERT_NE(fourth, nullptr);
    EXPECT_EQ(fourth->GetShortNumber(), 0x01020304U);
    EXPECT_EQ(fourth->GetLongNumber(), 0x1112131415161718U);

    auto seventh = CridV7::Decode(UPID ^ 2, ServiceCrid('H', UPID_HEX + "ffffffffffffffff" + "0000000000000002"));
    ASSERT_NE(seventh, nullptr);
    EXPECT_EQ(seventh->GetUpid(), UPID ^ 2);

    auto eighth = CridV8::Decode(UPID, ServiceCrid('I', "ffffffff" + UPID_HEX, "the rid"));
    ASSERT_NE(eighth, nullptr);
    EXPECT_EQ(eighth->GetNumber(), 0xFFFFFFFFU);
    EXPECT_EQ(eighth->GetRid(), "the rid");

    auto ninth = CridV9::Decode(UPID, ServiceCrid('J', "00000007" + UPID_HEX + ID_HEX));
    ASSERT_NE(ninth, nullptr);
    EXPECT_EQ(ninth->GetNumber(), 7U);
    EXPECT_EQ(ninth->GetRid(), ID_HEX);
}

RC_GTEST_PROP(Crid, EveryVersionCarriesAnyUpidAndRefusesAnother, (uint64_t upid, uint64_t high, uint64_t low))
{
    const std::string upidHex = Hex64(upid);
    const std::string id = Hex64(high) + Hex64(low);
    const std::string words = Hex64(upid ^ low) + id;
    const std::map<char, std::string> crids{
        {'A', CridV0::Encode(upid, low)->GetCrid()},
        {'B', ServiceCrid('B', words)},
        {'C', ServiceCrid('C', words)},
        {'D', ServiceCrid('D', upidHex, "x" + id)},
        {'E', ServiceCrid('E', upidHex + "00000001" + Hex64(low))},
        {'F', ServiceCrid('F', words)},
        {'H', ServiceCrid('H', words)},
        {'I', ServiceCrid('I', "00000002" + upidHex, id)},
        {'J', ServiceCrid('J', "00000003" + upidHex + id)},
        {'K', ServiceCrid('K', upidHex, "x" + id)},
    };
    RC_ASSERT(crids.size() == Crid::GetDecodeCridTable().size());
    RC_ASSERT(crids.size() == Crid::GetDecodeTable().size());
    for (const auto &[tag, crid] : crids) {
        const auto decoded = Crid::GetDecodeCridTable().at(tag)(crid);
        RC_ASSERT(decoded != nullptr);
        RC_ASSERT(decoded->GetUpid() == upid);
        RC_ASSERT(decoded->GetCrid() == crid);
        RC_ASSERT(decoded->GetVersion() == std::string(1, tag));
        // The versions after 2 are told apart from another user's by the crid itself.
        if (tag > 'C') {
            const auto &decode = Crid::GetDecodeTable().at(tag);
            RC_ASSERT(decode(upid, crid) != nullptr);
            RC_ASSERT(decode(upid + 1, crid) == nullptr);
        }
    }
}

TEST(Crid, EachVersionNamesItsFailuresInItsOwnWords)
{
    NubisTest::LogCapture log;
    const std::string words[][3] = {{"B", "cridV1 decord crid failed, crid:", ""},
        {"C", "cridV2 decord crid failed, crid:", ""},
        {"D", "cridV3 decord crid failed, crid:", "cridV3 decord failed"},
        {"E", "cridV4 decord crid failed, crid:", "cridV4 decord failed"},
        {"F", "cridV5 decord crid failed, crid:", "cridV5 decord failed"},
        {"H", "cridV7 decord crid failed, crid:", "cridV7 decord failed"},
        {"I", "cridV8 decord crid failed, crid:", "cridV8 decord failed"},
        {"J", "cridV7 decord crid failed, crid:", "cridV9 decord failed"},
        {"K", "cridV10 decord crid failed, crid:", "cridV10 decord failed"}};
    for (const auto &[tag, cridWords, ridWords] : words) {
        const std::string bad = tag + "short";
        EXPECT_EQ(Crid::GetDecodeCridTable().at(tag[0])(bad), nullptr);
        EXPECT_THAT(log.TakeErrors(), ElementsAre(cridWords + bad));
        if (!ridWords.empty()) {
            EXPECT_EQ(Crid::GetDecodeTable().at(tag[0])(7, bad), nullptr);
            EXPECT_THAT(log.TakeErrors(), ElementsAre(cridWords + bad, ridWords + ", rid:" + bad + ", upid:7"));
        }
    }
    EXPECT_EQ(CridV1::Decode(7, "Bshort"), nullptr);
    EXPECT_EQ(CridV2::Decode(7, "B" + ID_HEX), nullptr);
    EXPECT_THAT(log.TakeErrors(),
        ElementsAre("cridV1 decord rid failed, rid:Bshort", "cridV2 decord rid failed, rid:B" + ID_HEX));
}

RC_GTEST_PROP(Crid, NoTextMakesADecoderFailBadly, (const std::string &body, uint64_t upid))
{
    for (const auto &[tag, decode] : Crid::GetDecodeCridTable()) {
        for (size_t length : {body.size(), size_t{12}, size_t{16}, size_t{27}, size_t{32}, size_t{38}}) {
            std::string crid = tag + body;
            crid.resize(length + 1, 'x');
            auto object = decode(crid);
            if (object != nullptr) {
                RC_ASSERT(object->GetCrid() == crid);
            }
            Crid::GetDecodeTable().at(tag)(upid, crid);
        }
    }
}
