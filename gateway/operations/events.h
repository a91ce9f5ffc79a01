// Reads the account component's events as they are published.
#ifndef QORN_GATEWAY_OPERATIONS_EVENTS_H_
#define QORN_GATEWAY_OPERATIONS_EVENTS_H_

#include <functional>
#include <string>
#include <vector>

#include "base/pickle.h"
#include "gateway/output/records.h"

namespace gateway {

// One event as it was published.
struct SeenEvent {
  int type = 0;
  std::string name;           // the constant's name
  std::vector<Field> fields;  // fewer than the type has when the payload was cut short
};

SeenEvent DecodeEvent(int type, const Pickle& data);

Record MakeRecord(const SeenEvent& event);

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

#endif  // QORN_GATEWAY_OPERATIONS_EVENTS_H_
