// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_RECORD_BUILDER_H
#define NUBIS_TEST_RECORD_BUILDER_H

#include <string>
#include <utility>

#include "nb_record.h"

namespace NubisTest {
// RecordBuilder("person", "r1").With("age", 30).AsNew().Build()
class RecordBuilder {
public:
    explicit RecordBuilder(const std::string &recordType, const std::string &recordId = "")
    {
        record_.SetRecordType(recordType);
        record_.SetRecordId(recordId);
    }

    RecordBuilder &With(const std::string &name, Nubis::NBRecordField value)
    {
        fields_.insert_or_assign(name, std::move(value));
        return *this;
    }

    RecordBuilder &AsNew()
    {
        record_.SetNewCreate(true);
        return *this;
    }

    RecordBuilder &AtVersion(uint64_t version)
    {
        record_.SetVersion(version);
        return *this;
    }

    RecordBuilder &Id(const std::string &recordId)
    {
        record_.SetRecordId(recordId);
        return *this;
    }

    // An update of the record as it was at this version.
    RecordBuilder &Existing(uint64_t version)
    {
        record_.SetNewCreate(false);
        return AtVersion(version);
    }

    RecordBuilder &OwnedBy(const std::string &ownerId)
    {
        record_.SetOwnerId(ownerId);
        return *this;
    }

    Nubis::NBRecord Build() const
    {
        Nubis::NBRecord record = record_;
        record.SetRecordData(fields_);
        return record;
    }

    operator Nubis::NBRecord() const
    {
        return Build();
    }

private:
    Nubis::NBRecord record_;
    Nubis::NBFieldMap fields_;
};
} // namespace NubisTest

#endif // NUBIS_TEST_RECORD_BUILDER_H
