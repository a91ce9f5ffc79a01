// Hears the account component's events from the platform's bus.
#ifndef QORN_GATEWAY_OPERATIONS_EVENT_LISTENER_H_
#define QORN_GATEWAY_OPERATIONS_EVENT_LISTENER_H_

#include <functional>
#include <vector>

#include "base/pickle.h"
#include "gateway/operations/events.h"

namespace gateway {

SeenEvent DecodeEvent(int type, const Pickle& data);

// Listens to all of the account component's events while it lives.
class EventListener {
 public:
  // `on_event` runs on the bus's thread and must not throw.
  explicit EventListener(const std::function<void(const SeenEvent&)>& on_event);
  ~EventListener();
  EventListener(const EventListener&) = delete;
  EventListener& operator=(const EventListener&) = delete;

 private:
  std::vector<int> listeners_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_OPERATIONS_EVENT_LISTENER_H_
