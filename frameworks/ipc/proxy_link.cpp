// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "proxy_link.h"

#include <utility>

namespace Nubis {
ProxyLink::Access::Access(std::shared_ptr<ProxyLink> link) : link_(std::move(link))
{
    std::lock_guard<std::mutex> lock(link_->mutex_);
    proxy_ = link_->proxy_;
    if (proxy_ != nullptr) {
        ++link_->accesses_;
    }
}

ProxyLink::Access::~Access()
{
    if (proxy_ == nullptr) {
        return;
    }
    std::lock_guard<std::mutex> lock(link_->mutex_);
    if (--link_->accesses_ == 0) {
        link_->left_.notify_all();
    }
}

void ProxyLink::Close()
{
    std::unique_lock<std::mutex> lock(mutex_);
    proxy_ = nullptr;
    left_.wait(lock, [this]() { return accesses_ == 0; });
}
} // namespace Nubis
