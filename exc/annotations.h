#pragma once

// Names for clang's thread-safety analysis, which turns "guarded by" and "the caller holds" into compile
// errors. Other compilers see nothing: there the annotations stay as documentation.
//
// In this code base an object that needs a lock usually *is* the lock (see exc/lock/rlockable.h), so the lock
// expression on members and private operations is `this`.
#if defined(__clang__)
#define EXC_TS_(x) __attribute__((x))
#else
#define EXC_TS_(x)
#endif

// On a class that is a lock; `name` is the word used in diagnostics.
#define EXC_LOCK_TYPE(name) EXC_TS_(capability(name))
// On a class that holds a lock while it lives.
#define EXC_SCOPE_TYPE EXC_TS_(scoped_lockable)

// On a member: read and written only with `l` held.
#define EXC_GUARDED_BY(l) EXC_TS_(guarded_by(l))

// On an operation: the caller holds the locks, before and after.
#define EXC_HOLDS(...) EXC_TS_(requires_capability(__VA_ARGS__))
// On an operation: the caller must not hold the locks. Not for recursive ones, which may be held.
#define EXC_EXCLUDES(...) EXC_TS_(locks_excluded(__VA_ARGS__))
// On an operation: returns with the locks taken, or given up. Without arguments the object itself is meant.
#define EXC_TAKES(...) EXC_TS_(acquire_capability(__VA_ARGS__))
#define EXC_GIVES_UP(...) EXC_TS_(release_capability(__VA_ARGS__))
// On an operation that returns `result` (first argument) when it has taken the lock.
#define EXC_TRIES(...) EXC_TS_(try_acquire_capability(__VA_ARGS__))

// Switches the analysis off for one body. Only for the bodies of the lock classes, for CallUnlocked, and for
// operations that write without the lock by contract; the reason stands beside each use.
#define EXC_UNCHECKED_LOCKING EXC_TS_(no_thread_safety_analysis)
