// A gateway's object on the bus: calls and events. One thread of its own touches the connection.
#ifndef QORN_CLIENT_SRC_REMOTE_H_
#define QORN_CLIENT_SRC_REMOTE_H_

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/lock.h"
#include "base/thread_annotations.h"
#include "bus/connection.h"
#include "bus/loop.h"
#include "client/include/qorn_client.h"

namespace qorn {

// An argument of a call.
struct Argument {
  Argument(const std::string& value) : text(&value) {}  // NOLINT: stands for its value
  Argument(int value) : number(value) {}                // NOLINT: stands for its value

  const std::string* text = nullptr;
  int number = 0;
};

struct Call {
  std::string interface;
  std::string member;
  std::vector<Argument> arguments;
  // Reads the reply. False when it is not what was expected.
  std::function<bool(sd_bus_message* reply)> read;
  // Whether a person may be asked to allow it.
  bool interactive = true;
};

struct Result {
  std::string error;  // its name on the bus; "" when the call was answered
  std::string text;
};

class Remote {
 public:
  explicit Remote(ClientOptions options) : options_(std::move(options)) {}
  ~Remote();
  Remote(const Remote&) = delete;
  Remote& operator=(const Remote&) = delete;

  bool Start(std::string* error);

  // Sends the call and waits for its reply, which `read` sees before this returns. Any thread.
  Result Send(const Call& call);

  int AddListener(std::function<void(const ClientEvent&)> listener);
  void RemoveListener(int number);

 private:
  using Then = std::function<void(const Result&)>;

  static int OnSignal(sd_bus_message* signal, void* remote, sd_bus_error* error);
  bool Connect(std::string* error);
  void OnLost();
  void Reconnect(std::chrono::seconds pause);
  // On the loop's thread.
  void SendNow(const Call& call, const Then& then);
  void Deliver(const ClientEvent& event);
  Result SendOnce(const Call& call);

  const ClientOptions options_;
  bus::Loop loop_;
  bus::PendingCalls pending_;
  bus::ConnectionPtr connection_;
  std::thread thread_;
  base::Lock lock_;
  std::map<int, std::function<void(const ClientEvent&)>> listeners_ GUARDED_BY(lock_);
  int next_listener_ GUARDED_BY(lock_) = 1;
};

}  // namespace qorn

#endif  // QORN_CLIENT_SRC_REMOTE_H_
