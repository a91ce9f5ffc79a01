#ifndef QORN_DEVCLOUD_MUTEX_H_
#define QORN_DEVCLOUD_MUTEX_H_

#include <mutex>

// Clang's thread-safety attributes; other compilers do not know them.
#if defined(__clang__)
#define DEVCLOUD_TSA(attribute) __attribute__((attribute))
#else
#define DEVCLOUD_TSA(attribute)
#endif

namespace devcloud {

// std::mutex with the attributes that libstdc++ leaves out.
class DEVCLOUD_TSA(capability("mutex")) Mutex {
 public:
  void lock() DEVCLOUD_TSA(acquire_capability()) { mutex_.lock(); }
  void unlock() DEVCLOUD_TSA(release_capability()) { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

class DEVCLOUD_TSA(scoped_lockable) MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) DEVCLOUD_TSA(acquire_capability(mutex)) : mutex_(mutex) {
    mutex_.lock();
  }
  ~MutexLock() DEVCLOUD_TSA(release_capability()) { mutex_.unlock(); }

  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_MUTEX_H_
