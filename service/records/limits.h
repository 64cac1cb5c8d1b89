// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_RECORDS_LIMITS_H
#define NUBIS_SERVICE_RECORDS_LIMITS_H

#include <cstddef>
#include <cstdint>

namespace DriveService {

// A page never holds more than these; a single record always fits, because none is larger than a page.
constexpr int64_t MAX_PAGE_RECORDS = 1000;
constexpr int64_t MAX_PAGE_BYTES = int64_t{8} * 1024 * 1024;
constexpr size_t MAX_RECORD_BYTES = size_t{8} * 1024 * 1024;

// Records of one request for records by their ids.
constexpr unsigned MAX_FETCHED_IDS = 1000;

// Assets of one request that confirms their contents.
constexpr unsigned MAX_CONFIRMED_ASSETS = 1000;

// Values of a text from a client. Each takes more than a hundred bytes of memory, however short its text.
constexpr size_t MAX_JSON_VALUES = 1000000;

// What a reply to a write carries of record data beyond this is left out, because the whole must fit into a parcel and
// what was saved cannot be refused any more.
constexpr size_t MAX_ECHOED_BYTES = size_t{32} * 1024 * 1024;

// The largest text of a parcel, either way.
constexpr size_t MAX_PARCEL_TEXT = size_t{128} * 1024 * 1024;

} // namespace DriveService

#endif // NUBIS_SERVICE_RECORDS_LIMITS_H
