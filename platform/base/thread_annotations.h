// Names for clang's thread-safety attributes; they expand to nothing for other compilers.
#ifndef QORN_PLATFORM_BASE_THREAD_ANNOTATIONS_H_
#define QORN_PLATFORM_BASE_THREAD_ANNOTATIONS_H_

#if defined(__clang__)
#define QORN_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define QORN_THREAD_ATTRIBUTE(x)
#endif

// On a type that is a lock, and on a type that holds one while it is in scope.
#define LOCKABLE QORN_THREAD_ATTRIBUTE(capability("mutex"))
#define SCOPED_LOCKABLE QORN_THREAD_ATTRIBUTE(scoped_lockable)

// On data that a lock protects, and on data behind a pointer.
#define GUARDED_BY(x) QORN_THREAD_ATTRIBUTE(guarded_by(x))
#define PT_GUARDED_BY(x) QORN_THREAD_ATTRIBUTE(pt_guarded_by(x))

// On functions: the caller holds the lock, or must not hold it.
#define EXCLUSIVE_LOCKS_REQUIRED(...) QORN_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define LOCKS_EXCLUDED(...) QORN_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))

// On functions that acquire or release a lock.
#define EXCLUSIVE_LOCK_FUNCTION(...) QORN_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define EXCLUSIVE_TRYLOCK_FUNCTION(...) QORN_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define UNLOCK_FUNCTION(...) QORN_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))

#define NO_THREAD_SAFETY_ANALYSIS QORN_THREAD_ATTRIBUTE(no_thread_safety_analysis)

#endif  // QORN_PLATFORM_BASE_THREAD_ANNOTATIONS_H_
