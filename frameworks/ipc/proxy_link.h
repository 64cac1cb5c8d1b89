// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_PROXY_LINK_H
#define NUBIS_PROXY_LINK_H

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

namespace Nubis {
class DriveServiceProxy;

// How platform callbacks and tasks, which may come after a proxy's end, reach the proxy: only through an Access, and
// the proxy's destructor closes the link first, which waits for those who have one. Shared by the proxy and all of
// them.
class ProxyLink {
public:
    explicit ProxyLink(DriveServiceProxy *proxy) : proxy_(proxy)
    {}

    // The proxy, which stays alive for as long as the Access exists; null once the link is closed.
    class Access {
    public:
        explicit Access(std::shared_ptr<ProxyLink> link);
        ~Access();
        Access(const Access &) = delete;
        Access &operator=(const Access &) = delete;

        explicit operator bool() const
        {
            return proxy_ != nullptr;
        }
        DriveServiceProxy *operator->() const
        {
            return proxy_;
        }

    private:
        const std::shared_ptr<ProxyLink> link_;
        DriveServiceProxy *proxy_ = nullptr;
    };

    // Never by a thread that has an Access.
    void Close();

private:
    std::mutex mutex_;
    std::condition_variable left_;
    DriveServiceProxy *proxy_;
    uint32_t accesses_ = 0;
};
} // namespace Nubis

#endif // NUBIS_PROXY_LINK_H
