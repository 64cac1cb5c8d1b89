// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "crid.h"

#include <utility>

namespace Nubis {
namespace {
template <typename T>
std::shared_ptr<Crid> DecodeAs(uint64_t upid, const std::string &rid)
{
    return T::Decode(upid, rid);
}

template <typename T>
std::shared_ptr<Crid> DecodeCridAs(const std::string &crid)
{
    return T::DecodeCrid(crid);
}
} // namespace

Crid::Crid(std::string version, std::string crid, uint64_t upid, std::string rid)
    : version_(std::move(version)), crid_(std::move(crid)), upid_(upid), rid_(std::move(rid))
{}

std::string Crid::GetVersion() const
{
    return version_;
}

std::string Crid::GetCrid() const
{
    return crid_;
}

uint64_t Crid::GetUpid() const
{
    return upid_;
}

std::string Crid::GetRid() const
{
    return rid_;
}

const Crid::DecodeTable &Crid::GetDecodeTable()
{
    static const DecodeTable *table = new DecodeTable{
        {'A', DecodeAs<CridV0>},
        {'B', DecodeAs<CridV1>},
        {'C', DecodeAs<CridV2>},
        {'D', DecodeAs<CridV3>},
        {'E', DecodeAs<CridV4>},
        {'F', DecodeAs<CridV5>},
        {'H', DecodeAs<CridV7>},
        {'I', DecodeAs<CridV8>},
        {'J', DecodeAs<CridV9>},
        {'K', DecodeAs<CridV10>},
    };
    return *table;
}

const Crid::DecodeCridTable &Crid::GetDecodeCridTable()
{
    static const DecodeCridTable *table = new DecodeCridTable{
        {'A', DecodeCridAs<CridV0>},
        {'B', DecodeCridAs<CridV1>},
        {'C', DecodeCridAs<CridV2>},
        {'D', DecodeCridAs<CridV3>},
        {'E', DecodeCridAs<CridV4>},
        {'F', DecodeCridAs<CridV5>},
        {'H', DecodeCridAs<CridV7>},
        {'I', DecodeCridAs<CridV8>},
        {'J', DecodeCridAs<CridV9>},
        {'K', DecodeCridAs<CridV10>},
    };
    return *table;
}
} // namespace Nubis
