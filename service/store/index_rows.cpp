// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "store/store.h"

#include "util/encoding.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

std::optional<IndexedValue> ToIndexedValue(const Json::Value &value, ValueKind kind)
{
    switch (kind) {
        case ValueKind::INTEGER:
            if (value.isBool()) {
                return static_cast<int64_t>(value.asBool() ? 1 : 0);
            }
            return value.isInt64() ? std::optional<IndexedValue>(int64_t{value.asInt64()}) : std::nullopt;
        case ValueKind::REAL:
            return value.isNumeric() ? std::optional<IndexedValue>(value.asDouble()) : std::nullopt;
        case ValueKind::TEXT:
            if (value.isString()) {
                return value.asString();
            }
            // A reference is compared by the id that it names.
            if (value.isObject() && value["recordId"].isString()) {
                return value["recordId"].asString();
            }
            return std::nullopt;
    }
    return std::nullopt;
}

void Append(std::vector<IndexRow> &rows, const IndexedField &field, int64_t position, const Json::Value &value)
{
    std::optional<IndexedValue> indexed = ToIndexedValue(value, field.kind);
    if (indexed) {
        rows.push_back({field.name, position, std::move(*indexed)});
    }
}

const Json::Value *FindValue(const Json::Value &data, const std::string &name)
{
    return data.find(name.data(), name.data() + name.size());
}

// What queries take for equal must be equal here: a value may have been written when its field had another type.
Json::Value KeyPart(const IndexedValue &value)
{
    if (const auto *integer = std::get_if<int64_t>(&value)) {
        return Json::Value(Json::Int64(*integer));
    }
    if (const auto *real = std::get_if<double>(&value)) {
        return Json::Value(*real + 0.0); // adding makes -0.0 the other zero
    }
    return Json::Value(std::get<std::string>(value));
}

// A digest, so that keys of long texts stay short.
void AppendKey(std::vector<IndexRow> &rows, const IndexedField &key, const Json::Value &data)
{
    Json::Value values(Json::arrayValue);
    for (const IndexedField &part : key.parts) {
        const Json::Value *value = FindValue(data, part.name);
        std::optional<IndexedValue> indexed = value != nullptr ? ToIndexedValue(*value, part.kind) : std::nullopt;
        if (!indexed) {
            return;
        }
        values.append(KeyPart(*indexed));
    }
    rows.push_back({key.name, 0, HexEncode(Sha256(WriteJson(values)))});
}

} // namespace

std::vector<IndexRow> MakeIndexRows(const Json::Value &data, const std::vector<IndexedField> &fields)
{
    std::vector<IndexRow> rows;
    if (!data.isObject()) {
        return rows;
    }
    for (const IndexedField &field : fields) {
        if (!field.parts.empty()) {
            AppendKey(rows, field, data);
            continue;
        }
        const Json::Value *value = FindValue(data, field.name);
        if (value == nullptr) {
            continue;
        }
        if (!field.list) {
            Append(rows, field, 0, *value);
        } else if (value->isArray()) {
            for (Json::ArrayIndex i = 0; i < value->size(); ++i) {
                Append(rows, field, i, (*value)[i]);
            }
        }
    }
    return rows;
}

} // namespace DriveService
