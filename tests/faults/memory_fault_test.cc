// Every operation, and the worker's tick, while the Nth allocation fails, alone and with all that
// follow it. QORN_FAULT_STEP=1 takes every N; without it every fifth.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <new>
#include <set>

#include "base/logging.h"
#include "base/test_clock.h"
#include "evt/event_manager.h"
#include "gateway/output/text.h"
#include "tests/faults/memory_faults.h"
#include "tests/faults/operation_sweep.h"

namespace faults {
namespace {

class MemoryFaults : public OperationSweep {
 public:
  explicit MemoryFaults(SweptOperation operation);
  ~MemoryFaults() override { UseMemoryAs(Side::kNone); }
  void TestBody() override;

 private:
  // How many of an operation's allocations are its last line's.
  static constexpr int kAllocationsOfALine = 5;

  gateway::Answer CallOrTick();
  void Tick();
  void StartService() override;
  void Perform(const gateway::Operation& operation, const Rows& words,
               gateway::Answer* answer) override;
  void CallOn() override;
  void CheckAfterShutdown() override;
  bool ReadsXml() const;

  const bool ticks_ = operation_.line == "tick";
  const int step_ = FaultStep(5);
  base::TestClock clock_;
  std::string lines_;
  int nth_ = 0;  // of the next fault; 0 for none
  bool lasting_ = false;
  int followed_by_ = -1;
};

MemoryFaults::MemoryFaults(SweptOperation operation) : OperationSweep(std::move(operation)) {
  config_["account_enable_MIRLO_network_setting"] = ticks_ ? "on" : "off";
  UseNamedZone();
  StartRuntime();
  logging::SetLogMessageHandler(
      [this](int, const char*, int, size_t start, const std::string& text) {
        const MemoryIsBack back;
        lines_ += text.substr(start);
        return true;
      });
  devcloud::Fault refusal;
  refusal.path = "/device/getuserdevice";
  refusal.times = -1;
  if (ticks_) cloud_->AddFault(refusal);
  StoreUsers();
}

bool MemoryFaults::ReadsXml() const {
  if (ticks_) return true;
  const std::string name = operation_.line.substr(0, operation_.line.find(' '));
  const std::vector<int>& codes = gateway::FindCommandOperation(name)->results;
  return std::find(codes.begin(), codes.end(), kAccountUserPortalFailure) != codes.end();
}

// The worker belongs to the side of started threads.
void MemoryFaults::StartService() {
  UseMemoryAs(Side::kCaller);
  OperationSweep::StartService();
  UseMemoryAs(Side::kNone);
  clock_.WaitForSleepers(1);
}

void MemoryFaults::Tick() {
  clock_.Advance(base::TimeDelta::FromSeconds(60));
  clock_.WaitForSleepers(1);
}

gateway::Answer MemoryFaults::CallOrTick() {
  lines_.clear();
  if (!ticks_) return Call(operation_.line);
  if (nth_ > 0) StartMemoryFault(Side::kStarted, nth_, lasting_);
  nth_ = 0;
  Tick();
  followed_by_ = EndMemoryFault();
  return {};
}

void MemoryFaults::Perform(const gateway::Operation& operation, const Rows& words,
                           gateway::Answer* answer) {
  std::string error;
  UseMemoryAs(Side::kCaller);
  if (nth_ > 0) StartMemoryFault(Side::kCaller, std::exchange(nth_, 0), lasting_);
  try {
    operation.Call(*service_, words, answer, &error);
  } catch (const std::bad_alloc&) {  // Thrown outside the operation: no exception leaves it.
    answer->code = kUnknown;
  }
  followed_by_ = EndMemoryFault();
  UseMemoryAs(Side::kNone);
  if (answer->code != kUnknown && answer->code != 19 && !answer->is_status) {
    EXPECT_THAT(operation.results, testing::Contains(answer->code));
  }
}

// Store, sessions, candidates, cloud and worker.
void MemoryFaults::CallOn() {
  OperationSweep::CallOn();
  const bool there = !Sql("SELECT 1 FROM Users WHERE userId='bob@x'").empty();
  EXPECT_EQ(Call("add-friend-candidate next g p").code, 1);
  EXPECT_EQ(Call("sign-in bob@x " + cloud_->IssueCode("bob@x")).code, there ? 1 : 5);
  EXPECT_EQ(Call("set-session-lifetime 1").code, 1);
  Tick();
  Tick();
  EXPECT_EQ(Call("check-session-validation $kept").code, 2);
}

void MemoryFaults::CheckAfterShutdown() {
  evt::EventManager::GetInstance()->Flush();
  EXPECT_LE(TakeHeldAllocations(), ReadsXml() ? kLostByXml : 0);
}

void MemoryFaults::TestBody() {
  const auto has_line = [this](const char* part) { return lines_.find(part) != std::string::npos; };
  bool broke_off = false;  // An answer of the cloud that did not fit into memory.
  // The faults that took the last line along, counted from the end: an answer of the cloud comes in
  // one piece or in two, and with two of them there are more allocations before the line.
  std::set<int> lost;
  const Operate operate = [&](int nth, bool* met) {
    nth_ = nth;
    const gateway::Answer answer = CallOrTick();
    *met = followed_by_ >= 0;
    broke_off |= has_line("curl error code = 23");
    // The last line of an operation, or its only one.
    const bool has_last = has_line("End") || has_line("#ParseAccountMessage#");
    if (!lasting_ && !has_last && answer.code != kUnknown) lost.insert(followed_by_);
    return answer;
  };
  LearnWithoutFaults(operate);
  for (const bool lasting : {false, true}) {
    lasting_ = lasting;
    MeetAll(lasting ? "allocation and all after" : "allocation", step_, operate);
  }
  EXPECT_TRUE(ticks_ || std::ssize(lost) <= kAllocationsOfALine) << lost.size();
  // One allocation in some operations.
  EXPECT_TRUE(broke_off || !ReadsXml() || step_ > 1);
}

}  // namespace
}  // namespace faults

int main(int argc, char** argv) {
  return faults::RunSweeps<faults::MemoryFaults>(
      argc, argv, "MemoryFaults",
      [](const faults::SweptOperation& operation) { return operation.line != "start"; });
}
