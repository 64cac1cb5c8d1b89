// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_FFRT_RACE_DETECTOR_H
#define HOST_FFRT_RACE_DETECTOR_H

#if defined(__SANITIZE_THREAD__)
#define HOST_FFRT_RACE_DETECTOR 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define HOST_FFRT_RACE_DETECTOR 1
#endif
#endif

#ifdef HOST_FFRT_RACE_DETECTOR
#include <sanitizer/tsan_interface.h>
#endif

// Tells ThreadSanitizer that an object is a mutex, so that it also finds inverted lock orders, relocking and unlocking
// by the wrong thread. Nothing in other builds. Between Before... and After... it does not watch memory; what blocks
// there, and so meets other code, goes between BeginForeign and EndForeign.
namespace Host::Ffrt::RaceDetector {
#ifdef HOST_FFRT_RACE_DETECTOR
inline void Create(void *mutex)
{
    __tsan_mutex_create(mutex, __tsan_mutex_not_static);
}
inline void Destroy(void *mutex)
{
    __tsan_mutex_destroy(mutex, __tsan_mutex_not_static);
}
inline void BeforeLock(void *mutex, bool tries)
{
    __tsan_mutex_pre_lock(mutex, tries ? __tsan_mutex_try_lock : 0);
}
inline void AfterLock(void *mutex, bool tries, bool succeeded)
{
    const unsigned attempt = tries ? __tsan_mutex_try_lock : 0;
    __tsan_mutex_post_lock(mutex, attempt | (succeeded ? 0 : __tsan_mutex_try_lock_failed), 0);
}
inline void BeforeUnlock(void *mutex)
{
    __tsan_mutex_pre_unlock(mutex, 0);
}
inline void AfterUnlock(void *mutex)
{
    __tsan_mutex_post_unlock(mutex, 0);
}
inline void BeginForeign(void *mutex)
{
    __tsan_mutex_pre_divert(mutex, 0);
}
inline void EndForeign(void *mutex)
{
    __tsan_mutex_post_divert(mutex, 0);
}
#else
inline void Create(void *)
{}
inline void Destroy(void *)
{}
inline void BeforeLock(void *, bool)
{}
inline void AfterLock(void *, bool, bool)
{}
inline void BeforeUnlock(void *)
{}
inline void AfterUnlock(void *)
{}
inline void BeginForeign(void *)
{}
inline void EndForeign(void *)
{}
#endif
} // namespace Host::Ffrt::RaceDetector

#endif
