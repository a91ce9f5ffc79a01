#include "core_fw/account/src/account_event.h"

#include <memory>

#include "base/pickle.h"
#include "core_fw/account/src/account_log.h"
#include "evt/event_manager.h"

namespace account {
namespace {

// The bus makes events and takes them back; nobody else deletes them.
struct EventReleaser {
  void operator()(evt::Event* event) const {
    evt::EventManager::GetInstance()->ReleaseEvent(event);
  }
};

}  // namespace

bool PublishEvent(const tracked_objects::Location& from, const char* function,
                  const EventType& type, std::initializer_list<const std::string*> strings) {
  Pickle payload;
  const std::unique_ptr<evt::Event, EventReleaser> event(
      evt::EventManager::GetInstance()->CreateEvent(type.number));
  if (event == nullptr) {
    Log(from, kSeverityFailure, function, {"Publish ", type.name, " failed."});
    return false;
  }
  // Only now: without an event the payload would be built for nothing.
  for (const std::string* text : strings) payload.WriteString(*text);
  event->SetData(payload);
  evt::EventManager::GetInstance()->Publish(event.get());
  return true;
}

void LogPublished(const tracked_objects::Location& from, const char* function,
                  const EventType& type) {
  Log(from, kSeverityProgress, function, {type.name, " published\n"});
}

}  // namespace account
