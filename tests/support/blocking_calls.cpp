// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "blocking_calls.h"

#include <chrono>
#include <future>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace NubisTest {
namespace {
constexpr std::chrono::seconds PATIENCE(60);

// Shared with the callback, so that one that comes late finds its promise still there.
template <typename Outcome>
class Pending {
public:
    void Set(Outcome outcome)
    {
        promise_->set_value(std::move(outcome));
    }

    Outcome Wait(int started)
    {
        std::future<Outcome> future = promise_->get_future();
        if (started != 0) {
            Outcome outcome;
            outcome.error.SetLocalError(static_cast<Nubis::NBLocalErrorCode>(started));
            return outcome;
        }
        if (future.wait_for(PATIENCE) != std::future_status::ready) {
            throw std::runtime_error("the callback did not come");
        }
        return future.get();
    }

private:
    std::shared_ptr<std::promise<Outcome>> promise_ = std::make_shared<std::promise<Outcome>>();
};

Nubis::NBRecordsCallback ResultsInto(Pending<Saved> pending)
{
    return [pending](auto, auto, std::shared_ptr<Nubis::NBResultMap> results, const Nubis::NBError &error) mutable {
        pending.Set({0, std::move(*results), error});
    };
}

std::shared_ptr<Nubis::NBContext> NewContext()
{
    return std::make_shared<Nubis::NBContext>();
}
} // namespace

Saved Save(const Database &database, std::vector<Nubis::NBRecord> records, Nubis::NBSavePolicy policy)
{
    Pending<Saved> pending;
    const int started = database->SaveRecords(NewContext(), std::move(records), policy, ResultsInto(pending));
    Saved saved = pending.Wait(started);
    saved.started = started;
    return saved;
}

Saved Delete(const Database &database, std::vector<Nubis::NBRecord> records, Nubis::NBSavePolicy policy)
{
    Pending<Saved> pending;
    return pending.Wait(database->DeleteRecords(NewContext(), std::move(records), policy, ResultsInto(pending)));
}

Modified Modify(const Database &database, std::vector<Nubis::NBRecord> save, std::vector<Nubis::NBRecord> erase,
    bool atomic, Nubis::NBSavePolicy policy)
{
    Pending<Modified> pending;
    return pending.Wait(database->ModifyRecords(NewContext(), std::move(save), std::move(erase), policy, atomic,
        [pending](auto, auto, auto saved, auto deleted, const Nubis::NBError &error) mutable {
            pending.Set({std::move(*saved), std::move(*deleted), error});
        }));
}

Saved Copy(const Database &database, std::vector<Nubis::NBCopyRecord> orders)
{
    Pending<Saved> pending;
    return pending.Wait(database->CopyRecords(NewContext(), std::move(orders), ResultsInto(pending)));
}

Fetched PreShare(const Database &database, const std::string &recordType, const std::string &recordId)
{
    Pending<Fetched> pending;
    return pending.Wait(database->SetPreShared(NewContext(), recordType, recordId,
        [pending](auto, auto, Nubis::NBRecord &record, const Nubis::NBError &error) mutable {
            pending.Set({record.GetRecordId(), std::move(record), error});
        }));
}

Saved FetchByIds(const Database &database, std::vector<Nubis::NBRecord> records)
{
    Pending<Saved> pending;
    return pending.Wait(database->FetchRecordWithIds(NewContext(), std::move(records), {}, ResultsInto(pending)));
}

Fetched FetchById(const Database &database, const std::string &recordType, const std::string &recordId)
{
    Pending<Fetched> pending;
    return pending.Wait(database->FetchRecordWithId(NewContext(), recordType, recordId, {},
        [pending](auto, auto, std::string id, Nubis::NBRecord &record, const Nubis::NBError &error) mutable {
            pending.Set({std::move(id), std::move(record), error});
        }));
}

Page Query(const Database &database, const Nubis::NBQuery &query, int pageSize, const std::string &cursor)
{
    Pending<Page> pending;
    return pending.Wait(database->FetchRecordsWithQuery(NewContext(), {}, query, pageSize, cursor,
        [pending](auto, auto, auto records, std::string next, const Nubis::NBError &error) mutable {
            const bool hasMore = !next.empty();
            pending.Set({std::move(*records), std::move(next), hasMore, error});
        }));
}

Page Changes(const Database &database, const std::string &cursor, int pageSize)
{
    Pending<Page> pending;
    return pending.Wait(database->FetchDatabaseChanges(NewContext(), "", {}, pageSize, cursor,
        [pending](auto, auto, auto records, std::string next, bool hasMore, const Nubis::NBError &error) mutable {
            pending.Set({std::move(*records), std::move(next), hasMore, error});
        }));
}

Page AllChanges(const Database &database, const std::string &cursor, int pageSize)
{
    Page all;
    all.cursor = cursor;
    do {
        Page page = Changes(database, all.cursor, pageSize);
        std::move(page.records.begin(), page.records.end(), std::back_inserter(all.records));
        all.cursor = std::move(page.cursor);
        all.hasMore = page.hasMore;
        all.error = page.error;
    } while (all.hasMore && !all.error.HasError());
    return all;
}
} // namespace NubisTest
