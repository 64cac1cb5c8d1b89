// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_RECORDS_VALUE_CHECK_H
#define NUBIS_SERVICE_RECORDS_VALUE_CHECK_H

#include <string>
#include <vector>

#include <json/json.h>

#include "catalogue/catalogue_types.h"
#include "util/failure.h"

namespace DriveService {

// A record that another one points to, and where it does so ("album", "photos[2]", "relations[0]").
struct RecordReference {
    std::string position;
    std::string recordId;
    std::string recordType;
};

// Checks a value that is not null against a field's rule and brings it to the form in which it is kept (doubles as
// doubles, whatever they were written as). Notes what does not fit in `problems` and what it points to in
// `references`.
void CheckFieldValue(const FieldRule &rule, Json::Value &value, std::vector<FailureDetail> &problems,
    std::vector<RecordReference> &references);

} // namespace DriveService

#endif // NUBIS_SERVICE_RECORDS_VALUE_CHECK_H
