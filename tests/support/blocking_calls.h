// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_BLOCKING_CALLS_H
#define NUBIS_TEST_BLOCKING_CALLS_H

#include <memory>
#include <string>
#include <vector>

#include "nubis_async.h"

// The asynchronous operations as calls that return their outcome, for tests that have nothing else to do meanwhile.
// Each throws when the callback does not come within a minute.
namespace NubisTest {
namespace Async = Nubis::Async;
using Database = std::shared_ptr<Nubis::NBDatabase>;

Async::RecordsResult Save(const Database &database, std::vector<Nubis::NBRecord> records,
    Nubis::NBSavePolicy policy = Nubis::NB_SAVE_OVERWRITE);
Async::RecordsResult Delete(const Database &database, std::vector<Nubis::NBRecord> records,
    Nubis::NBSavePolicy policy = Nubis::NB_SAVE_OVERWRITE);
Async::ModifyResult Modify(const Database &database, std::vector<Nubis::NBRecord> save,
    std::vector<Nubis::NBRecord> erase, bool atomic, Nubis::NBSavePolicy policy = Nubis::NB_SAVE_OVERWRITE);
Async::RecordsResult Copy(const Database &database, std::vector<Nubis::NBCopyRecord> orders);
Async::PreSharedResult PreShare(const Database &database, const std::string &recordType, const std::string &recordId);
Async::RecordsResult FetchByIds(const Database &database, std::vector<Nubis::NBRecord> records);
Async::FetchResult FetchById(const Database &database, const std::string &recordType, const std::string &recordId);
Async::QueryResult Query(
    const Database &database, const Nubis::NBQuery &query, int pageSize = 100, const std::string &cursor = "");
Async::ChangesResult Changes(const Database &database, const std::string &cursor = "", int pageSize = 100);
// Every page of the changes from the cursor on; the cursor of the result is where they end.
Async::ChangesResult AllChanges(const Database &database, const std::string &cursor = "", int pageSize = 100);
} // namespace NubisTest

#endif // NUBIS_TEST_BLOCKING_CALLS_H
