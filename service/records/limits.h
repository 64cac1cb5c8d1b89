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

// Ids of records and owners, and trace ids.
constexpr size_t MAX_ID_BYTES = 512;
constexpr size_t MAX_TRACE_ID_BYTES = 512;

// A query's text and its parts.
constexpr size_t MAX_QUERY_BYTES = size_t{64} * 1024;
constexpr size_t MAX_CONDITIONS = 32;
constexpr size_t MAX_ORDERINGS = 8;

// Records of one request for records by their ids.
constexpr unsigned MAX_FETCHED_IDS = 1000;

// Assets of one request that confirms their contents.
constexpr unsigned MAX_CONFIRMED_ASSETS = 1000;

// Bundles of one request for what the catalogue has of them.
constexpr size_t MAX_BUNDLES = 1000;

// Subscriptions of one request; those of a container, each of which is sent every change; bytes of an event's name.
constexpr unsigned MAX_SUBSCRIPTIONS = 1000;
constexpr size_t MAX_CONTAINER_SUBSCRIPTIONS = 100;
constexpr size_t MAX_EVENT_NAME = 128;

// Common keys of a user, which are made when they are first asked for; texts of a setting and the bytes of each.
constexpr int64_t MAX_COMMON_KEYS = 1000;
constexpr unsigned MAX_SETTING_TEXTS = 1000;
constexpr size_t MAX_SETTING_TEXT_BYTES = 512;

// A catalogue file, and the names in it.
constexpr size_t MAX_CATALOGUE_BYTES = size_t{16} * 1024 * 1024;
constexpr unsigned MAX_CATALOGUE_ELEMENTS = 10000;
constexpr size_t MAX_BUNDLE_NAME = 200; // the ending of a file's name still fits behind it
constexpr size_t MAX_CONTAINER_NAME = 255;
constexpr size_t MAX_SCHEMA_NAME = 128;

// Values of a text from a client. Each takes more than a hundred bytes of memory, however short its text.
constexpr size_t MAX_JSON_VALUES = 1000000;
constexpr int MAX_JSON_DEPTH = 128;

// What a reply to a write carries of record data beyond this is left out, because the whole must fit into a parcel and
// what was saved cannot be refused any more.
constexpr size_t MAX_ECHOED_BYTES = size_t{32} * 1024 * 1024;

// The largest text of a parcel, either way.
constexpr size_t MAX_PARCEL_TEXT = size_t{128} * 1024 * 1024;

// What the requests of one client process, and those of all, may take while they wait or are answered. A client of the
// library has 12 under way, at most 64 with those that serve these.
constexpr size_t MAX_CLIENT_REQUESTS = 96;
constexpr size_t MAX_CLIENT_BYTES = size_t{512} * 1024 * 1024;
constexpr size_t MAX_CLIENT_VALUES = 4 * MAX_JSON_VALUES;
constexpr size_t MAX_ALL_REQUESTS = 1280;
constexpr size_t MAX_ALL_BYTES = 4 * MAX_CLIENT_BYTES;
constexpr size_t MAX_ALL_VALUES = 4 * MAX_CLIENT_VALUES;

// Threads that answer asynchronous requests, and what waits for one of them.
constexpr size_t MAX_REQUEST_THREADS = 256;
constexpr size_t MAX_QUEUED_REQUESTS = 1024;

} // namespace DriveService

#endif // NUBIS_SERVICE_RECORDS_LIMITS_H
