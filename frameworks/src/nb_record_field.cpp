// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_record_field.h"

#include <utility>

#include <json/value.h>

namespace Nubis {
namespace {
template <typename T>
const T &Plain(const T &value)
{
    return value;
}

template <typename T>
const T &Plain(const Internal::Boxed<T> &box)
{
    return box.Get();
}

template <typename T>
T &&TakePlain(T &value)
{
    return std::move(value);
}

template <typename T>
T TakePlain(Internal::Boxed<T> &box)
{
    return box.Take();
}

struct FailingAsset {
    operator NBAsset() const
    {
        throw std::bad_variant_access();
    }
};

// Leaves the variant without a value, the way in which one loses it: by making an alternative that fails.
template <typename Variant>
void DropValue(Variant &variant)
{
    try {
        variant.template emplace<NB_FIELD_ASSET>(FailingAsset());
    } catch (const std::bad_variant_access &) {
        // It is done.
    }
}

// The same alternative of another form of the variant, made by convert(held value); without a value, none.
template <typename To, typename From, typename Convert>
To Rebuild(From &&from, Convert &&convert)
{
    if (!from.valueless_by_exception()) {
        return std::visit([&convert](auto &held) { return To(convert(held)); }, from);
    }
    To none;
    DropValue(none);
    return none;
}

template <typename To, typename From>
To CopyOf(const From &from)
{
    return Rebuild<To>(
        from, [](const auto &held) -> const auto & { return Plain(held); });
}

template <typename To, typename From>
To MoveOf(From &from)
{
    return Rebuild<To>(from, [](auto &held) -> decltype(auto) { return TakePlain(held); });
}
} // namespace

NBRecordField::NBRecordField() = default;

NBRecordField::NBRecordField(const NBFieldValue &value)
    : type_(static_cast<NBRecordFieldType>(value.index())), value_(CopyOf<Stored>(value))
{}

NBRecordField::NBRecordField(NBFieldValue &&value)
    : type_(static_cast<NBRecordFieldType>(value.index())), value_(MoveOf<Stored>(value))
{}

NBRecordField::NBRecordField(int value) : NBRecordField(static_cast<int64_t>(value))
{}

NBRecordField::NBRecordField(int64_t value) : type_(NB_FIELD_INTEGER), value_(value)
{}

NBRecordField::NBRecordField(double value) : type_(NB_FIELD_DOUBLE), value_(value)
{}

NBRecordField::NBRecordField(bool value) : type_(NB_FIELD_BOOLEAN), value_(value)
{}

NBRecordField::NBRecordField(const char *value)
    : type_(NB_FIELD_STRING), value_(std::string(value != nullptr ? value : ""))
{}

NBRecordField::NBRecordField(const std::string &value) : type_(NB_FIELD_STRING), value_(value)
{}

NBRecordField::NBRecordField(const std::vector<uint8_t> &value) : type_(NB_FIELD_BLOB), value_(value)
{}

NBRecordField::NBRecordField(NBFieldList &value) : type_(NB_FIELD_LIST), value_(value)
{}

NBRecordField::NBRecordField(const NBFieldMap &value) : type_(NB_FIELD_MAP), value_(value)
{}

NBRecordField::NBRecordField(NBAsset &value) : type_(NB_FIELD_ASSET), value_(value)
{}

NBRecordField::NBRecordField(NBReference &value) : type_(NB_FIELD_REFERENCE), value_(value)
{}

NBRecordFieldType NBRecordField::GetType() const
{
    return type_;
}

NBFieldValue NBRecordField::GetFieldValue() const
{
    return CopyOf<NBFieldValue>(value_);
}

void NBRecordField::StealDKFieldValue(NBFieldValue &value)
{
    value = MoveOf<NBFieldValue>(value_);
    type_ = NB_FIELD_NULL;
}

template <NBRecordFieldType Type, typename T>
NBLocalErrorCode NBRecordField::GetValue(T &value) const
{
    // After a failed parse the type may be set while the value is still of another one.
    const auto *held = std::get_if<Type>(&value_);
    if (type_ != Type || held == nullptr) {
        return NB_LOCAL_BAD_DATA;
    }
    value = Plain(*held);
    return NB_LOCAL_SUCCESS;
}

NBLocalErrorCode NBRecordField::GetInt(int &value) const
{
    int64_t wide = 0;
    NBLocalErrorCode code = GetValue<NB_FIELD_INTEGER>(wide);
    if (code == NB_LOCAL_SUCCESS) {
        value = static_cast<int>(static_cast<uint32_t>(wide));
    }
    return code;
}

NBLocalErrorCode NBRecordField::GetLong(int64_t &value) const
{
    return GetValue<NB_FIELD_INTEGER>(value);
}

NBLocalErrorCode NBRecordField::GetDouble(double &value) const
{
    return GetValue<NB_FIELD_DOUBLE>(value);
}

NBLocalErrorCode NBRecordField::GetBool(bool &value) const
{
    return GetValue<NB_FIELD_BOOLEAN>(value);
}

NBLocalErrorCode NBRecordField::GetString(std::string &value) const
{
    return GetValue<NB_FIELD_STRING>(value);
}

NBLocalErrorCode NBRecordField::GetBlob(std::vector<uint8_t> &value) const
{
    return GetValue<NB_FIELD_BLOB>(value);
}

NBLocalErrorCode NBRecordField::GetRecordList(NBFieldList &value) const
{
    return GetValue<NB_FIELD_LIST>(value);
}

NBLocalErrorCode NBRecordField::GetRecordMap(NBFieldMap &value) const
{
    return GetValue<NB_FIELD_MAP>(value);
}

NBLocalErrorCode NBRecordField::GetAsset(NBAsset &value) const
{
    return GetValue<NB_FIELD_ASSET>(value);
}

NBLocalErrorCode NBRecordField::GetReference(NBReference &value) const
{
    return GetValue<NB_FIELD_REFERENCE>(value);
}
} // namespace Nubis
