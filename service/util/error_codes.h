// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_UTIL_ERROR_CODES_H
#define NUBIS_SERVICE_UTIL_ERROR_CODES_H

namespace DriveService {

// Every code that a reply's or a record's "code" can hold besides 0. The "errorCode" of a detail is "3100" followed by
// the code, so it always has eight characters. Values are part of the protocol: never reuse or renumber one.
enum class ErrorCode : int {
    // The request as a whole was refused; nothing of it was done.
    MALFORMED_REQUEST = 1001,    // no JSON object, or one that breaks a limit
    UNKNOWN_FUNCTION = 1002,     // "function" names nothing that this service answers
    INVALID_ARGUMENT = 1003,     // a member is missing, of the wrong type or out of its range
    UNKNOWN_BUNDLE = 1004,       // the catalogue has no such bundle
    UNKNOWN_CONTAINER = 1005,    // the bundle has no such container
    UNKNOWN_RECORD_TYPE = 1006,  // the container's schema has no such record type
    BATCH_TOO_LARGE = 1007,      // more records than the container's maxBatchNumber
    INVALID_CURSOR = 1008,       // a cursor that this service did not give for this database and query
    INVALID_QUERY = 1009,        // "queryParam" cannot be understood or asks for what the schema does not allow
    UNKNOWN_FIELD = 1010,        // a name that the record type has no field for
    REPLY_TOO_LARGE = 1011,      // the answer does not fit into one reply: ask for less at a time
    LOCK_HELD = 1012,            // another session holds the container's lock
    UNKNOWN_SUBSCRIPTION = 1013, // the container has no such subscription, or it has expired
    LIMIT_REACHED = 1014,        // there are as many as there may be: wait, or remove some

    // One record was refused; others of the same request are not touched by that.
    INVALID_RECORD = 1101,       // the record's own members (id, type, relations ...) are wrong
    INVALID_FIELD = 1102,        // a field's value does not fit the schema
    RECORD_NOT_FOUND = 1103,     // no live record of this id and type
    RECORD_DELETED = 1104,       // the record is deleted; it can only be created anew
    RECORD_EXISTS = 1105,        // a new record's id is taken
    VERSION_CONFLICT = 1106,     // the record has changed since "baseVersion"
    DUPLICATE_RECORD = 1107,     // another record has the same values in the duplicate-check fields
    UNKNOWN_REFERENCE = 1108,    // a reference names no live record of the right type
    UNKNOWN_RELATION = 1109,     // a relation that the schema lacks, or one to no live record of the right type
    RECORD_TYPE_MISMATCH = 1110, // the id belongs to a record of another type
    NOT_APPLIED = 1111,          // nothing is wrong with it, but with another record of the same atomic request
    ASSET_NOT_FOUND = 1112,      // the record's field has no such asset

    // The service failed; the same request may succeed later.
    STORE_FAILED = 1201,   // the database could not be read or written
    INTERNAL_ERROR = 1202, // anything else
};

// The error's "errorType".
enum class ErrorType : int {
    CALLER = 0,  // the request is wrong and stays wrong
    STATE = 1,   // the request does not fit the present data; read and try again
    SERVICE = 2, // the service failed
};

ErrorType TypeOf(ErrorCode code);

// The detail's "reason": the code's name, for programs and logs.
const char *ReasonOf(ErrorCode code);

} // namespace DriveService

#endif // NUBIS_SERVICE_UTIL_ERROR_CODES_H
