// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "iremote_broker.h"

#include <algorithm>

namespace OHOS {

BrokerRegistration &BrokerRegistration::Get()
{
    static auto *registration = new BrokerRegistration();
    return *registration;
}

bool BrokerRegistration::Register(
    const std::u16string &descriptor, const Constructor &creator, const BrokerDelegatorBase *object)
{
    if (descriptor.empty() || !creator || object == nullptr) {
        return false;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    creators_[descriptor].push_back(Creator{creator, object});
    return true;
}

void BrokerRegistration::Unregister(const std::u16string &descriptor)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = creators_.find(descriptor);
    if (found == creators_.end()) {
        return;
    }
    auto &list = found->second;
    list.erase(std::remove_if(list.begin(), list.end(),
                   [](const Creator &creator) { return creator.object->isSoUnloaded.load(); }),
        list.end());
    if (list.empty()) {
        creators_.erase(found);
    }
}

sptr<IRemoteBroker> BrokerRegistration::NewInstance(const std::u16string &descriptor, const sptr<IRemoteObject> &object)
{
    if (object == nullptr) {
        return nullptr;
    }
    if (!object->IsProxyObject()) {
        return object->GetObjectDescriptor() == descriptor ? object->AsInterface() : nullptr;
    }
    Constructor create;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = creators_.find(descriptor);
        if (found == creators_.end()) {
            return nullptr;
        }
        create = found->second.front().create;
    }
    return create(object);
}

} // namespace OHOS
