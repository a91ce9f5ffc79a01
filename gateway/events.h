// Shows the account component's events as they are published.
#ifndef QORN_GATEWAY_EVENTS_H_
#define QORN_GATEWAY_EVENTS_H_

#include <string>
#include <vector>

#include "base/pickle.h"
#include "gateway/printer.h"

namespace gateway {

// The fields of an event's payload; `name` gets the constant's name. A payload that is cut short
// gives the fields that it has.
std::vector<Field> DecodeEvent(int type, const Pickle& data, std::string* name);

// Listens while it lives. The listener runs on the bus's thread.
class EventPrinter {
 public:
  explicit EventPrinter(Printer* printer);  // borrowed
  ~EventPrinter();
  EventPrinter(const EventPrinter&) = delete;
  EventPrinter& operator=(const EventPrinter&) = delete;

 private:
  std::vector<int> listeners_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_EVENTS_H_
