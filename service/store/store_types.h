// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_STORE_STORE_TYPES_H
#define NUBIS_SERVICE_STORE_STORE_TYPES_H

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace DriveService {

// Which of a container's databases: 0 public, 1 private, 2 shared.
struct DatabaseKey {
    std::string bundleName;
    std::string containerName;
    int databaseType = 1;
};

// What a check of a whole store found.
struct StoreReport {
    int64_t schemaVersion = 0;         // 0 when it could not be read
    std::vector<std::string> problems; // for people; empty when all is well
};

struct DatabaseInfo {
    int64_t id = 0;
    std::string uid;          // random, never used again for another database: cursors are bound to it
    int64_t lastSequence = 0; // of the newest change; 0 when nothing was ever written
};

// Who made a change, when (milliseconds since the epoch) and with which device.
struct ChangeStamp {
    int64_t time = 0;
    std::string deviceName;
    std::string appId;
};

// One record as it is kept. `data` and `relations` are JSON texts of an object and an array.
struct StoredRecord {
    std::string recordId;
    std::string recordType;
    int64_t version = 0;
    int64_t sequence = 0; // set by the store
    bool deleted = false;
    int64_t createdTime = 0;
    int64_t editedTime = 0;
    ChangeStamp created;
    ChangeStamp modified;
    std::string ownerId;
    bool shared = false;
    std::string data = "{}";
    std::string relations = "[]";
};

// What is known of the content of one asset of a record. An id stands in a field once.
struct StoredAsset {
    std::string field;
    std::string assetId;
    bool uploaded = false; // someone confirmed that the content is where it belongs
    int64_t revision = 0;  // counts the contents that the asset has had
    std::string content;   // tells contents apart; compared, never read
};

// A field's value as queries compare it: integers and booleans, doubles, texts and ids.
using IndexedValue = std::variant<int64_t, double, std::string>;

enum class ValueKind {
    INTEGER,
    REAL,
    TEXT,
};

// A field that queries may use. Values of a list are kept element by element. One with parts is no field of the record
// but a key made of the values of several fields (not of lists); a record that lacks one of them has no key.
struct IndexedField {
    std::string name;
    ValueKind kind = ValueKind::TEXT;
    bool list = false;
    std::vector<IndexedField> parts = {};
};

struct IndexRow {
    std::string field;
    int64_t position = 0; // in the list; 0 for a value that is none
    IndexedValue value;
};

enum class CompareOp {
    EQUAL,
    NOT_EQUAL,
    LESS,
    LESS_OR_EQUAL,
    GREATER,
    GREATER_OR_EQUAL,
    CONTAINS_TEXT,    // the value is a substring
    CONTAINS_ELEMENT, // the value is an element of the list
};

// A record without the field meets NOT_EQUAL and no other comparison.
struct Condition {
    std::string field;
    CompareOp op = CompareOp::EQUAL;
    IndexedValue value;
};

// A record without the field is less than every other.
struct SortKey {
    std::string field;
    ValueKind kind = ValueKind::TEXT;
    bool descending = false;
};

// The place after a record in an ordering: its values of the sort keys, and its id to tell equal ones apart.
struct QueryPosition {
    std::vector<std::optional<IndexedValue>> keys;
    std::string recordId;
};

struct PageBounds {
    int64_t records = 0;
    int64_t bytes = 0; // of data text; a page holds at least one record, however large
};

struct RecordQuery {
    int64_t databaseId = 0;
    std::string recordType;
    std::vector<Condition> conditions; // all must hold
    std::vector<SortKey> order;        // then by record id
    std::optional<QueryPosition> after;
    PageBounds bounds;
};

struct QueryPage {
    std::vector<StoredRecord> records;
    std::optional<QueryPosition> next; // set when there is more
};

struct ChangesQuery {
    int64_t databaseId = 0;
    std::string recordType;            // empty: all types
    std::vector<Condition> conditions; // live records only; deletions are always reported
    int64_t after = 0;
    PageBounds bounds;
};

struct ChangesPage {
    std::vector<StoredRecord> records; // by sequence, each record once in its newest state
    bool more = false;
};

// Who is told of the changes of a container, under which name of the host's event channel, and until when
// (milliseconds since the epoch).
struct Subscription {
    std::string id;
    std::string bundleName;
    std::string containerName;
    std::string eventName;
    int64_t expirationTime = 0;
};

// What a subscription is to be told of. The lists are JSON texts.
struct NoticeContent {
    std::string databaseScopes;
    std::string recordTypes;
    std::string prepareTraceId; // of the user action that led to the change; may be empty
};

// What a backup holds of the store, in the order in which it is put back.
enum class BackupTable {
    DATABASES,
    RECORDS,
    ASSETS,
    SETTINGS,
    SUBSCRIPTIONS,
};

// The record types that a database has records of, deleted ones too.
struct WrittenType {
    DatabaseKey database;
    std::string recordType;
};

// A notice that waits to be sent.
struct Notice {
    int64_t number = 0; // later ones have larger ones
    std::string uid;    // random
    Subscription subscription;
    NoticeContent content;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_STORE_STORE_TYPES_H
