// The account component's events: what each carries.
#ifndef QORN_GATEWAY_OPERATIONS_EVENTS_H_
#define QORN_GATEWAY_OPERATIONS_EVENTS_H_

#include <string>
#include <vector>

#include "gateway/operations/parameters.h"
#include "gateway/output/records.h"

namespace gateway {

// One type of event.
struct EventKind {
  int type;
  const char* name;                // the constant's name
  const char* group;               // as an operation's
  const char* signal;              // its name on the bus
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

// What others may know of the payload: no authorisation code and no session ID, since both open
// doors.
std::vector<Parameter> SharedPayload(const EventKind& kind);

Record EventRecord(const SeenEvent& event);

}  // namespace gateway

#endif  // QORN_GATEWAY_OPERATIONS_EVENTS_H_
