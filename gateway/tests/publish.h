// An event as a component publishes it.
#ifndef QORN_GATEWAY_TESTS_PUBLISH_H_
#define QORN_GATEWAY_TESTS_PUBLISH_H_

#include <string>
#include <vector>

#include "base/pickle.h"
#include "evt/event_manager.h"

namespace gateway {

inline void Publish(int type, const std::vector<std::string>& texts) {
  Pickle payload;
  for (const std::string& text : texts) payload.WriteString(text);
  evt::EventManager* bus = evt::EventManager::GetInstance();
  evt::Event* event = bus->CreateEvent(type);
  event->SetData(payload);
  bus->Publish(event);
  bus->ReleaseEvent(event);
}

}  // namespace gateway

#endif  // QORN_GATEWAY_TESTS_PUBLISH_H_
