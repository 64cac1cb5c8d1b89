// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_RECORD_OPER_RESULT_H
#define NB_RECORD_OPER_RESULT_H

#include <json/forwards.h>

#include "nb_error.h"
#include "nb_record.h"
#include "nubis_export.h"

namespace Nubis {
/// The outcome of an operation for one of its records: the error that it met, if any, and the record as the service
/// returned it (with an error, as far as it is known).
///
/// A plain value: copy and move it freely; one object must not be changed and used by several threads at once.
class NUBIS_EXPORT NBRecordOperResult : public NBError {
public:
    /// No error, and an empty record.
    NBRecordOperResult() = default;
    /// Both as given.
    NBRecordOperResult(const NBError &error, NBRecord record);

    /// Replaces the error and keeps the record.
    void SetError(const NBError &error);

    ///@{
    /// The record; the reference is valid as long as the result is not changed.
    const NBRecord &GetRecord() const;
    void SetRecord(NBRecord record);
    ///@}
    /// Moves the record into the caller's; an empty record stays.
    void StealRecord(NBRecord &record);

    /// Fills the result from the service's reply for one record. A reply without "code" is a failure; a failed one sets
    /// only the error and, if it names one, the record's id. A server error already held is not cleared.
    void ParseFromJsonValue(const NBSchema &schema, const Json::Value &json);

private:
    NBRecord record_;
};
} // namespace Nubis

#endif // NB_RECORD_OPER_RESULT_H
