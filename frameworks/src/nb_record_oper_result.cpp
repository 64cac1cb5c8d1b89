// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_record_oper_result.h"

#include <utility>

#include <json/value.h>

#include "json_helper.h"

namespace Nubis {
NBRecordOperResult::NBRecordOperResult(const NBError &error, NBRecord record)
    : NBError(error), record_(std::move(record))
{}

void NBRecordOperResult::SetError(const NBError &error)
{
    NBError::operator=(error);
}

const NBRecord &NBRecordOperResult::GetRecord() const
{
    return record_;
}

void NBRecordOperResult::SetRecord(NBRecord record)
{
    record_ = std::move(record);
}

void NBRecordOperResult::StealRecord(NBRecord &record)
{
    record = std::exchange(record_, NBRecord());
}

void NBRecordOperResult::ParseFromJsonValue(const NBSchema &schema, const Json::Value &json)
{
    int code = JsonHelper::GetIntFromJson(json, "code", -1);
    SetLocalError(NB_LOCAL_SUCCESS);
    if (code == 0) {
        if (!record_.ParseFromJsonValue(schema, json)) {
            SetLocalError(NB_LOCAL_BAD_DATA);
        }
        return;
    }
    const Json::Value *error = JsonHelper::FindMember(json, "error");
    if (error == nullptr) {
        SetLocalError(NB_LOCAL_UNEXPECTED_REPLY);
    } else {
        ParseErrorFromJson(*error, code);
    }
    std::string recordId = JsonHelper::GetStringFromJson(json, "recordId");
    if (!recordId.empty()) {
        record_.SetRecordId(std::move(recordId));
    }
}
} // namespace Nubis
