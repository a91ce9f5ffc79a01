#include "evt/event_manager.h"

#include <algorithm>
#include <utility>

#include "base/simple_thread.h"

namespace evt {

namespace {

// The account component's types, the only ones that are registered. Part of the binary contract;
// never renumber.
constexpr int kFirstAccountType = 1;
constexpr int kLastAccountType = 8;

thread_local bool g_on_bus_thread = false;

const std::shared_ptr<const Pickle>& EmptyPayload() {
  // Never destroyed, like the bus.
  static const auto* const kEmpty = new auto(std::make_shared<const Pickle>());
  return *kEmpty;
}

bool IsRegistered(int type) { return type >= kFirstAccountType && type <= kLastAccountType; }

}  // namespace

class EventManager::Thread : public base::SimpleThread {
 public:
  explicit Thread(EventManager* bus) : SimpleThread("EventBus"), bus_(bus) {}
  void Run() override { bus_->DeliverForever(); }

 private:
  EventManager* const bus_;
};

Event::Event(int type) : type_(type), data_(EmptyPayload()) {}

void Event::SetData(const Pickle& data) { data_ = std::make_shared<const Pickle>(data); }

EventManager* EventManager::GetInstance() {
  // Never destroyed: components may publish until the process ends.
  static EventManager* const bus = new EventManager;
  return bus;
}

EventManager::EventManager() : thread_(std::make_unique<Thread>(this)) { thread_->Start(); }

Event* EventManager::CreateEvent(int type) {
  if (!IsRegistered(type)) return nullptr;
  base::AutoLock hold(lock_);
  return refused_.count(type) == 0 ? new Event(type) : nullptr;
}

void EventManager::Publish(Event* event) {
  std::list<Delivery> delivery;
  delivery.push_back({event->type(), event->data_, 0});
  {
    base::AutoLock hold(lock_);
    if (!HasListener(event->type())) return;  // The bus's thread need not wake up.
    delivery.front().last_listener = last_number_;
    queue_.splice(queue_.end(), delivery);
    ++published_;
  }
  // Without the lock: the woken thread would only have to wait for it.
  published_one_.NotifyOne();
}

void EventManager::ReleaseEvent(Event* event) { delete event; }

int EventManager::AddListener(int type, Listener listener) {
  base::AutoLock hold(lock_);
  listeners_.emplace(++last_number_, Registration{type, std::move(listener)});
  return last_number_;
}

void EventManager::RemoveListener(int number) {
  // Removed from the map at once, so that it is not called again; destroyed without the lock,
  // because the destructor may call the bus.
  Registrations::node_type removed;
  base::AutoLock hold(lock_);
  removed = listeners_.extract(number);
  if (running_ != number) return;
  if (g_on_bus_thread) {
    if (removed) removed_itself_ = std::move(removed);
    return;
  }
  while (running_ == number) changed_.Wait(lock_);
}

void EventManager::Flush() {
  if (g_on_bus_thread) return;
  base::AutoLock hold(lock_);
  const uint64_t last = published_;
  while (delivered_ < last) changed_.Wait(lock_);
}

void EventManager::RefuseForTest(int type, bool refuse) {
  base::AutoLock hold(lock_);
  if (refuse) {
    refused_.insert(type);
  } else {
    refused_.erase(type);
  }
}

bool EventManager::HasListener(int type) const {
  return std::any_of(listeners_.begin(), listeners_.end(),
                     [&](const auto& listener) { return listener.second.type == type; });
}

void EventManager::DeliverForever() {
  g_on_bus_thread = true;
  for (;;) {
    for (std::list<Delivery> taken = TakeDeliveries(); !taken.empty(); taken.pop_front()) {
      Deliver(&taken.front());
    }
  }
}

std::list<EventManager::Delivery> EventManager::TakeDeliveries() {
  std::list<Delivery> taken;
  base::AutoLock hold(lock_);
  while (queue_.empty()) published_one_.Wait(lock_);
  taken.swap(queue_);
  return taken;
}

void EventManager::Deliver(Delivery* delivery) {
  while (const Listener* listener = NextCall(delivery)) {
    (*listener)(delivery->type, *delivery->data);
    DestroyRemoved();
  }
}

const EventManager::Listener* EventManager::NextCall(Delivery* delivery) {
  base::AutoLock hold(lock_);
  const auto end = listeners_.upper_bound(delivery->last_listener);
  auto next = listeners_.upper_bound(running_);
  while (next != end && next->second.type != delivery->type) ++next;
  const bool over = next == end;
  if (running_ != 0 || over) changed_.NotifyAll();
  running_ = over ? 0 : next->first;
  if (!over) return &next->second.function;
  // Dropped before the event counts as delivered: whoever waits in Flush relies on the bus holding
  // nothing of it.
  delivery->data.reset();
  ++delivered_;
  return nullptr;
}

void EventManager::DestroyRemoved() {
  Registrations::node_type removed_itself;
  base::AutoLock hold(lock_);
  removed_itself.swap(removed_itself_);
}

}  // namespace evt
