// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_REFBASE_H
#define OHOS_REFBASE_H

#include <utility>

#include "ref_counter.h"

namespace OHOS {

template <typename T>
class sptr;
template <typename T>
class wptr;

// Base of everything that an sptr holds; derive with `public virtual RefBase`. Strong references (sptr) share the
// ownership: the last one to go deletes the object. An object that never was in an sptr belongs to whoever created it;
// weak references (wptr) own nothing. Counting may happen in any thread. The object ends in the thread that drops the
// last sptr. Never make an sptr of `this` in a constructor or destructor.
class RefBase {
public:
    RefBase();
    // Counts belong to an object, not to its value: copies and moved-to objects have counts of their own.
    RefBase(const RefBase &other);
    RefBase(RefBase &&other) noexcept;
    // Assigns moved objects too: with a move assignment beside it, compilers would warn of every movable class that
    // inherits this one virtually.
    RefBase &operator=(const RefBase &other) noexcept;
    virtual ~RefBase();

    // Called when the last strong reference is gone; deletes the object.
    virtual void RefPtrCallback();

    // `objectId` names the reference and serves debugging only.
    void IncStrongRef(const void *objectId);
    void DecStrongRef(const void *objectId);
    void IncWeakRef(const void *objectId);
    void DecWeakRef(const void *objectId);
    bool AttemptIncStrongRef(const void *objectId);

    // 0 for an object that never was in an sptr. A snapshot: other threads may change it at once.
    int GetSptrRefCount();
    // Weak references, where each strong reference counts as a weak one too.
    int GetWptrRefCount();

    // The caller owns one holder of the result (WeakRefCounter::DecWeakRefCount gives it up).
    WeakRefCounter *CreateWeakRef(void *cookie);

    // Called once, in the thread that makes the first sptr.
    virtual void OnFirstStrongRef(const void *objectId);
    // Called once, before the object is deleted.
    virtual void OnLastStrongRef(const void *objectId);
    // These two concern objects whose life is extended to their last weak reference. Here life always ends with the last
    // strong reference, so neither is called.
    virtual void OnLastWeakRef(const void *objectId);
    virtual bool OnAttemptPromoted(const void *objectId);

private:
    template <typename T>
    friend class sptr;

    RefCounter *counter_;
};

// A strong reference. Different sptr variables may be used by different threads at once; one variable shared by threads
// needs a lock. Must not own an object that a std::shared_ptr owns.
template <typename T>
class sptr {
public:
    sptr() = default;

    sptr(T *other) : object_(other)
    {
        Inc();
    }

    sptr(const sptr<T> &other) : object_(other.object_)
    {
        Inc();
    }

    sptr(sptr<T> &&other) noexcept : object_(std::exchange(other.object_, nullptr))
    {}

    template <typename O>
    sptr(const sptr<O> &other) : object_(other.GetRefPtr())
    {
        Inc();
    }

    ~sptr()
    {
        Dec(object_);
    }

    // Never null: a failing allocation throws as plain `new` does.
    template <typename... Args>
    static inline sptr<T> MakeSptr(Args &&...args)
    {
        return sptr<T>(new T(std::forward<Args>(args)...));
    }

    sptr<T> &operator=(T *other)
    {
        return Replace(other);
    }

    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the new reference is taken before the old one is dropped
    sptr<T> &operator=(const sptr<T> &other)
    {
        return Replace(other.object_);
    }

    sptr<T> &operator=(sptr<T> &&other) noexcept
    {
        T *old = std::exchange(object_, std::exchange(other.object_, nullptr));
        Dec(old);
        return *this;
    }

    // Empty when the object of `other` is gone.
    sptr<T> &operator=(const wptr<T> &other);

    template <typename O>
    sptr<T> &operator=(const sptr<O> &other)
    {
        return Replace(other.GetRefPtr());
    }

    T *GetRefPtr() const
    {
        return object_;
    }

    void clear()
    {
        Dec(std::exchange(object_, nullptr));
    }

    operator T *() const
    {
        return object_;
    }

    explicit operator bool() const
    {
        return object_ != nullptr;
    }

    T &operator*() const
    {
        return *object_;
    }

    T *operator->() const
    {
        return object_;
    }

    bool operator==(const T *other) const
    {
        return object_ == other;
    }

    bool operator!=(const T *other) const
    {
        return object_ != other;
    }

    bool operator==(const sptr<T> &other) const
    {
        return object_ == other.object_;
    }

    bool operator!=(const sptr<T> &other) const
    {
        return object_ != other.object_;
    }

    bool operator==(const wptr<T> &other) const
    {
        return object_ == other.GetRefPtr();
    }

    bool operator!=(const wptr<T> &other) const
    {
        return object_ != other.GetRefPtr();
    }

private:
    friend class wptr<T>;

    struct Adopt {};

    // Takes over a strong reference that is counted already.
    sptr(T *counted, Adopt) : object_(counted)
    {}

    void Inc() const
    {
        if (object_ != nullptr) {
            object_->IncStrongRef(this);
        }
    }

    void Dec(T *object) const
    {
        if (object != nullptr) {
            object->DecStrongRef(this);
        }
    }

    sptr<T> &Replace(T *other)
    {
        // The new object is counted before the old one is dropped, whose end may be what keeps the new one alive.
        if (other != nullptr) {
            other->IncStrongRef(this);
        }
        Dec(std::exchange(object_, other));
        return *this;
    }

    T *object_ = nullptr;
};

// A weak reference: does not keep the object alive, and tells by promote() whether it still is. Different variables may
// be used by different threads at once; one variable shared by threads needs a lock.
template <typename T>
class wptr {
public:
    wptr() = default;

    wptr(T *other) : refs_(Create(other))
    {}

    wptr(const wptr<T> &other) : refs_(Share(other.refs_))
    {}

    wptr(const sptr<T> &other) : wptr(other.GetRefPtr())
    {}

    template <typename O>
    wptr(const wptr<O> &other) : refs_(Convert(other))
    {}

    template <typename O>
    wptr(const sptr<O> &other) : wptr(static_cast<T *>(other.GetRefPtr()))
    {}

    ~wptr()
    {
        Drop(refs_);
    }

    wptr<T> &operator=(T *other)
    {
        return Replace(Create(other));
    }

    template <typename O>
    wptr<T> &operator=(O *other)
    {
        return Replace(Create(other));
    }

    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the new reference is taken before the old one is dropped
    wptr<T> &operator=(const wptr<T> &other)
    {
        return Replace(Share(other.refs_));
    }

    wptr<T> &operator=(const sptr<T> &other)
    {
        return Replace(Create(other.GetRefPtr()));
    }

    template <typename O>
    wptr<T> &operator=(const wptr<O> &other)
    {
        return Replace(Convert(other));
    }

    template <typename O>
    wptr<T> &operator=(const sptr<O> &other)
    {
        return Replace(Create(other.GetRefPtr()));
    }

    // An empty sptr once the object is gone. For an object that no sptr has held yet this makes the first one, whose end
    // deletes the object.
    const sptr<T> promote() const
    {
        bool first = false;
        if (refs_ == nullptr || !refs_->AttemptIncStrongRef(this, first)) {
            return nullptr;
        }
        T *object = GetRefPtr();
        if (first) {
            object->OnFirstStrongRef(this);
        }
        return sptr<T>(object, typename sptr<T>::Adopt());
    }

    // The address the reference was made with, also when the object is gone: for comparing. Use promote() to reach it.
    T *GetRefPtr() const
    {
        return refs_ == nullptr ? nullptr : static_cast<T *>(refs_->GetRefPtr());
    }

    bool operator==(const T *other) const
    {
        return GetRefPtr() == other;
    }

    bool operator!=(const T *other) const
    {
        return GetRefPtr() != other;
    }

    bool operator==(const wptr<T> &other) const
    {
        return GetRefPtr() == other.GetRefPtr();
    }

    bool operator!=(const wptr<T> &other) const
    {
        return GetRefPtr() != other.GetRefPtr();
    }

    bool operator==(const sptr<T> &other) const
    {
        return GetRefPtr() == other.GetRefPtr();
    }

    bool operator!=(const sptr<T> &other) const
    {
        return GetRefPtr() != other.GetRefPtr();
    }

private:
    template <typename O>
    friend class wptr;

    static WeakRefCounter *Create(T *object)
    {
        return object == nullptr ? nullptr : object->CreateWeakRef(object);
    }

    static WeakRefCounter *Share(WeakRefCounter *refs)
    {
        if (refs != nullptr) {
            refs->IncWeakRefCount(nullptr);
        }
        return refs;
    }

    // Turning a pointer into one to a virtual base reads the object, so the object must be kept alive meanwhile. One that
    // is gone gives an empty reference.
    template <typename O>
    static WeakRefCounter *Convert(const wptr<O> &other)
    {
        if (other.refs_ == nullptr) {
            return nullptr;
        }
        O *object = other.GetRefPtr();
        RefCounter *counter = other.refs_->GetCounter();
        if (counter->AttemptIncHeld()) {
            WeakRefCounter *refs = Create(object);
            object->DecStrongRef(nullptr);
            return refs;
        }
        return counter->IsGone() ? nullptr : Create(object);
    }

    static void Drop(WeakRefCounter *refs)
    {
        if (refs != nullptr) {
            refs->DecWeakRefCount(nullptr);
        }
    }

    wptr<T> &Replace(WeakRefCounter *refs)
    {
        Drop(std::exchange(refs_, refs));
        return *this;
    }

    WeakRefCounter *refs_ = nullptr;
};

template <typename T>
sptr<T> &sptr<T>::operator=(const wptr<T> &other)
{
    return *this = other.promote();
}

} // namespace OHOS

#endif // OHOS_REFBASE_H
