// The event bus, by which components announce changes without knowing who listens.
#ifndef QORN_PLATFORM_EVT_EVENT_MANAGER_H_
#define QORN_PLATFORM_EVT_EVENT_MANAGER_H_

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <set>

#include "base/condition_variable.h"
#include "base/lock.h"
#include "base/pickle.h"
#include "base/thread_annotations.h"

namespace evt {

// One event that is to be published. Not thread-safe.
class Event {
 public:
  // The number with which it was created.
  int type() const { return type_; }
  // Replaces the payload, which is empty at first, by a copy of `data`. Not inline: the bus may
  // drop the copy after the caller's library has been unmapped, so its code must not be in that
  // library.
  void SetData(const Pickle& data);
  // The payload, borrowed until the next SetData.
  const Pickle& data() const { return *data_; }

 private:
  friend class EventManager;

  explicit Event(int type);
  ~Event() = default;

  const int type_;
  std::shared_ptr<const Pickle> data_;  // The bus shares it.
};

// The event bus. Any thread. Listeners run on the bus's own thread, so a slow listener never delays
// a publisher. Events are delivered one after another in the order of publishing, and each to its
// listeners in the order of their numbers.
class EventManager {
 public:
  // Called on the bus's thread with no lock held: it may call anything, including this bus, but
  // must not throw. `data` is valid during the call.
  using Listener = std::function<void(int type, const Pickle& data)>;

  // The only bus of the process, made by the first call and never destroyed.
  static EventManager* GetInstance();

  EventManager(const EventManager&) = delete;
  EventManager& operator=(const EventManager&) = delete;

  // Creates an event of a registered type; the caller must release it with ReleaseEvent. Null for
  // an unregistered type.
  Event* CreateEvent(int type);
  // Queues the event for the listeners that its type has now. Copies what it needs.
  void Publish(Event* event);
  // Destroys the event, published or not. Null is allowed.
  void ReleaseEvent(Event* event);

  // Calls `listener` for every event of `type` published from now on. Returns its number, never 0.
  int AddListener(int type, Listener listener);
  // When it returns, the listener is not running any more and its function is destroyed. It waits
  // for a call in progress, so the caller must hold nothing that the listener waits for. A listener
  // that removes itself is destroyed when its call returns. Unknown numbers are ignored.
  void RemoveListener(int number);

  // Returns once everything published before has been delivered and its payloads are destroyed.
  // Returns at once on the bus's own thread, which cannot wait for itself.
  void Flush();

  // For tests: while `type` is refused, CreateEvent returns null for it.
  void RefuseForTest(int type, bool refuse);

 private:
  class Thread;
  struct Registration {
    int type;
    Listener function;
  };
  struct Delivery {
    int type;
    std::shared_ptr<const Pickle> data;
    int last_listener;  // Listeners added after the event was published do not receive it.
  };
  using Registrations = std::map<int, Registration>;

  EventManager();
  ~EventManager() = default;

  bool HasListener(int type) const EXCLUSIVE_LOCKS_REQUIRED(lock_);
  void DeliverForever();
  // Takes everything that is in the queue; waits while it is empty.
  std::list<Delivery> TakeDeliveries();
  void Deliver(Delivery* delivery);
  // Marks the running listener's call, if any, as ended, and the delivery's next listener as
  // running. Null if there is no further listener: the delivery is then complete and its payload
  // dropped.
  const Listener* NextCall(Delivery* delivery);
  // Destroys a listener that removed itself, before its call is marked as ended.
  void DestroyRemoved();

  std::unique_ptr<Thread> thread_;
  base::Lock lock_;
  base::ConditionVariable published_one_;  // Waited for by the bus's thread.
  base::ConditionVariable changed_;        // Waited for by everybody else.
  std::set<int> refused_ GUARDED_BY(lock_);
  std::list<Delivery> queue_ GUARDED_BY(lock_);
  uint64_t published_ GUARDED_BY(lock_) = 0;
  uint64_t delivered_ GUARDED_BY(lock_) = 0;
  Registrations listeners_ GUARDED_BY(lock_);
  int last_number_ GUARDED_BY(lock_) = 0;
  int running_ GUARDED_BY(lock_) = 0;  // The listener whose call is in progress, or 0.
  // A listener that removed itself is kept here until its call returns.
  Registrations::node_type removed_itself_ GUARDED_BY(lock_);
};

}  // namespace evt

#endif  // QORN_PLATFORM_EVT_EVENT_MANAGER_H_
