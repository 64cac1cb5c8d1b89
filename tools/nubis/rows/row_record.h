// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_ROW_RECORD_H
#define NUBIS_TOOL_ROW_RECORD_H

#include <string>
#include <vector>

#include "nb_schema.h"
#include "nb_types.h"
#include "row_checker.h"

namespace NubisTool {

// What is asked for a record beside its row.
struct SaveWish {
    std::string id;     // empty: the row's own
    bool isNew = false; // one without an id is new in any case
    Nubis::NBSavePolicy policy = Nubis::NB_SAVE_CHANGED_FIELDS;
};

// Checks a row and makes the record of it that is to be saved, with the version on which it is based. A row that
// changes a record may leave fields out. False, and problems are appended, when something is wrong with it.
bool MakeRecordOfRow(const Row &row, const SaveWish &wish, const Nubis::NBSchemaNode &schemaNode, ImportItem &item,
    std::vector<RowProblem> &problems);

// Takes over the version on which a change or a deletion is based, if one is given. When it is no whole number, the
// problem is appended, with its place as in `place`.
void SetBaseVersion(
    const Json::Value &version, RowProblem place, Nubis::NBRecord &record, std::vector<RowProblem> &problems);

} // namespace NubisTool

#endif
