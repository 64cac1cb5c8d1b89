// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "blocking_calls.h"

#include <chrono>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace NubisTest {
namespace {
constexpr std::chrono::seconds PATIENCE(60);

template <typename Result>
Result Wait(Async::Operation<Result> operation)
{
    std::future<Result> future = std::move(operation).Start();
    if (future.wait_for(PATIENCE) != std::future_status::ready) {
        throw std::runtime_error("the callback did not come");
    }
    return future.get();
}
} // namespace

Async::RecordsResult Save(const Database &database, std::vector<Nubis::NBRecord> records, Nubis::NBSavePolicy policy)
{
    return Wait(Async::SaveRecords(database, std::move(records), policy));
}

Async::RecordsResult Delete(const Database &database, std::vector<Nubis::NBRecord> records, Nubis::NBSavePolicy policy)
{
    return Wait(Async::DeleteRecords(database, std::move(records), policy));
}

Async::ModifyResult Modify(const Database &database, std::vector<Nubis::NBRecord> save,
    std::vector<Nubis::NBRecord> erase, bool atomic, Nubis::NBSavePolicy policy)
{
    return Wait(Async::ModifyRecords(database, std::move(save), std::move(erase), policy, atomic));
}

Async::RecordsResult Copy(const Database &database, std::vector<Nubis::NBCopyRecord> orders)
{
    return Wait(Async::CopyRecords(database, std::move(orders)));
}

Async::PreSharedResult PreShare(const Database &database, const std::string &recordType, const std::string &recordId)
{
    return Wait(Async::SetPreShared(database, recordType, recordId));
}

Async::RecordsResult FetchByIds(const Database &database, std::vector<Nubis::NBRecord> records)
{
    return Wait(Async::FetchRecordWithIds(database, std::move(records), {}));
}

Async::FetchResult FetchById(const Database &database, const std::string &recordType, const std::string &recordId)
{
    return Wait(Async::FetchRecordWithId(database, recordType, recordId, {}));
}

Async::QueryResult Query(const Database &database, const Nubis::NBQuery &query, int pageSize, const std::string &cursor)
{
    return Wait(Async::FetchRecordsWithQuery(database, {}, query, pageSize, cursor));
}

Async::ChangesResult Changes(const Database &database, const std::string &cursor, int pageSize)
{
    return Wait(Async::FetchDatabaseChanges(database, "", {}, pageSize, cursor));
}

Async::ChangesResult AllChanges(const Database &database, const std::string &cursor, int pageSize)
{
    Async::ChangesResult all;
    all.cursor = cursor;
    do {
        Async::ChangesResult page = Changes(database, all.cursor, pageSize);
        std::move(page.records.begin(), page.records.end(), std::back_inserter(all.records));
        all.cursor = std::move(page.cursor);
        all.hasMore = page.hasMore;
        all.error = page.error;
    } while (all.hasMore && !all.error.HasError());
    return all;
}
} // namespace NubisTest
