#pragma once

// Lock rules in the declarations, checked by clang (-Wthread-safety) and empty for other compilers.

#if defined(__clang__)
#define EM_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define EM_THREAD_ATTRIBUTE(x)
#endif

/// A class that is a lock.
#define EM_CAPABILITY(name) EM_THREAD_ATTRIBUTE(capability(name))
/// A class that holds a lock from its construction to its destruction.
#define EM_SCOPED_CAPABILITY EM_THREAD_ATTRIBUTE(scoped_lockable)
/// A member that is touched only under the lock; the second form is for what a pointer points to.
#define EM_GUARDED_BY(lock) EM_THREAD_ATTRIBUTE(guarded_by(lock))
#define EM_PT_GUARDED_BY(lock) EM_THREAD_ATTRIBUTE(pt_guarded_by(lock))
/// A function that takes or releases the lock (without argument: the object itself).
#define EM_ACQUIRE(...) EM_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define EM_TRY_ACQUIRE(...) EM_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define EM_RELEASE(...) EM_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
/// A function that is called with the lock held, or without it.
#define EM_REQUIRES(...) EM_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define EM_EXCLUDES(...) EM_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define EM_RETURN_CAPABILITY(lock) EM_THREAD_ATTRIBUTE(lock_returned(lock))
#define EM_NO_THREAD_SAFETY_ANALYSIS EM_THREAD_ATTRIBUTE(no_thread_safety_analysis)
