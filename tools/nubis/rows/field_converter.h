// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_FIELD_CONVERTER_H
#define NUBIS_TOOL_FIELD_CONVERTER_H

#include <string>

#include <json/json.h>

#include "nb_record_field.h"
#include "nb_schema.h"

namespace NubisTool {

// Turns one value of an input row into a field of the type that the schema gives it. Stricter than the library's own
// parser, which drops or empties what it cannot use: here everything that would be lost is refused. When isText is set
// the value comes from a text column, and numbers, booleans, lists and maps are read out of it. A reference may be
// given by its record id alone. False, with what was expected, when the value does not fit; null fits no type.
bool ConvertField(const Nubis::NBSchemaField &schemaField, const Json::Value &value, bool isText,
    Nubis::NBRecordField &field, std::string &expected);

} // namespace NubisTool

#endif
