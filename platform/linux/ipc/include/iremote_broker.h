// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_IREMOTE_BROKER_H
#define OHOS_IREMOTE_BROKER_H

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "iremote_object.h"
#include "refbase.h"

namespace OHOS {

// Base of every interface that can be called from other processes.
class IRemoteBroker : public virtual RefBase {
public:
    IRemoteBroker() = default;
    ~IRemoteBroker() override = default;

    virtual sptr<IRemoteObject> AsObject() = 0;
};

// Names an interface; stands in the public part of its class, with a u"..." literal.
#define DECLARE_INTERFACE_DESCRIPTOR(DESCRIPTOR)                                                                       \
    static constexpr const char16_t *metaDescriptor_ = DESCRIPTOR;                                                     \
    static inline const std::u16string GetDescriptor()                                                                 \
    {                                                                                                                  \
        return metaDescriptor_;                                                                                        \
    }

class BrokerDelegatorBase {
public:
    BrokerDelegatorBase() = default;
    virtual ~BrokerDelegatorBase() = default;

    // Set when the code of the creator is about to be unloaded.
    std::atomic<bool> isSoUnloaded = false;
    std::u16string descriptor_;
};

// Which proxy class serves which interface. One per process, never destroyed; any thread.
class BrokerRegistration {
public:
    using Constructor = std::function<sptr<IRemoteBroker>(const sptr<IRemoteObject> &)>;

    static BrokerRegistration &Get();

    // The first creator of a descriptor serves until it goes. False for an empty descriptor or no object.
    bool Register(const std::u16string &descriptor, const Constructor &creator, const BrokerDelegatorBase *object);
    // Takes out the creators whose code is being unloaded.
    void Unregister(const std::u16string &descriptor);
    // Null when there is nothing that fits: see iface_cast.
    sptr<IRemoteBroker> NewInstance(const std::u16string &descriptor, const sptr<IRemoteObject> &object);

private:
    struct Creator {
        Constructor create;
        const BrokerDelegatorBase *object;
    };

    BrokerRegistration() = default;
    ~BrokerRegistration() = default;

    std::mutex mutex_;
    std::unordered_map<std::u16string, std::vector<Creator>> creators_;
};

// As a static member of a proxy class: makes iface_cast build that class.
template <typename T>
class BrokerDelegator : public BrokerDelegatorBase {
public:
    BrokerDelegator()
    {
        descriptor_ = T::GetDescriptor();
        BrokerRegistration::Get().Register(
            descriptor_, [](const sptr<IRemoteObject> &object) { return sptr<IRemoteBroker>(new T(object)); }, this);
    }

    ~BrokerDelegator() override
    {
        isSoUnloaded = true;
        BrokerRegistration::Get().Unregister(descriptor_);
    }

    BrokerDelegator(const BrokerDelegator &) = delete;
    BrokerDelegator &operator=(const BrokerDelegator &) = delete;
};

// The interface of a remote object: for a proxy what the delegator of the interface builds, for a stub of the same
// descriptor the stub itself, otherwise null.
template <typename INTERFACE>
inline sptr<INTERFACE> iface_cast(const sptr<IRemoteObject> &object)
{
    const std::u16string descriptor = INTERFACE::GetDescriptor();
    sptr<IRemoteBroker> broker = BrokerRegistration::Get().NewInstance(descriptor, object);
    return static_cast<INTERFACE *>(broker.GetRefPtr());
}

} // namespace OHOS

#endif // OHOS_IREMOTE_BROKER_H
