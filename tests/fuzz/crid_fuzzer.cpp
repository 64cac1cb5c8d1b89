// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "crid.h"
#include "fuzz_target.h"
#include "nb_record_id.h"

using Nubis::Crid;

namespace {
// The versions whose rid, not the crid itself, is what Decode takes.
bool IsDecodedFromRid(char tag)
{
    return tag == 'A' || tag == 'B' || tag == 'C';
}

void CheckDecoded(char tag, const Crid &object)
{
    std::string rid = IsDecodedFromRid(tag) ? object.GetRid() : object.GetCrid();
    // Version 2 writes rids with the tag of version 1 and reads them with its own.
    rid[0] = tag;
    const auto decode = Crid::GetDecodeTable().at(tag);
    const auto again = decode(object.GetUpid(), rid);
    FUZZ_CHECK(again != nullptr && again->GetCrid() == object.GetCrid() && again->GetUpid() == object.GetUpid());
    // Of these versions the rid says nothing about the partition.
    if (tag != 'B' && tag != 'C') {
        FUZZ_CHECK(decode(object.GetUpid() ^ 1, rid) == nullptr);
    }
}
} // namespace

void Fuzz::TestOne(const std::string &input)
{
    const Nubis::NBRecordId untouched{99, 99, "untouched", "untouched"};
    Nubis::NBRecordId decoded = untouched;
    if (!Nubis::DecodeRecordId(input, decoded)) {
        FUZZ_CHECK(decoded.version == untouched.version && decoded.upid == untouched.upid &&
                   decoded.recordId == untouched.recordId && decoded.crid == untouched.crid);
    } else {
        FUZZ_CHECK(decoded.crid == input && decoded.version == input[0] - 'A');
        CheckDecoded(input[0], *Nubis::Crid::GetDecodeCridTable().at(input[0])(input));
    }
    for (const auto &[tag, decode] : Nubis::Crid::GetDecodeTable()) {
        const auto object = decode(input.size(), input);
        FUZZ_CHECK(object == nullptr || (object->GetUpid() == input.size() && object->GetCrid()[0] == tag));
    }
    for (int version = 0; version <= 10; ++version) {
        Nubis::NBRecordId encoded;
        if (Nubis::EncodeRecordId(version, input.size(), input, encoded)) {
            Nubis::NBRecordId again;
            FUZZ_CHECK(Nubis::DecodeRecordId(encoded.crid, again) && again.version == version);
            FUZZ_CHECK(again.upid == encoded.upid && again.crid == encoded.crid);
        }
    }
}
