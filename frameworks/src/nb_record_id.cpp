// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_record_id.h"

#include <charconv>
#include <memory>

#include "crid.h"

namespace Nubis {
namespace {
constexpr char FIRST_TAG = 'A';
constexpr size_t HEX_ID_LENGTH = 32;

bool IsHexId(const std::string &id)
{
    return id.size() == HEX_ID_LENGTH && id.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

std::shared_ptr<Crid> EncodeNumber(uint64_t upid, const std::string &id)
{
    uint64_t number = 0;
    const char *end = id.data() + id.size();
    auto result = std::from_chars(id.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end) {
        return nullptr;
    }
    return CridV0::Encode(upid, number);
}

std::shared_ptr<Crid> Encode(int version, uint64_t upid, const std::string &id)
{
    if (version == 0) {
        return EncodeNumber(upid, id);
    }
    if (version == 1 && IsHexId(id)) {
        return CridV1::Encode(upid, id);
    }
    if (version == 5 && IsHexId(id)) {
        return CridV5::Encode(upid, id);
    }
    if (version == 10 && !id.empty()) {
        return CridV10::Encode(upid, id);
    }
    return nullptr;
}

bool Fill(const std::shared_ptr<Crid> &crid, NBRecordId &out)
{
    if (crid == nullptr) {
        return false;
    }
    out.crid = crid->GetCrid();
    out.version = out.crid[0] - FIRST_TAG;
    out.upid = crid->GetUpid();
    out.recordId = crid->GetRid();
    return true;
}
} // namespace

bool DecodeRecordId(const std::string &crid, NBRecordId &out)
{
    const auto &decoders = Crid::GetDecodeCridTable();
    auto decoder = crid.empty() ? decoders.end() : decoders.find(crid[0]);
    return decoder != decoders.end() && Fill(decoder->second(crid), out);
}

bool EncodeRecordId(int version, uint64_t upid, const std::string &id, NBRecordId &out)
{
    return Fill(Encode(version, upid, id), out);
}
} // namespace Nubis
