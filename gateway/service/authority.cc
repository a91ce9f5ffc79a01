#include "gateway/service/authority.h"

#include <unistd.h>

#include <chrono>
#include <string>
#include <utility>

#include "bus/connection.h"

namespace gateway {
namespace {

constexpr char kPolkit[] = "org.freedesktop.PolicyKit1";
constexpr char kPolkitObject[] = "/org/freedesktop/PolicyKit1/Authority";
constexpr char kPolkitInterface[] = "org.freedesktop.PolicyKit1.Authority";
constexpr char kActionPrefix[] = "org.qorn.accounts1.";
constexpr uint32_t kAllowInteraction = 1;
constexpr std::chrono::seconds kPatience{5};
// Less than a service manager waits for a stop.
constexpr std::chrono::seconds kPatienceWithPeople{60};

bool HasWithoutAsking(const Caller& caller, Right right) {
  if (caller.user == 0 || caller.user == geteuid()) return true;
  return caller.is_member && (right == Right::kLook || right == Right::kSignIn);
}

// Null when there is no memory for it.
bus::MessagePtr Question(sd_bus* bus, const Caller& caller, Right right, bool interactive) {
  sd_bus_message* question = nullptr;
  int result = sd_bus_message_new_method_call(bus, &question, kPolkit, kPolkitObject,
                                              kPolkitInterface, "CheckAuthorization");
  bus::MessagePtr owner(question);
  const std::string action = std::string(kActionPrefix) + RightName(right);
  if (result >= 0) {
    result = sd_bus_message_append(question, "(sa{sv})sa{ss}us", "system-bus-name", 1, "name", "s",
                                   caller.connection.c_str(), action.c_str(), 0,
                                   interactive ? kAllowInteraction : 0, "");
  }
  return result >= 0 ? std::move(owner) : nullptr;
}

bool IsGranted(sd_bus_message* reply) {
  int granted = 0;
  if (reply == nullptr) return false;
  if (sd_bus_message_is_method_error(reply, nullptr) != 0) return false;
  if (sd_bus_message_enter_container(reply, 'r', "bba{ss}") < 0) return false;
  return sd_bus_message_read(reply, "b", &granted) > 0 && granted != 0;
}

}  // namespace

void Authorise(sd_bus* bus, bus::PendingCalls* pending, const Caller& caller, Right right,
               bool interactive, std::function<void(bool)> then) {
  if (HasWithoutAsking(caller, right)) return then(true);
  const bus::MessagePtr question = Question(bus, caller, right, interactive);
  const auto answer = std::make_shared<std::function<void(bool)>>(std::move(then));
  if (question == nullptr ||
      pending->Send(bus, question.get(), interactive ? kPatienceWithPeople : kPatience,
                    [answer](sd_bus_message* reply) { (*answer)(IsGranted(reply)); }) < 0) {
    (*answer)(false);
  }
}

}  // namespace gateway
