// Mutual exclusion. Neither lock is recursive: a thread that takes one twice deadlocks.
#ifndef QORN_PLATFORM_BASE_LOCK_H_
#define QORN_PLATFORM_BASE_LOCK_H_

#include <mutex>

#include "base/thread_annotations.h"

namespace base {

namespace internal {

class LOCKABLE LockImpl {
 public:
  LockImpl() = default;
  LockImpl(const LockImpl&) = delete;
  LockImpl& operator=(const LockImpl&) = delete;

  void Lock() EXCLUSIVE_LOCK_FUNCTION() { mutex_.lock(); }
  void Unlock() UNLOCK_FUNCTION() { mutex_.unlock(); }
  // Takes the lock if it is free; true if it did.
  bool Try() EXCLUSIVE_TRYLOCK_FUNCTION(true) { return mutex_.try_lock(); }

 private:
  std::mutex mutex_;
};

// Holds a LockImpl while it is in scope.
class SCOPED_LOCKABLE AutoLockImpl {
 public:
  explicit AutoLockImpl(LockImpl& lock) EXCLUSIVE_LOCK_FUNCTION(lock) : lock_(lock) {
    lock_.Lock();
  }
  ~AutoLockImpl() UNLOCK_FUNCTION() { lock_.Unlock(); }
  AutoLockImpl(const AutoLockImpl&) = delete;
  AutoLockImpl& operator=(const AutoLockImpl&) = delete;

 private:
  LockImpl& lock_;
};

}  // namespace internal

class LOCKABLE Lock {
 public:
  Lock() = default;
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  void Acquire() EXCLUSIVE_LOCK_FUNCTION() { mutex_.lock(); }
  void Release() UNLOCK_FUNCTION() { mutex_.unlock(); }
  // Takes the lock if it is free; true if it did.
  bool Try() EXCLUSIVE_TRYLOCK_FUNCTION(true) { return mutex_.try_lock(); }

 private:
  friend class ConditionVariable;

  std::mutex mutex_;
};

// Holds a Lock while it is in scope.
class SCOPED_LOCKABLE AutoLock {
 public:
  explicit AutoLock(Lock& lock) EXCLUSIVE_LOCK_FUNCTION(lock) : lock_(lock) { lock_.Acquire(); }
  ~AutoLock() UNLOCK_FUNCTION() { lock_.Release(); }
  AutoLock(const AutoLock&) = delete;
  AutoLock& operator=(const AutoLock&) = delete;

 private:
  Lock& lock_;
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_LOCK_H_
