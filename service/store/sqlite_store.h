// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_STORE_SQLITE_STORE_H
#define NUBIS_SERVICE_STORE_SQLITE_STORE_H

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "store/commit_group.h"
#include "store/sqlite_connection.h"
#include "store/store.h"

namespace DriveService {

// The store in one SQLite file. Readers have connections of their own from a pool, so that none of them waits for the
// writer; the one writing connection is handed from session to session, see GroupWriter.
class SqliteStore : public Store {
public:
    // Opens or makes the file; throws StoreError with the path and the cause.
    explicit SqliteStore(std::string path);

    std::unique_ptr<ReadSession> BeginRead() override;
    std::unique_ptr<WriteSession> BeginWrite() override;
    void SetNoticeListener(std::function<void()> listener) override;

private:
    friend class SqliteReaderLease;

    std::unique_ptr<SqliteConnection> TakeReader();
    void ReturnReader(std::unique_ptr<SqliteConnection> connection);

    const std::string path_;
    std::unique_ptr<GroupWriter> writer_;

    std::mutex poolMutex_;
    std::condition_variable readerReturned_;
    std::vector<std::unique_ptr<SqliteConnection>> idleReaders_; // guarded by poolMutex_
    size_t readers_ = 0;                                         // idle and lent ones; guarded by poolMutex_
};

} // namespace DriveService

#endif // NUBIS_SERVICE_STORE_SQLITE_STORE_H
