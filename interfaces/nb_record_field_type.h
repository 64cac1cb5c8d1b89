// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_RECORD_FIELD_TYPE_H
#define NB_RECORD_FIELD_TYPE_H

#include <cstdint>

namespace Nubis {
/// The kinds of values; each number is the index of its alternative in NBFieldValue. Unsigned, so that the type of a
/// variant without a value (all bits set) lies above every kind.
enum NBRecordFieldType : uint32_t {
    NB_FIELD_NULL = 0,
    /// Both schema words "Integer" and "Long".
    NB_FIELD_INTEGER = 1,
    NB_FIELD_DOUBLE = 2,
    NB_FIELD_STRING = 3,
    NB_FIELD_BOOLEAN = 4,
    NB_FIELD_BLOB = 5,
    NB_FIELD_LIST = 6,
    NB_FIELD_MAP = 7,
    NB_FIELD_ASSET = 8,
    NB_FIELD_REFERENCE = 9,
};
} // namespace Nubis

#endif // NB_RECORD_FIELD_TYPE_H
