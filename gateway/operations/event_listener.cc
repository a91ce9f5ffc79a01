#include "gateway/operations/event_listener.h"

#include "evt/event_manager.h"

namespace gateway {

SeenEvent DecodeEvent(int type, const Pickle& data) {
  SeenEvent event;
  event.type = type;
  const EventKind* const kind = FindEventKind(type);
  if (kind == nullptr) return event;
  event.name = kind->name;
  PickleIterator strings(data);
  for (const Parameter& parameter : kind->payload) {
    std::string value;
    // Whoever publishes may have cut the payload short: what came before still counts.
    if (!strings.ReadString(&value)) break;
    event.fields.push_back({.name = parameter.name, .values = {value}, .secret = parameter.secret});
  }
  return event;
}

EventListener::EventListener(const std::function<void(const SeenEvent&)>& on_event) {
  for (const EventKind& kind : EventKinds()) {
    listeners_.push_back(evt::EventManager::GetInstance()->AddListener(
        kind.type,
        [on_event](int type, const Pickle& data) { on_event(DecodeEvent(type, data)); }));
  }
}

EventListener::~EventListener() {
  for (int listener : listeners_) evt::EventManager::GetInstance()->RemoveListener(listener);
}

}  // namespace gateway
