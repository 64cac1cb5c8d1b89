// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_SERVICE_INSTANCE_H
#define NUBIS_SERVICE_SERVICE_INSTANCE_H

#include <functional>
#include <memory>
#include <string>

#include "account/push_key.h"
#include "catalogue/catalogue.h"
#include "push/notifier.h"
#include "requests/request_router.h"
#include "store/sqlite_store.h"

namespace DriveService {

// Where things are in a data folder:
//
//   DIR/catalogue/BUNDLE.json    what the service serves, for all users
//   DIR/user-N/drive.db          everything of one user
//   DIR/user-N/push_key.pem      the user's key pair
//   DIR/user-N/lock              held by the one service of the user
struct DataPaths {
    DataPaths(const std::string &dataFolder, int userId);

    static std::string CatalogueOf(const std::string &dataFolder);

    std::string catalogue;
    std::string userFolder;
    std::string database;
    std::string pushKey;
    std::string lock;
};

// The process whose service holds the data by this lock, as a text; empty when none does. Takes and makes nothing.
std::string HolderOf(const std::string &lockPath);

// One user's service without its IPC: the parts, put together. Only one can exist for a user's folder on the machine.
class ServiceInstance {
public:
    // Makes the folders that are missing. Throws std::runtime_error with a text for people when the folder cannot be
    // used or another service holds it. `nowMs` is the clock: milliseconds since the epoch.
    ServiceInstance(const std::string &dataFolder, int userId, std::function<int64_t()> nowMs);
    ~ServiceInstance();
    ServiceInstance(const ServiceInstance &) = delete;
    ServiceInstance &operator=(const ServiceInstance &) = delete;

    RequestRouter &Router()
    {
        return *router_;
    }
    Notifier &GetNotifier()
    {
        return *notifier_;
    }
    Store &GetStore()
    {
        return *store_;
    }

private:
    DataPaths paths_;
    int lockFd_ = -1;
    std::unique_ptr<SqliteStore> store_;
    std::unique_ptr<Catalogue> catalogue_;
    std::unique_ptr<PushKey> pushKey_;
    std::unique_ptr<Notifier> notifier_;
    std::unique_ptr<RequestRouter> router_;
};

// The machine's clock for ServiceInstance.
int64_t SystemNowMs();

} // namespace DriveService

#endif // NUBIS_SERVICE_SERVICE_INSTANCE_H
