// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_BLOCKING_CALLS_H
#define NUBIS_TEST_BLOCKING_CALLS_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "nb_database.h"

// The asynchronous operations as calls that return their outcome, for tests that have nothing else to do meanwhile.
// Each throws when the callback does not come within a minute, or comes for an operation that was refused.
namespace NubisTest {
struct Saved {
    int started = 0;
    Nubis::NBResultMap results;
    Nubis::NBError error;
};

struct Page {
    std::vector<Nubis::NBRecord> records;
    std::string cursor;
    bool hasMore = false;
    Nubis::NBError error;
};

struct Fetched {
    std::string recordId;
    Nubis::NBRecord record;
    Nubis::NBError error;
};

struct Modified {
    Nubis::NBResultMap saved;
    Nubis::NBResultMap deleted;
    Nubis::NBError error;
};

using Database = std::shared_ptr<Nubis::NBDatabase>;

Saved Save(const Database &database, std::vector<Nubis::NBRecord> records,
    Nubis::NBSavePolicy policy = Nubis::NB_SAVE_OVERWRITE);
Saved Delete(const Database &database, std::vector<Nubis::NBRecord> records,
    Nubis::NBSavePolicy policy = Nubis::NB_SAVE_OVERWRITE);
Modified Modify(const Database &database, std::vector<Nubis::NBRecord> save, std::vector<Nubis::NBRecord> erase,
    bool atomic, Nubis::NBSavePolicy policy = Nubis::NB_SAVE_OVERWRITE);
Saved Copy(const Database &database, std::vector<Nubis::NBCopyRecord> orders);
// The recordId is that of the record.
Fetched PreShare(const Database &database, const std::string &recordType, const std::string &recordId);
Saved FetchByIds(const Database &database, std::vector<Nubis::NBRecord> records);
Fetched FetchById(const Database &database, const std::string &recordType, const std::string &recordId);
Page Query(const Database &database, const Nubis::NBQuery &query, int pageSize = 100, const std::string &cursor = "");
Page Changes(const Database &database, const std::string &cursor = "", int pageSize = 100);
// Every page of the changes from the cursor on; the cursor of the result is where they end.
Page AllChanges(const Database &database, const std::string &cursor = "", int pageSize = 100);
} // namespace NubisTest

#endif // NUBIS_TEST_BLOCKING_CALLS_H
