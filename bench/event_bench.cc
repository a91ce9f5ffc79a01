// Events over the bus beside a queue of the same payloads between two threads.
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "base/location.h"
#include "base/pickle.h"
#include "bench/compare.h"
#include "bench/home.h"
#include "core_fw/account/src/account_event.h"
#include "evt/event_manager.h"

namespace bench {
namespace {

constexpr int kEvents = 1000;

const std::string kUuid = "1c1f7c2e-90ab-4d6f-8123-00112233abcd";
const std::string kUserId = "ann@example.com";
const std::string kSession = "3c1f7c2e-90ab-4d6f-8123-00112233abcd";

// Reads the strings as a listener does.
std::size_t ReadAll(const Pickle& payload) {
  std::size_t size = 0;
  std::string text;
  for (PickleIterator strings(payload); strings.ReadString(&text);) size += text.size();
  return size;
}

// Hands payloads to a thread that reads them.
class PlainQueue {
 public:
  PlainQueue() : thread_([this] { Work(); }) {}
  ~PlainQueue() {
    Push(Pickle(nullptr, 0));
    thread_.join();
  }
  PlainQueue(const PlainQueue&) = delete;
  PlainQueue& operator=(const PlainQueue&) = delete;

  void Push(const Pickle& payload) {
    const std::lock_guard<std::mutex> hold(mutex_);
    queue_.push_back(payload);
    changed_.notify_one();
  }
  void WaitUntilRead(long count) {
    std::unique_lock<std::mutex> hold(mutex_);
    done_.wait(hold, [&] { return read_ >= count; });
  }

 private:
  void Work() {
    for (long last = 1;; ++last) {
      Pickle payload;
      {
        std::unique_lock<std::mutex> hold(mutex_);
        changed_.wait(hold, [&] { return !queue_.empty(); });
        payload = queue_.front();
        queue_.pop_front();
      }
      if (payload.size() <= 4) return;
      benchmark::DoNotOptimize(ReadAll(payload));
      const std::lock_guard<std::mutex> hold(mutex_);
      read_ = last;
      done_.notify_one();
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_, done_;
  std::deque<Pickle> queue_;
  long read_ = 0;
  std::thread thread_;
};

Pickle Payload() {
  Pickle payload;
  for (const std::string* text : {&kUuid, &kUserId, &kSession}) payload.WriteString(*text);
  return payload;
}

// The bus with one listener and the queue, both with a thread that reads.
struct Pair {
  Pair()
      : listener(bus->AddListener(
            account::kSignInAltEvent.number,
            [](int /*type*/, const Pickle& data) { benchmark::DoNotOptimize(ReadAll(data)); })) {}
  ~Pair() { bus->RemoveListener(listener); }
  Pair(const Pair&) = delete;
  Pair& operator=(const Pair&) = delete;

  void Publish(int events) {
    for (int i = 0; i < events; ++i) {
      PublishEvent(FROM_HERE, "SignInAlt", account::kSignInAltEvent, {&kUuid, &kUserId, &kSession});
    }
  }
  void Push(int events) {
    for (int i = 0; i < events; ++i) queue.Push(Payload());
    pushed += events;
  }

  evt::EventManager* const bus = evt::EventManager::GetInstance();
  const int listener;
  PlainQueue queue;
  long pushed = 0;
};

// The time is up when the last has been heard.
void InARow(benchmark::State& state) {
  Pair pair;
  Compare(
      state, 1,
      [&] {
        pair.Publish(kEvents);
        pair.bus->Flush();
      },
      [&] {
        pair.Push(kEvents);
        pair.queue.WaitUntilRead(pair.pushed);
      });
}

// What it takes the publisher to wake the thread that reads; the reading itself does not count.
void Waking(benchmark::State& state) {
  Pair pair;
  Compare(
      state, 1, [&] { pair.Publish(1); }, [&] { pair.Push(1); },
      [&] {
        pair.bus->Flush();
        pair.queue.WaitUntilRead(pair.pushed);
        std::this_thread::sleep_for(std::chrono::microseconds(200));  // Both threads sleep by then.
      });
}

BENCHMARK(InARow)->Name("event/Publish/1000_in_a_row")->UseManualTime();
BENCHMARK(Waking)->Name("event/Publish/to_a_sleeping_bus")->UseManualTime()->Iterations(300);

}  // namespace
}  // namespace bench

int main(int argc, char** argv) { return bench::RunBenchmarks(argc, argv); }
