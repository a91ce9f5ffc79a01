// What the service offers on the bus: the 32 operations, two lists and the metrics, each with the
// right that it needs, and how its answer is put into a reply.
#ifndef QORN_GATEWAY_SERVICE_METHODS_H_
#define QORN_GATEWAY_SERVICE_METHODS_H_

#include <functional>
#include <string>
#include <vector>

#include "bus/handles.h"
#include "core_fw/account/include/account_manager.h"
#include "gateway/operations/operations.h"

namespace gateway {

using Words = std::vector<std::string>;

// What a method answered, as UTF-8.
struct Outcome {
  int code = kAccountSuccess;
  bool unreachable = false;  // a SignIn that did not reach the account server
  std::vector<Field> outputs = {};
  std::vector<Words> rows = {};  // of a list, each with the list's columns
};

// What methods answer from.
struct Sources {
  AccountManager* accounts;              // borrowed
  std::function<std::string()> metrics;  // in Prometheus's text format; any thread
};

struct Method {
  struct Value {
    std::string name;
    std::string signature;  // of D-Bus: "s", "i", "as", "a(ssss)"
  };

  std::string name;
  std::string group;
  std::vector<Value> takes;
  std::vector<Value> gives;
  Right right;
  Backend backend;
  const Operation* operation = nullptr;  // null for what is none of the 32
  // Any thread. The words are as many as it takes.
  std::function<Outcome(const Sources& sources, const Words& words)> run;
  // Appends all that it gives. A negative errno when that fails.
  std::function<int(const Outcome& outcome, sd_bus_message* reply)> append;

  Right RightFor(const Words& words) const;
};

// In the interface's order, the others last.
const std::vector<Method>& Methods();

// Null when the group has no such method.
const Method* FindMethod(const char* group, const char* name);

// The code's error: "org.qorn.Accounts1.Error.NoUserWithUserId".
std::string ErrorName(const Outcome& outcome);

// Appends one value of an outcome as a text, a number or a list. A negative errno when that fails.
int AppendOutput(sd_bus_message* reply, const Field& output);

}  // namespace gateway

#endif  // QORN_GATEWAY_SERVICE_METHODS_H_
