// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// The versions whose ids are numbers: A, B, C, F and H, all of three 64-bit words.

#include "crid.h"

#include <utility>
#include <vector>

#include "byte_buffer.h"
#include "crid_bytes.h"
#include "log.h"
#include "uuid_helper.h"

namespace Nubis {
namespace {
constexpr uint32_t HALF_WORD_BITS = 32;

uint64_t RotateHalf(uint64_t value)
{
    return (value << HALF_WORD_BITS) | (value >> HALF_WORD_BITS);
}

struct ThreeWords {
    uint64_t first;
    uint64_t second;
    uint64_t third;
};

// False when the Base64 part does not hold three words.
bool ReadThreeWords(const std::string &crid, ThreeWords &words)
{
    constexpr size_t wordCount = 3;
    std::vector<uint8_t> bytes = CridBytes::DecodeSpan(crid, 1);
    words.first = CridBytes::Read(bytes, 0, CridBytes::SIZE_64);
    words.second = CridBytes::Read(bytes, CridBytes::SIZE_64, CridBytes::SIZE_64);
    words.third = CridBytes::Read(bytes, CridBytes::SIZE_64 + CridBytes::SIZE_64, CridBytes::SIZE_64);
    return bytes.size() == wordCount * CridBytes::SIZE_64;
}

struct IdHalves {
    uint64_t high;
    uint64_t low;
};

// Halves that the text is too short for are 0. False when the text is not just the two halves.
bool ReadIdHalves(const std::string &hexId, IdHalves &id)
{
    std::vector<uint8_t> bytes = ByteBuffer::HexStringToValueArray(hexId);
    id.high = CridBytes::Read(bytes, 0, CridBytes::SIZE_64);
    id.low = CridBytes::Read(bytes, CridBytes::SIZE_64, CridBytes::SIZE_64);
    return bytes.size() == CridBytes::SIZE_ID;
}

// The form that B, C and F share.
std::string EncodeIdHalves(char tag, uint64_t upid, const IdHalves &id)
{
    return CridBytes::EncodeWords(tag, {upid ^ id.low, id.high, id.low});
}
} // namespace

CridV0::CridV0(std::string crid, uint64_t upid, std::string rid, uint64_t id)
    : Crid("A", std::move(crid), upid, std::move(rid)), id_(id)
{}

uint64_t CridV0::GetId() const
{
    return id_;
}

std::shared_ptr<CridV0> CridV0::Encode(uint64_t upid, uint64_t id)
{
    uint64_t mask = RotateHalf(upid) ^ id;
    std::string crid = CridBytes::EncodeWords('A', {upid ^ id, mask, id});
    if (crid.size() != CridBytes::THREE_WORD_LENGTH) {
        return nullptr;
    }
    return std::make_shared<CridV0>(std::move(crid), upid, "A" + CridBytes::HexOfId(mask, id), id);
}

std::shared_ptr<CridV0> CridV0::Decode(uint64_t upid, const std::string &rid)
{
    if (!CridBytes::HasShape(rid, 'A', CridBytes::TAGGED_RID_LENGTH)) {
        NB_LOGE("crid decord rid failed, rid:%{public}s", rid.c_str());
        return nullptr;
    }
    IdHalves id = {};
    if (!ReadIdHalves(rid.substr(1), id) || id.high != (RotateHalf(upid) ^ id.low)) {
        NB_LOGE(
            "crid decord rid failed, rid:%{public}s, upid:%{public}lu", rid.c_str(), static_cast<unsigned long>(upid));
        return nullptr;
    }
    return Encode(upid, id.low);
}

std::shared_ptr<CridV0> CridV0::DecodeCrid(const std::string &crid)
{
    if (!CridBytes::HasShape(crid, 'A', CridBytes::THREE_WORD_LENGTH)) {
        NB_LOGE("crid decord crid failed, crid:%{public}s", crid.c_str());
        return nullptr;
    }
    ThreeWords words = {};
    if (!ReadThreeWords(crid, words) || words.second != (RotateHalf(words.first ^ words.third) ^ words.third)) {
        NB_LOGE("crid decord crid failed, crid is illegal. crid:%{public}s", crid.c_str());
        return nullptr;
    }
    std::string rid = "A" + CridBytes::HexOfId(words.second, words.third);
    return std::make_shared<CridV0>(crid, words.first ^ words.third, std::move(rid), words.third);
}

CridV1::CridV1(std::string crid, uint64_t upid, std::string rid, std::string hexId)
    : Crid("B", std::move(crid), upid, std::move(rid)), hexId_(std::move(hexId))
{}

std::string CridV1::GetHexId() const
{
    return hexId_;
}

std::shared_ptr<CridV1> CridV1::Encode(uint64_t upid, const std::string &hexId)
{
    IdHalves id = {};
    ReadIdHalves(hexId, id);
    return std::make_shared<CridV1>(EncodeIdHalves('B', upid, id), upid, "B" + hexId, hexId);
}

std::shared_ptr<CridV1> CridV1::Random(uint64_t upid)
{
    return Encode(upid, UuidHelper::GenerateUuidWithoutDelim());
}

std::shared_ptr<CridV1> CridV1::Decode(uint64_t upid, const std::string &rid)
{
    IdHalves id = {};
    if (!CridBytes::HasShape(rid, 'B', CridBytes::TAGGED_RID_LENGTH) || !ReadIdHalves(rid.substr(1), id)) {
        NB_LOGE("cridV1 decord rid failed, rid:%{public}s", rid.c_str());
        return nullptr;
    }
    return Encode(upid, rid.substr(1));
}

std::shared_ptr<CridV1> CridV1::DecodeCrid(const std::string &crid)
{
    ThreeWords words = {};
    if (!CridBytes::HasShape(crid, 'B', CridBytes::THREE_WORD_LENGTH) || !ReadThreeWords(crid, words)) {
        NB_LOGE("cridV1 decord crid failed, crid:%{public}s", crid.c_str());
        return nullptr;
    }
    std::string hexId = CridBytes::HexOfId(words.second, words.third);
    return std::make_shared<CridV1>(crid, words.first ^ words.third, "B" + hexId, hexId);
}

CridV2::CridV2(std::string crid, uint64_t upid, std::string rid) : Crid("C", std::move(crid), upid, std::move(rid))
{}

std::shared_ptr<CridV2> CridV2::Decode(uint64_t upid, const std::string &rid)
{
    IdHalves id = {};
    if (!CridBytes::HasShape(rid, 'C', CridBytes::TAGGED_RID_LENGTH) || !ReadIdHalves(rid.substr(1), id)) {
        NB_LOGE("cridV2 decord rid failed, rid:%{public}s", rid.c_str());
        return nullptr;
    }
    return std::make_shared<CridV2>(EncodeIdHalves('C', upid, id), upid, rid);
}

std::shared_ptr<CridV2> CridV2::DecodeCrid(const std::string &crid)
{
    ThreeWords words = {};
    if (!CridBytes::HasShape(crid, 'C', CridBytes::THREE_WORD_LENGTH) || !ReadThreeWords(crid, words)) {
        NB_LOGE("cridV2 decord crid failed, crid:%{public}s", crid.c_str());
        return nullptr;
    }
    return std::make_shared<CridV2>(
        crid, words.first ^ words.third, "B" + CridBytes::HexOfId(words.second, words.third));
}

CridV5::CridV5(std::string crid, uint64_t upid, std::string rid) : Crid("F", std::move(crid), upid, std::move(rid))
{}

std::shared_ptr<CridV5> CridV5::Encode(uint64_t upid, const std::string &hexId)
{
    IdHalves id = {};
    ReadIdHalves(hexId, id);
    return std::make_shared<CridV5>(EncodeIdHalves('F', upid, id), upid, hexId);
}

std::shared_ptr<CridV5> CridV5::Random(uint64_t upid)
{
    return Encode(upid, UuidHelper::GenerateUuidWithoutDelim());
}

std::shared_ptr<CridV5> CridV5::Decode(uint64_t upid, const std::string &rid)
{
    std::shared_ptr<CridV5> object = DecodeCridOfUpid<CridV5>(upid, rid);
    if (object == nullptr) {
        NB_LOGE(
            "cridV5 decord failed, rid:%{public}s, upid:%{public}lu", rid.c_str(), static_cast<unsigned long>(upid));
    }
    return object;
}

std::shared_ptr<CridV5> CridV5::DecodeCrid(const std::string &crid)
{
    ThreeWords words = {};
    if (!CridBytes::HasShape(crid, 'F', CridBytes::THREE_WORD_LENGTH) || !ReadThreeWords(crid, words)) {
        NB_LOGE("cridV5 decord crid failed, crid:%{public}s", crid.c_str());
        return nullptr;
    }
    return std::make_shared<CridV5>(crid, words.first ^ words.third, CridBytes::HexOfId(words.second, words.third));
}

CridV7::CridV7(std::string crid, uint64_t upid) : Crid("H", std::move(crid), upid, "")
{}

std::shared_ptr<CridV7> CridV7::Decode(uint64_t upid, const std::string &rid)
{
    std::shared_ptr<CridV7> object = DecodeCridOfUpid<CridV7>(upid, rid);
    if (object == nullptr) {
        NB_LOGE(
            "cridV7 decord failed, rid:%{public}s, upid:%{public}lu", rid.c_str(), static_cast<unsigned long>(upid));
    }
    return object;
}

std::shared_ptr<CridV7> CridV7::DecodeCrid(const std::string &crid)
{
    ThreeWords words = {};
    if (!CridBytes::HasShape(crid, 'H', CridBytes::THREE_WORD_LENGTH) || !ReadThreeWords(crid, words)) {
        NB_LOGE("cridV7 decord crid failed, crid:%{public}s", crid.c_str());
        return nullptr;
    }
    return std::make_shared<CridV7>(crid, words.first ^ words.third);
}
} // namespace Nubis
