// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_SCHEMA_BUILDER_H
#define NUBIS_TEST_SCHEMA_BUILDER_H

#include <string>

#include "nb_schema.h"

namespace NubisTest {
// SchemaBuilder().Type("person").Field("age", NB_FIELD_INTEGER).Build()
class SchemaBuilder {
public:
    // Fields that follow belong to this record type.
    SchemaBuilder &Type(const std::string &recordType)
    {
        recordType_ = recordType;
        schema_.recordTypes[recordType].recordType = recordType;
        schema_.recordTypes[recordType].tableName = recordType;
        schema_.orderTables.push_back({recordType, recordType});
        return *this;
    }

    SchemaBuilder &Field(const std::string &name, Nubis::NBRecordFieldType type,
        Nubis::NBRecordFieldType listType = Nubis::NB_FIELD_NULL)
    {
        Nubis::NBSchemaField field;
        field.name = name;
        field.type = type;
        field.listType = listType;
        schema_.recordTypes[recordType_].fields[name] = field;
        return *this;
    }

    Nubis::NBSchema Build() const
    {
        return schema_;
    }

private:
    std::string recordType_;
    Nubis::NBSchema schema_;
};

// The schema entry of a field by itself.
inline Nubis::NBSchemaField SchemaField(
    Nubis::NBRecordFieldType type, Nubis::NBRecordFieldType listType = Nubis::NB_FIELD_NULL)
{
    Nubis::NBSchemaField field;
    field.name = "field";
    field.type = type;
    field.listType = listType;
    return field;
}
} // namespace NubisTest

#endif // NUBIS_TEST_SCHEMA_BUILDER_H
