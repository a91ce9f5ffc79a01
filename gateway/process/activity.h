// What the gateway is doing right now, so that a request to stop can say what it waits for.
#ifndef QORN_GATEWAY_PROCESS_ACTIVITY_H_
#define QORN_GATEWAY_PROCESS_ACTIVITY_H_

#include <string>

#include "base/lock.h"
#include "base/thread_annotations.h"

namespace gateway {

// Thread-safe.
class Activity {
 public:
  // Names the work while the object lives.
  class Scope {
   public:
    Scope(Activity& activity, const std::string& name) : activity_(activity) {
      activity_.Set(name);
    }
    ~Scope() { activity_.Set(""); }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    Activity& activity_;
  };

  // "" while nothing runs.
  std::string Get() {
    base::AutoLock hold(lock_);
    return name_;
  }

 private:
  void Set(const std::string& name) {
    base::AutoLock hold(lock_);
    name_ = name;
  }

  base::Lock lock_;
  std::string name_ GUARDED_BY(lock_);
};

}  // namespace gateway

#endif  // QORN_GATEWAY_PROCESS_ACTIVITY_H_
