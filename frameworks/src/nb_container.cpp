// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_container.h"

#include <utility>

#include <json/value.h>

#include "nb_context.h"
#include "nb_database.h"

namespace Nubis {
NBContainer::NBContainer(
    std::string bundleName, std::string containerName, std::shared_ptr<NubisNative> nubis, int32_t syncType)
    : nubis_(std::move(nubis)), bundleName_(std::move(bundleName)), containerName_(std::move(containerName)),
      syncType_(syncType)
{}

NBContainer::~NBContainer() = default;

void NBContainer::Init()
{
    if (nubis_ == nullptr) {
        return;
    }
    const auto create = [this](NBDatabaseScope scope, std::shared_ptr<NBDatabase> &database) {
        database = std::make_shared<NBDatabase>(shared_from_this(), scope, syncType_);
        database->Init();
    };
    create(NB_DATABASE_PUBLIC, publicDatabase_);
    create(NB_DATABASE_PRIVATE, privateDatabase_);
    create(NB_DATABASE_SHARED, sharedDatabase_);
}

std::shared_ptr<NBDatabase> NBContainer::GetPrivateDatabase() const
{
    return privateDatabase_;
}

std::shared_ptr<NBDatabase> NBContainer::GetSharedDatabase() const
{
    return sharedDatabase_;
}

std::shared_ptr<NBDatabase> NBContainer::GetDatabaseWithdatabaseScope(NBDatabaseScope scope) const
{
    switch (scope) {
        case NB_DATABASE_PUBLIC:
            return publicDatabase_;
        case NB_DATABASE_PRIVATE:
            return privateDatabase_;
        case NB_DATABASE_SHARED:
            return sharedDatabase_;
        default:
            return nullptr;
    }
}

void NBContainer::Release()
{
    for (const auto &database : {privateDatabase_, sharedDatabase_}) {
        if (database != nullptr) {
            database->Release();
        }
    }
}

const std::string &NBContainer::GetBundleName() const
{
    return bundleName_;
}

const std::string &NBContainer::GetContainerName() const
{
    return containerName_;
}

std::shared_ptr<NubisNative> NBContainer::GetNubis() const
{
    return nubis_;
}

void NBContainer::AddTraceId(const std::shared_ptr<NBContext> &context, Json::Value &request) const
{
    if (context == nullptr) {
        return;
    }
    const std::string traceId = context->GetRequestTraceId();
    if (!traceId.empty()) {
        request["traceId"] = traceId;
    }
    const std::string prepareTraceId = context->GetPrepareTarceId();
    if (!prepareTraceId.empty()) {
        request["prepareTraceId"] = prepareTraceId;
    }
}
} // namespace Nubis
