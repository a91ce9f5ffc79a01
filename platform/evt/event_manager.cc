#include "evt/event_manager.h"

#include <utility>

#include "base/simple_thread.h"

namespace evt {

namespace {

// The account component's types, the only ones that are registered. Part of the binary contract;
// never renumber.
constexpr int kFirstAccountType = 1;
constexpr int kLastAccountType = 8;

thread_local bool g_on_bus_thread = false;

bool IsRegistered(int type) { return type >= kFirstAccountType && type <= kLastAccountType; }

}  // namespace

class EventManager::Thread : public base::SimpleThread {
 public:
  explicit Thread(EventManager* bus) : SimpleThread("EventBus"), bus_(bus) {}
  void Run() override { bus_->DeliverForever(); }

 private:
  EventManager* const bus_;
};

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
  delivery.push_back({event->type(), event->data(), 0});
  base::AutoLock hold(lock_);
  delivery.front().last_listener = last_number_;
  queue_.splice(queue_.end(), delivery);
  ++published_;
  changed_.NotifyAll();
}

void EventManager::ReleaseEvent(Event* event) { delete event; }

int EventManager::AddListener(int type, Listener listener) {
  base::AutoLock hold(lock_);
  listeners_.emplace(++last_number_, Registration{type, std::move(listener)});
  return last_number_;
}

void EventManager::RemoveListener(int number) {
  // Taken out of the map at once, so that it is called no more; destroyed without the lock.
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

void EventManager::DeliverForever() {
  g_on_bus_thread = true;
  for (;;) Deliver(TakeDelivery().front());
}

std::list<EventManager::Delivery> EventManager::TakeDelivery() {
  std::list<Delivery> taken;
  base::AutoLock hold(lock_);
  while (queue_.empty()) changed_.Wait(lock_);
  taken.splice(taken.begin(), queue_, queue_.begin());
  return taken;
}

void EventManager::Deliver(const Delivery& delivery) {
  int number = 0;
  while (const Listener* listener = BeginCall(delivery, &number)) {
    (*listener)(delivery.type, delivery.data);
    EndCall();
  }
  base::AutoLock hold(lock_);
  ++delivered_;
  changed_.NotifyAll();
}

const EventManager::Listener* EventManager::BeginCall(const Delivery& delivery, int* number) {
  base::AutoLock hold(lock_);
  const auto end = listeners_.upper_bound(delivery.last_listener);
  for (auto next = listeners_.upper_bound(*number); next != end; ++next) {
    if (next->second.type != delivery.type) continue;
    *number = next->first;
    running_ = next->first;
    return &next->second.function;
  }
  return nullptr;
}

void EventManager::EndCall() {
  Registrations::node_type removed_itself;
  {
    base::AutoLock hold(lock_);
    removed_itself = std::move(removed_itself_);
  }
  // Destroyed before a remover on another thread is told that the call is over.
  removed_itself = {};
  base::AutoLock hold(lock_);
  running_ = 0;
  changed_.NotifyAll();
}

}  // namespace evt
