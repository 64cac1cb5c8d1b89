// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_RECORD_FIELD_H
#define NB_RECORD_FIELD_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <json/forwards.h>

#include "nb_error.h"
#include "nb_record_field_type.h"
#include "nubis_export.h"

namespace Nubis {
class NBRecordField;
struct NBSchemaField;

/// A file attached to a record. A plain value: the descriptor, if any, stays its owner's.
struct NBAsset {
    /// A local URI of the content.
    std::string uri;
    /// The name of the file, for people.
    std::string assetName;
    /// What the service is to do with the asset: 0 to 3.
    int32_t assetOperType = 0;
    /// The digest of the content, as text.
    std::string sha256;
    /// Of the content, counted by who uploads it.
    uint64_t version = 0;
    /// Given by the service; empty for a new asset.
    std::string assetId;
    /// Where the content belongs below a folder that the application knows.
    std::string subPath;
    /// Passed through unchanged.
    std::string exCheckInfo;
    /// In bytes.
    uint64_t size = 0;
    /// The opened content, -1 when there is none. Never sent.
    int32_t fd = -1;
};

/// A pointer to another record. A plain value.
struct NBReference {
    /// The id of the record that is meant.
    std::string recordId;
    /// Its type, which the schema may demand.
    std::string recordType;
};

using NBFieldList = std::vector<NBRecordField>;
using NBFieldMap = std::map<std::string, NBRecordField>;

/// The index of each alternative is its NBRecordFieldType.
using NBFieldValue = std::variant<std::monostate, int64_t, double, std::string, bool, std::vector<uint8_t>, NBFieldList,
    NBFieldMap, NBAsset, NBReference>;

/// Not for callers.
namespace Internal {
/// A value on the heap that is copied like a plain one. After a move it may be read, too: as a default one.
template <typename T>
class Boxed {
public:
    ///@{
    /// Holds a copy, or the value itself.
    Boxed(const T &value) : value_(std::make_unique<T>(value))
    {}
    Boxed(T &&value) : value_(std::make_unique<T>(std::move(value)))
    {}
    Boxed(const Boxed &other) : value_(std::make_unique<T>(other.Get()))
    {}
    Boxed(Boxed &&) noexcept = default;
    Boxed &operator=(const Boxed &other)
    {
        value_ = std::make_unique<T>(other.Get());
        return *this;
    }
    Boxed &operator=(Boxed &&) noexcept = default;
    ~Boxed() = default;
    ///@}

    /// Valid until the box is changed.
    const T &Get() const
    {
        // Never destroyed: threads may be under way when the process ends.
        static const T *const none = new T;
        return value_ == nullptr ? *none : *value_;
    }
    /// Leaves a default value.
    T Take()
    {
        const std::unique_ptr<T> taken = std::move(value_);
        return taken == nullptr ? T() : std::move(*taken);
    }

private:
    std::unique_ptr<T> value_;
};
} // namespace Internal

/// One typed value of a record: a type and the value of that type. Lists and maps own their elements.
///
/// A plain value: copy and move it freely; one object must not be changed and used by several threads at once.
class NUBIS_EXPORT NBRecordField {
public:
    /// Holds nothing.
    NBRecordField();
    ///@{
    /// Takes the type from the alternative that the variant holds.
    NBRecordField(const NBFieldValue &value);
    NBRecordField(NBFieldValue &&value);
    ///@}
    ///@{
    /// Each holds a copy of the value, as the type that belongs to it; an int is an integer like an int64_t.
    NBRecordField(int value);
    NBRecordField(int64_t value);
    NBRecordField(double value);
    NBRecordField(bool value);
    ///@}
    /// A null pointer counts as the empty text.
    NBRecordField(const char *value);
    ///@{
    /// Each holds a copy of the value.
    NBRecordField(const std::string &value);
    NBRecordField(const std::vector<uint8_t> &value);
    NBRecordField(NBFieldList &value);
    NBRecordField(const NBFieldMap &value);
    NBRecordField(NBAsset &value);
    NBRecordField(NBReference &value);
    ///@}

    ///@{
    /// Copies have lists and maps of their own. A field that was moved from keeps its type and may only be assigned to
    /// or destroyed.
    NBRecordField(const NBRecordField &) = default;
    NBRecordField(NBRecordField &&) = default;
    NBRecordField &operator=(const NBRecordField &) = default;
    NBRecordField &operator=(NBRecordField &&) = default;
    ~NBRecordField() = default;
    ///@}

    /// NB_FIELD_NULL for a field that holds nothing.
    NBRecordFieldType GetType() const;
    /// A copy of the value, the index of its alternative being the type.
    NBFieldValue GetFieldValue() const;
    /// Moves the value into the caller's variant; the field is of type NB_FIELD_NULL afterwards.
    void StealDKFieldValue(NBFieldValue &value);

    ///@{
    /// Each copies the value out and returns NB_LOCAL_SUCCESS; a field of another type returns NB_LOCAL_BAD_DATA and
    /// leaves the output as it was. Nothing is converted between types. None throws.
    ///
    /// GetInt yields the low 32 bits of the integer, without a check of its range.
    NBLocalErrorCode GetInt(int &value) const;
    NBLocalErrorCode GetLong(int64_t &value) const;
    NBLocalErrorCode GetDouble(double &value) const;
    NBLocalErrorCode GetBool(bool &value) const;
    NBLocalErrorCode GetString(std::string &value) const;
    NBLocalErrorCode GetBlob(std::vector<uint8_t> &value) const;
    NBLocalErrorCode GetRecordList(NBFieldList &value) const;
    NBLocalErrorCode GetRecordMap(NBFieldMap &value) const;
    NBLocalErrorCode GetAsset(NBAsset &value) const;
    NBLocalErrorCode GetReference(NBReference &value) const;
    ///@}

    /// The form in which the service receives the value. An empty list and an empty map become null; a blob becomes
    /// Base64 text. Throws std::bad_variant_access when the value is not of the field's type, which only a field whose
    /// parse failed can be.
    Json::Value ToJsonValue() const;
    ///@{
    /// The forms of one kind each; the field must be of that type (else as above).
    Json::Value FieldListToJsonValue() const;
    Json::Value FieldMapToJsonValue() const;
    Json::Value FieldAssetToJsonValue() const;
    Json::Value FieldReferenceToJsonValue() const;
    ///@}

    /// Takes the type from the schema and the value from JSON. False when the JSON does not fit; the field then has the
    /// type of the schema and its old value, except that lists and maps keep the elements that were good.
    bool ParseFromJsonValue(const NBSchemaField &schemaField, const Json::Value &json);

    /// The parsers of one kind each. They replace type and value when the JSON fits, and return whether it did.
    bool ParseIntFromJson(const Json::Value &json);
    /// Accepts integers as well.
    bool ParseDoubleFromJson(const Json::Value &json);
    ///@{
    /// Accept the JSON of their kind only.
    bool ParseStringFromJson(const Json::Value &json);
    bool ParseBoolFromJson(const Json::Value &json);
    ///@}
    /// True for every string. One that is not Base64, or empty, leaves a blob that is held as it was; a field without a
    /// blob gets an empty one.
    bool ParseBlobFromJson(const Json::Value &json);
    /// Bad elements are logged and left out, and make the result false.
    bool ParseListFromJson(NBRecordFieldType listType, const Json::Value &json);
    /// Members may be integers, numbers, texts and booleans; others are logged and left out, and make the result false.
    bool ParseMapFromJson(const Json::Value &json);
    ///@{
    /// Accept objects only; members that are missing or of the wrong kind take their defaults.
    bool ParseAssetFromJson(const Json::Value &json);
    bool ParseReferenceFromJson(const Json::Value &json);
    ///@}

private:
    friend NUBIS_EXPORT Json::Value AssetListToJsonValue(const NBRecordField &field);

    /// As NBFieldValue. The large alternatives stand apart: a record has many fields, and most of them are small.
    using Stored = std::variant<std::monostate, int64_t, double, std::string, bool, std::vector<uint8_t>, NBFieldList,
        NBFieldMap, Internal::Boxed<NBAsset>, Internal::Boxed<NBReference>>;

    template <NBRecordFieldType Type, typename T>
    NBLocalErrorCode GetValue(T &value) const;
    template <NBRecordFieldType Type, typename T>
    bool SetValue(T &&value);

    NBRecordFieldType type_ = NB_FIELD_NULL;
    Stored value_;
};

/// The asset without its descriptor.
NUBIS_EXPORT Json::Value AssetToJsonValue(const NBAsset &asset);

/// Members that are missing or of the wrong kind take their defaults; JSON that is no object gives the default asset.
NUBIS_EXPORT NBAsset ParseAssetFromJsonValue(const Json::Value &json);

/// The list as an array of {"asset": element}; null when it is empty or the field holds no list.
NUBIS_EXPORT Json::Value AssetListToJsonValue(const NBRecordField &field);
} // namespace Nubis

#endif // NB_RECORD_FIELD_H
