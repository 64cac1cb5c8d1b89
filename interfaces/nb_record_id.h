// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_RECORD_ID_H
#define NB_RECORD_ID_H

#include <cstdint>
#include <string>

#include "nubis_export.h"

namespace Nubis {
/// What a cloud record id stands for. A plain value.
struct NBRecordId {
    /// 0 to 10 without 6; a crid begins with the letter "A" + version.
    int version = 0;
    /// The user partition that the record belongs to.
    uint64_t upid = 0;
    /// The record id as the app sees it; empty in versions that carry none.
    std::string recordId;
    /// The cloud record id itself.
    std::string crid;
};

/// Both are stateless and may be called from any thread. Nothing throws; a failure leaves `out` as it was.
///
/// Takes a cloud record id of any version apart. False when it is malformed or of an unknown version. Version 10 loses
/// the first character of the record id: its form is in use as it is.
NUBIS_EXPORT bool DecodeRecordId(const std::string &crid, NBRecordId &out);

/// Makes a cloud record id for a record of the partition. `id` is, by version:
///   0      a decimal number of 64 bits
///   1, 5   a 128-bit id as 32 hexadecimal characters
///   10     any text that is not empty
/// False for other versions, which only the service makes, and when `id` is not what the version takes.
NUBIS_EXPORT bool EncodeRecordId(int version, uint64_t upid, const std::string &id, NBRecordId &out);
} // namespace Nubis

#endif // NB_RECORD_ID_H
