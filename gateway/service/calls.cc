#include "gateway/service/calls.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "bus/names.h"
#include "gateway/operations/result_names.h"
#include "gateway/output/text.h"
#include "gateway/service/authority.h"

namespace gateway {
namespace {

// How long a refusal is held back, so that a caller that asks again at once is slowed down.
constexpr std::chrono::milliseconds kHold{250};
// With more open calls than this, new ones are refused before the bus is asked who calls.
constexpr size_t kMostOpenCalls = 4096;
constexpr std::chrono::seconds kBetweenNotes{1};
constexpr size_t kMostNotedUsers = 1024;
constexpr size_t kMostNotedBytes = 320;
constexpr int kMostHeldOfAUser = 64;
// The bus drops whoever sends more than 32 MiB at once.
constexpr size_t kMostReplyBytes = size_t{31} << 20;
constexpr size_t kBytesAroundAText = 16;

// Reads the arguments, whose types sd-bus has checked. False with a text in `error` for what goes
// into no operation: values become parts of HTTP requests as they are.
bool ReadWords(const Method& method, sd_bus_message* message, Words* words, std::string* error) {
  size_t bytes = 0;
  for (const Method::Value& value : method.takes) {
    if (value.signature == "i") {
      int number = 0;
      if (sd_bus_message_read_basic(message, 'i', &number) <= 0) return false;
      words->push_back(std::to_string(number));
      continue;
    }
    const char* text = nullptr;
    if (sd_bus_message_read_basic(message, 's', static_cast<void*>(&text)) <= 0) return false;
    bytes += std::strlen(text);
    if (bytes > bus::kMaxArgumentBytes) {
      *error = "the arguments are longer than 64 KiB";
      return false;
    }
    words->emplace_back(text);
    if (HasControlCharacter(words->back())) {
      *error = value.name + " holds a control character";
      return false;
    }
  }
  return true;
}

bool SignsIn(const Method& method) { return method.name == "SignIn" || method.name == "SignInAlt"; }

// No less than the outcome takes in a message.
size_t ReplyBytes(const Outcome& outcome) {
  size_t bytes = 0;
  const auto add = [&bytes](const Words& texts) {
    for (const std::string& text : texts) bytes += text.size() + kBytesAroundAText;
  };
  for (const Field& output : outcome.outputs) add(output.values);
  for (const Words& row : outcome.rows) add(row);
  return bytes;
}

const char* ErrorOf(Refusal refusal) {
  switch (refusal) {
    case Refusal::kTooManyCalls:
      return bus::kLimitsExceeded;
    case Refusal::kBadArguments:
      return bus::kInvalidArgs;
    case Refusal::kStopping:
      return bus::kStopping;
    case Refusal::kNoRight:
    case Refusal::kUnknownCaller:
      break;
  }
  return bus::kAccessDenied;
}

// Whoever is refused must not fill the audit with arguments.
std::string ShortenId(const std::string& id) {
  return id.size() <= kMostNotedBytes ? id : id.substr(0, kMostNotedBytes) + "...";
}

std::string WaitText(int seconds) {
  return "too many calls; try again in " + std::to_string(seconds) +
         (seconds == 1 ? " second" : " seconds");
}

}  // namespace

// When it is destroyed it leaves the guard and the count of open calls.
struct Calls::Call {
  Call(Calls* owner, const Method& called, sd_bus_message* taken)
      : calls(owner), method(called), message(bus::Share(taken)) {
    ++calls->open_;
  }
  ~Call() { calls->OnEnd(*this); }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  Calls* const calls;
  const Method& method;
  const bus::MessagePtr message;
  Words words;
  std::string fault;  // of its arguments
  Right right = Right::kLook;
  CallerPtr caller;
  bool entered = false;  // the guard let it in
  Outcome outcome;
};

Calls::Calls(Parts parts, const GuardLimits& limits, const std::string& group)
    : parts_(std::move(parts)), guard_(limits), callers_(group, &pending_) {}

Calls::~Calls() = default;

void Calls::Take(const Method& method, sd_bus_message* message) {
  const auto call = std::make_shared<Call>(this, method, message);
  if (on_all_ended_) return RefuseStopping(call.get());
  if (open_ > kMostOpenCalls) return Refuse(call.get(), Refusal::kTooManyCalls, WaitText(1));
  std::string fault = "the arguments cannot be read";
  if (ReadWords(method, message, &call->words, &fault)) {
    call->right = method.RightFor(call->words);
  } else {
    call->fault = fault;
  }
  callers_.Identify(sd_bus_message_get_bus(message), sd_bus_message_get_sender(message),
                    [this, call](const CallerPtr& caller) {
                      if (on_all_ended_) return RefuseStopping(call.get());
                      if (caller == nullptr) {
                        return Refuse(call.get(), Refusal::kUnknownCaller, "not allowed");
                      }
                      call->caller = caller;
                      Admit(call);
                    });
}

void Calls::Admit(const CallPtr& call) {
  const auto now = Guard::Clock::now();
  if (const auto seconds = guard_.Enter(call->caller->user, SignsIn(call->method), now)) {
    if (noted_.size() >= kMostNotedUsers) noted_.clear();
    auto& noted = noted_[call->caller->user];
    if (noted + kBetweenNotes < now) {
      Note(*call, std::nullopt, "refused: too many calls");
      noted = now;
    }
    return RefuseLater(call, *seconds);
  }
  call->entered = true;
  if (!call->fault.empty()) {
    Note(*call, std::nullopt, "refused: " + call->fault);
    return Refuse(call.get(), Refusal::kBadArguments, call->fault);
  }
  const bool interactive =
      sd_bus_message_get_allow_interactive_authorization(call->message.get()) > 0;
  Authorise(sd_bus_message_get_bus(call->message.get()), &pending_, *call->caller, call->right,
            interactive, [this, call](bool granted) {
              if (on_all_ended_) return RefuseStopping(call.get());
              if (granted) return Run(call);
              Note(*call, std::nullopt,
                   std::string("refused: no right to ") + RightName(call->right));
              Refuse(call.get(), Refusal::kNoRight, "not allowed");
            });
}

void Calls::Run(const CallPtr& call) {
  switch (call->method.backend) {
    case Backend::kMemory:
      call->outcome = call->method.run(parts_.sources, call->words);
      return Finish(call.get());
    case Backend::kDatabase:
      return RunOnWorker(&database_, call);
    case Backend::kCloud:
      return RunOnWorker(&cloud_, call);
  }
}

void Calls::RunOnWorker(Workers* workers, const CallPtr& call) {
  // The loop's thread keeps the call, since messages belong to it.
  running_.emplace(call.get(), call);
  workers->Post(call->caller->user, [this, running = call.get()] {
    running->outcome = running->method.run(parts_.sources, running->words);
    if (running->right != Right::kLook) parts_.flush_events();
    parts_.loop->Post([this, running] {
      Finish(running);
      running_.erase(running);
    });
  });
}

void Calls::Finish(Call* call) {
  if (call->right != Right::kLook) {
    Note(*call, call->outcome.code, ResultMessage(call->outcome.code));
    parts_.on_change(call->method);
  }
  if (call->outcome.code == kAccountSuccess) return SendOutcome(call);
  const std::string error = ErrorName(call->outcome);
  sd_bus_reply_method_errorf(call->message.get(), error.c_str(), "%s",
                             ResultMessage(call->outcome.code));
}

void Calls::SendOutcome(Call* call) {
  sd_bus_message* made = nullptr;
  int result = sd_bus_message_new_method_return(call->message.get(), &made);
  const bus::MessagePtr reply(made);
  if (result >= 0 && ReplyBytes(call->outcome) > kMostReplyBytes) result = -EMSGSIZE;
  if (result >= 0) result = call->method.append(call->outcome, made);
  if (result >= 0) {
    result = sd_bus_send(sd_bus_message_get_bus(call->message.get()), made, nullptr);
  }
  if (result >= 0) return;
  // A caller without a reply would wait until it gives up.
  SendError(call, SD_BUS_ERROR_FAILED,
            std::string("the answer cannot be sent: ") + std::strerror(-result));
}

void Calls::RefuseStopping(Call* call) {
  Refuse(call, Refusal::kStopping, "the gateway is stopping");
}

void Calls::RefuseLater(const CallPtr& call, int seconds) {
  parts_.on_refusal(Refusal::kTooManyCalls);
  // A late reply slows nobody down who expects none.
  if (sd_bus_message_get_expect_reply(call->message.get()) <= 0) return;
  const uid_t user = call->caller->user;
  if (held_[user] >= kMostHeldOfAUser) {
    return SendError(call.get(), bus::kLimitsExceeded, WaitText(seconds));
  }
  ++held_[user];
  parts_.loop->PostAt(Guard::Clock::now() + kHold, [this, call, user, seconds] {
    if (--held_[user] == 0) held_.erase(user);
    SendError(call.get(), bus::kLimitsExceeded, WaitText(seconds));
  });
}

void Calls::Lose() {
  pending_.Fail();
  callers_.Clear();
}

void Calls::Refuse(Call* call, Refusal refusal, const std::string& text) {
  parts_.on_refusal(refusal);
  SendError(call, ErrorOf(refusal), text);
}

void Calls::SendError(Call* call, const char* error, const std::string& text) {
  sd_bus_reply_method_errorf(call->message.get(), error, "%s", text.c_str());
}

void Calls::Note(const Call& call, std::optional<int> result, const std::string& message) {
  Audit::CallNote note{.method = call.method.name,
                       .caller = call.caller->user_name,
                       .program = call.caller->program,
                       .result = result,
                       .message = message};
  // Words of a call that cannot be read may stand in each other's places.
  const Operation* const operation = call.fault.empty() ? call.method.operation : nullptr;
  for (size_t i = 0; operation != nullptr && i < operation->arguments.size(); ++i) {
    const Parameter& argument = operation->arguments[i];
    if (argument.kind == IdKind::kUserUuid) note.user_uuid = ShortenId(call.words[i]);
    if (argument.kind == IdKind::kUserId && note.user_id.empty())
      note.user_id = ShortenId(call.words[i]);
  }
  parts_.audit->NoteCall(note);
}

void Calls::OnEnd(const Call& call) {
  if (call.entered) guard_.Leave(call.caller->user);
  if (--open_ == 0 && on_all_ended_) on_all_ended_();
}

void Calls::Stop(std::function<void()> then) {
  on_all_ended_ = std::move(then);
  ++open_;  // The calls that are refused below do not end it.
  // Nobody waits for a person who may be typing a password.
  pending_.Fail();
  if (--open_ == 0) on_all_ended_();
}

}  // namespace gateway
