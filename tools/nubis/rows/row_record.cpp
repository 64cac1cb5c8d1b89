// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "row_record.h"

#include <utility>

#include "record_json.h"

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
    size_t before = problems.size();
    if (schemaNode.fields.count("version") == 0) {
        SetBaseVersion(row.values["version"], {row.file, row.line, "version", "", ""}, item.record, problems);
    }
    return problems.size() == before;
}

void SetBaseVersion(
    const Json::Value &version, RowProblem place, Nubis::NBRecord &record, std::vector<RowProblem> &problems)
{
    if (version.isUInt64()) {
        record.SetVersion(version.asUInt64());
    } else if (!version.isNull()) {
        place.expected = "the record's version, a whole number";
        place.found = CompactText(version);
        problems.push_back(std::move(place));
    }
}

} // namespace NubisTool
