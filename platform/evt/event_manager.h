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

// One event on its way to the bus. Not thread-safe.
class Event {
 public:
  // The number that it was made with.
  int type() const { return type_; }
  // Replaces the payload by a copy of `data`; empty at first. Not inline: the bus may drop the copy
  // after the caller's library was unmapped, so nothing of it may be code of that library.
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

// The event bus. Any thread. Listeners run on the bus's own thread, one event after another in the
// order of publishing and, for one event, in the order of their numbers, so a slow listener never
// holds up a publisher.
class EventManager {
 public:
  // Called on the bus's thread with no lock held: it may call anything, also this bus, and must
  // not throw. `data` is borrowed for the call.
  using Listener = std::function<void(int type, const Pickle& data)>;

  // The process's one bus, made at the first call and never destroyed.
  static EventManager* GetInstance();

  EventManager(const EventManager&) = delete;
  EventManager& operator=(const EventManager&) = delete;

  // Makes an event of a registered type; the caller gives it back with ReleaseEvent. Null for a
  // type that was never registered.
  Event* CreateEvent(int type);
  // Hands the event to the listeners that its type has now. Copies what it needs.
  void Publish(Event* event);
  // Destroys the event, published or not. Null is allowed.
  void ReleaseEvent(Event* event);

  // Calls `listener` for every event of `type` published from now on. Answers its number, never 0.
  int AddListener(int type, Listener listener);
  // Once it returns, the listener does not run any more and its function is destroyed: it waits
  // for a call that is under way, so the caller holds nothing that the listener waits for. A
  // listener that removes itself returns from its call first and is destroyed then. Unknown
  // numbers are ignored.
  void RemoveListener(int number);

  // Returns once everything that was published before has been delivered and its payloads are
  // destroyed; at once on the bus's own thread, which cannot wait for itself.
  void Flush();

  // For tests: while refused, CreateEvent answers null for `type`.
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
    int last_listener;  // Those added after the event was published do not hear it.
  };
  using Registrations = std::map<int, Registration>;

  EventManager();
  ~EventManager() = default;

  bool HasListener(int type) const EXCLUSIVE_LOCKS_REQUIRED(lock_);
  void DeliverForever();
  // All that is in the queue; waits while it is empty.
  std::list<Delivery> TakeDeliveries();
  void Deliver(Delivery* delivery);
  // Ends the running listener's call, if there is one, and marks the delivery's next listener as
  // running. Null when there is none behind it: the delivery is over then, and its payload gone.
  const Listener* NextCall(Delivery* delivery);
  // The destruction of a listener that removed itself, before anybody is told that it has ended.
  void DestroyRemoved();

  std::unique_ptr<Thread> thread_;
  base::Lock lock_;
  base::ConditionVariable published_one_;  // The bus's thread waits for it.
  base::ConditionVariable changed_;        // Everybody else waits for it.
  std::set<int> refused_ GUARDED_BY(lock_);
  std::list<Delivery> queue_ GUARDED_BY(lock_);
  uint64_t published_ GUARDED_BY(lock_) = 0;
  uint64_t delivered_ GUARDED_BY(lock_) = 0;
  Registrations listeners_ GUARDED_BY(lock_);
  int last_number_ GUARDED_BY(lock_) = 0;
  int running_ GUARDED_BY(lock_) = 0;  // The listener whose call is under way, or 0.
  // Where a listener that removed itself waits for the end of its call.
  Registrations::node_type removed_itself_ GUARDED_BY(lock_);
};

}  // namespace evt

#endif  // QORN_PLATFORM_EVT_EVENT_MANAGER_H_
