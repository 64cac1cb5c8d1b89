// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_REF_COUNTER_H
#define OHOS_REF_COUNTER_H

#include <atomic>

namespace OHOS {

// The counts of one object. It lives as long as the object or any weak reference to it, so that a weak reference can
// always ask whether the object is still there. Thread safe.
class RefCounter {
public:
    RefCounter() = default;
    RefCounter(const RefCounter &) = delete;
    RefCounter &operator=(const RefCounter &) = delete;

    // True when this was the object's first strong reference.
    bool IncStrong();
    // True when the last strong reference went: the object must now end.
    bool DecStrong();
    // Takes a strong reference unless the object is gone; `first` tells whether it is the object's first one.
    bool AttemptIncStrong(bool &first);
    // As AttemptIncStrong, but never the first strong reference: false also for an object that no sptr has held yet.
    bool AttemptIncHeld();
    // From now on no weak reference can be promoted.
    void MarkGone();
    bool IsGone() const;

    void IncWeak();
    void DecWeak();
    // Gives up one holder of the counts themselves; the last one deletes them.
    void Release();

    int StrongCount() const;
    int WeakCount() const;

private:
    ~RefCounter() = default;

    // Far above any real count, so that "held by no sptr yet" differs from "no longer held".
    static constexpr int NEVER_HELD = 1 << 28;

    std::atomic<int> strong_{NEVER_HELD};
    std::atomic<int> weak_{0};
    std::atomic<int> holders_{1};
};

// One weak reference, shared by the copies of a wptr. `cookie` is the object as the wptr's own type sees it. Thread safe.
class WeakRefCounter {
public:
    // Starts with one holder.
    WeakRefCounter(RefCounter *counter, void *cookie);
    WeakRefCounter(const WeakRefCounter &) = delete;
    WeakRefCounter &operator=(const WeakRefCounter &) = delete;

    // The address given at creation, also when the object is gone: for comparing only, unless something else holds it.
    void *GetRefPtr() const
    {
        return cookie_;
    }

    void IncWeakRefCount(const void *objectId);
    // The last holder ends the reference.
    void DecWeakRefCount(const void *objectId);
    // Gives a strong reference to the object; false when it is gone.
    bool AttemptIncStrongRef(const void *objectId, bool &first);

    RefCounter *GetCounter() const
    {
        return counter_;
    }

private:
    ~WeakRefCounter();

    std::atomic<int> holders_{1};
    RefCounter *counter_;
    void *cookie_;
};

} // namespace OHOS

#endif // OHOS_REF_COUNTER_H
