// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "row_record.h"

namespace NubisTool {

bool MakeRecordOfRow(const Row &row, const SaveWish &wish, const Nubis::NBSchemaNode &schemaNode, ImportItem &item,
    std::vector<RowProblem> &problems)
{
    bool isNew = wish.isNew || (wish.id.empty() && row.values["recordId"].isNull());
    bool isWhole = isNew || wish.policy == Nubis::NB_SAVE_OVERWRITE;
    RowChecker checker(schemaNode, "", isWhole ? Completeness::WHOLE : Completeness::PARTIAL);
    if (!checker.Check(row, item, problems)) {
        return false;
    }
    if (!wish.id.empty()) {
        item.record.SetRecordId(wish.id);
    }
    item.record.SetNewCreate(isNew);
    const Json::Value &version = row.values["version"];
    if (schemaNode.fields.count("version") == 0 && version.isUInt64()) {
        item.record.SetVersion(version.asUInt64());
    }
    return true;
}

} // namespace NubisTool
