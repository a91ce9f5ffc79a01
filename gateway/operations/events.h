// The account component's events: what each carries, and a listener for all of them.
#ifndef QORN_GATEWAY_OPERATIONS_EVENTS_H_
#define QORN_GATEWAY_OPERATIONS_EVENTS_H_

#include <functional>
#include <string>
#include <vector>

#include "base/pickle.h"
#include "gateway/operations/parameters.h"
#include "gateway/output/records.h"

namespace gateway {

// One type of event.
struct EventKind {
  int type;
  const char* name;                // the constant's name
  std::vector<Parameter> payload;  // its strings, in their order
};

// By ascending type.
const std::vector<EventKind>& EventKinds();

// Null for a type that is not the account component's.
const EventKind* FindEventKind(int type);

// One event as it was published.
struct SeenEvent {
  int type = 0;
  std::string name;           // the constant's name
  std::vector<Field> fields;  // fewer than the type has when the payload was cut short
};

SeenEvent DecodeEvent(int type, const Pickle& data);

Record EventRecord(const SeenEvent& event);

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
