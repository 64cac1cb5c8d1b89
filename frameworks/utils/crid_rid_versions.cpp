// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// The versions that carry the upid as it is: D, E, I, J and K.

#include "crid.h"

#include <utility>
#include <vector>

#include "byte_buffer.h"
#include "crid_bytes.h"
#include "log.h"

namespace Nubis {
namespace {
// D and K: the tag and the characters in which the upid is read; the rid begins behind them.
constexpr size_t UPID_CHARS = 12;
constexpr size_t UPID_RID_START = 1 + UPID_CHARS;
// E: the tag and 20 bytes.
constexpr size_t V4_LENGTH = 28;
// I: the tag and 12 bytes; the rid begins behind them.
constexpr size_t V8_HEAD_CHARS = 16;
constexpr size_t V8_RID_START = 1 + V8_HEAD_CHARS;
// J: the tag and 28 bytes.
constexpr size_t V9_LENGTH = 39;

struct UpidAndRid {
    uint64_t upid;
    std::string rid;
};

// D and K. False when the text is too short, of another tag, or holds no upid.
bool ReadUpidAndRid(const std::string &crid, char tag, UpidAndRid &parts)
{
    if (!CridBytes::HasPrefixShape(crid, tag, UPID_RID_START)) {
        return false;
    }
    std::vector<uint8_t> bytes = CridBytes::DecodeSpan(crid, 1, UPID_CHARS);
    if (bytes.size() < CridBytes::SIZE_64) {
        return false;
    }
    parts.upid = CridBytes::Read(bytes, 0, CridBytes::SIZE_64);
    parts.rid = crid.substr(UPID_RID_START);
    return true;
}
} // namespace

CridV3::CridV3(std::string crid, uint64_t upid, std::string rid) : Crid("D", std::move(crid), upid, std::move(rid))
{}

std::shared_ptr<CridV3> CridV3::Decode(uint64_t upid, const std::string &rid)
{
    std::shared_ptr<CridV3> object = DecodeCridOfUpid<CridV3>(upid, rid);
    if (object == nullptr) {
        NB_LOGE(
            "cridV3 decord failed, rid:%{public}s, upid:%{public}lu", rid.c_str(), static_cast<unsigned long>(upid));
    }
    return object;
}

std::shared_ptr<CridV3> CridV3::DecodeCrid(const std::string &crid)
{
    UpidAndRid parts = {};
    if (!ReadUpidAndRid(crid, 'D', parts)) {
        NB_LOGE("cridV3 decord crid failed, crid:%{public}s", crid.c_str());
        return nullptr;
    }
    return std::make_shared<CridV3>(crid, parts.upid, std::move(parts.rid));
}

CridV4::CridV4(std::string crid, uint64_t upid, uint32_t shortNumber, uint64_t longNumber)
    : Crid("E", std::move(crid), upid, ""), shortNumber_(shortNumber), longNumber_(longNumber)
{}

uint32_t CridV4::GetShortNumber() const
{
    return shortNumber_;
}

uint64_t CridV4::GetLongNumber() const
{
    return longNumber_;
}

std::shared_ptr<CridV4> CridV4::Decode(uint64_t upid, const std::string &rid)
{
    std::shared_ptr<CridV4> object = DecodeCridOfUpid<CridV4>(upid, rid);
    if (object == nullptr) {
        NB_LOGE(
            "cridV4 decord failed, rid:%{public}s, upid:%{public}lu", rid.c_str(), static_cast<unsigned long>(upid));
    }
    return object;
}

std::shared_ptr<CridV4> CridV4::DecodeCrid(const std::string &crid)
{
    constexpr size_t size = CridBytes::SIZE_64 + CridBytes::SIZE_32 + CridBytes::SIZE_64;
    std::vector<uint8_t> bytes;
    if (CridBytes::HasShape(crid, 'E', V4_LENGTH)) {
        bytes = CridBytes::DecodeSpan(crid, 1);
    }
    if (bytes.size() != size) {
        NB_LOGE("cridV4 decord crid failed, crid:%{public}s", crid.c_str());
        return nullptr;
    }
    uint64_t upid = CridBytes::Read(bytes, 0, CridBytes::SIZE_64);
    auto shortNumber = static_cast<uint32_t>(CridBytes::Read(bytes, CridBytes::SIZE_64, CridBytes::SIZE_32));
    uint64_t longNumber = CridBytes::Read(bytes, CridBytes::SIZE_64 + CridBytes::SIZE_32, CridBytes::SIZE_64);
    return std::make_shared<CridV4>(crid, upid, shortNumber, longNumber);
}

CridV8::CridV8(std::string crid, uint64_t upid, uint32_t number, std::string rid)
    : Crid("I", std::move(crid), upid, std::move(rid)), number_(number)
{}

uint32_t CridV8::GetNumber() const
{
    return number_;
}

std::shared_ptr<CridV8> CridV8::Decode(uint64_t upid, const std::string &rid)
{
    std::shared_ptr<CridV8> object = DecodeCridOfUpid<CridV8>(upid, rid);
    if (object == nullptr) {
        NB_LOGE(
            "cridV8 decord failed, rid:%{public}s, upid:%{public}lu", rid.c_str(), static_cast<unsigned long>(upid));
    }
    return object;
}

std::shared_ptr<CridV8> CridV8::DecodeCrid(const std::string &crid)
{
    std::vector<uint8_t> bytes;
    if (CridBytes::HasPrefixShape(crid, 'I', V8_RID_START)) {
        bytes = CridBytes::DecodeSpan(crid, 1, V8_HEAD_CHARS);
    }
    if (bytes.size() != CridBytes::SIZE_32 + CridBytes::SIZE_64) {
        NB_LOGE("cridV8 decord crid failed, crid:%{public}s", crid.c_str());
        return nullptr;
    }
    auto number = static_cast<uint32_t>(CridBytes::Read(bytes, 0, CridBytes::SIZE_32));
    uint64_t upid = CridBytes::Read(bytes, CridBytes::SIZE_32, CridBytes::SIZE_64);
    return std::make_shared<CridV8>(crid, upid, number, crid.substr(V8_RID_START));
}

CridV9::CridV9(std::string crid, uint64_t upid, uint32_t number, std::string rid)
    : Crid("J", std::move(crid), upid, std::move(rid)), number_(number)
{}

uint32_t CridV9::GetNumber() const
{
    return number_;
}

std::shared_ptr<CridV9> CridV9::Decode(uint64_t upid, const std::string &rid)
{
    std::shared_ptr<CridV9> object = DecodeCridOfUpid<CridV9>(upid, rid);
    if (object == nullptr) {
        NB_LOGE(
            "cridV9 decord failed, rid:%{public}s, upid:%{public}lu", rid.c_str(), static_cast<unsigned long>(upid));
    }
    return object;
}

std::shared_ptr<CridV9> CridV9::DecodeCrid(const std::string &crid)
{
    constexpr size_t idStart = CridBytes::SIZE_32 + CridBytes::SIZE_64;
    std::vector<uint8_t> bytes;
    if (CridBytes::HasShape(crid, 'J', V9_LENGTH)) {
        bytes = CridBytes::DecodeSpan(crid, 1);
    }
    if (bytes.size() != idStart + CridBytes::SIZE_ID) {
        // Version 7's text stands for this version too, on purpose.
        NB_LOGE("cridV7 decord crid failed, crid:%{public}s", crid.c_str());
        return nullptr;
    }
    auto number = static_cast<uint32_t>(CridBytes::Read(bytes, 0, CridBytes::SIZE_32));
    uint64_t upid = CridBytes::Read(bytes, CridBytes::SIZE_32, CridBytes::SIZE_64);
    std::string rid = ByteBuffer::ToHexString(bytes.data() + idStart, CridBytes::SIZE_ID);
    return std::make_shared<CridV9>(crid, upid, number, std::move(rid));
}

CridV10::CridV10(std::string crid, uint64_t upid, std::string rid) : Crid("K", std::move(crid), upid, std::move(rid))
{}

std::shared_ptr<CridV10> CridV10::Encode(uint64_t upid, const std::string &rid)
{
    return std::make_shared<CridV10>(CridBytes::EncodeWords('K', {upid}) + rid, upid, rid);
}

std::shared_ptr<CridV10> CridV10::Decode(uint64_t upid, const std::string &rid)
{
    std::shared_ptr<CridV10> object = DecodeCridOfUpid<CridV10>(upid, rid);
    if (object == nullptr) {
        NB_LOGE(
            "cridV10 decord failed, rid:%{public}s, upid:%{public}lu", rid.c_str(), static_cast<unsigned long>(upid));
    }
    return object;
}

std::shared_ptr<CridV10> CridV10::DecodeCrid(const std::string &crid)
{
    UpidAndRid parts = {};
    if (!ReadUpidAndRid(crid, 'K', parts)) {
        NB_LOGE("cridV10 decord crid failed, crid:%{public}s", crid.c_str());
        return nullptr;
    }
    return std::make_shared<CridV10>(crid, parts.upid, std::move(parts.rid));
}
} // namespace Nubis
