// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "best_notes.h"

#include <system_error>

#include "nubis_async.h"

using namespace Nubis;

std::vector<std::string> BestNotes(const std::shared_ptr<NBDatabase> &database, int count)
{
    const NBQuery query{"note", "stars>=4", {{true, "stars"}, {false, "title"}}};
    const Async::QueryResult page = Async::FetchRecordsWithQuery(database, {"title"}, query, count, "").Start().get();
    if (page.error.HasError()) {
        throw std::system_error(ToErrorCode(page.error), page.error.GetErrorMsg());
    }
    std::vector<std::string> titles;
    for (const NBRecord &record : page.records) {
        NBFieldMap fields;
        record.GetRecordData(fields);
        titles.emplace_back();
        fields["title"].GetString(titles.back());
    }
    return titles;
}
