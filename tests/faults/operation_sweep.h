// Operations of the account interface with a fault at every place where one can be.
#ifndef QORN_TESTS_FAULTS_OPERATION_SWEEP_H_
#define QORN_TESTS_FAULTS_OPERATION_SWEEP_H_

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core_fw/account/src/account_manager_impl.h"
#include "core_fw/account/tests/test_support.h"
#include "gateway/console/commands.h"
#include "gateway/console/variables.h"

namespace faults {

using Rows = std::vector<std::string>;

// A service that starts, as often as wanted, with ann@x ($ann), her friends f1, f2 and f3 (peer ID
// p), and bob@x ($bob) in its store. $peer is the gateway's peer ID.
class StoredUsersTest : public account::AccountTest {
 protected:
  // Needs the runtime.
  void StoreUsers();
  void StartWithUsers();
  // Makes the service and starts it.
  virtual void StartService();
  // Runs an operation by its line of the console; $NAME then has the output NAME.
  gateway::Answer Call(const std::string& line);
  virtual void Perform(const gateway::Operation& operation, const Rows& words,
                       gateway::Answer* answer);

  const std::string baseline_ = folder_ + "/baseline";
  gateway::Variables variables_;
  std::unique_ptr<account::AccountManagerImpl> service_;
};

// A line of operations.txt, which tells what its cells are.
struct SweptOperation {
  std::string name;
  Rows codes;
  std::string leaves, before, line;
};

std::vector<SweptOperation> ReadSweptOperations();

// How far apart the places are that get a fault: QORN_FAULT_STEP, or what is usual.
int FaultStep(int usual);

class OperationSweep : public StoredUsersTest {
 protected:
  // No operation gives it: the call did not come to it.
  static constexpr int kUnknown = -1;

  explicit OperationSweep(SweptOperation operation) : operation_(std::move(operation)) {}
  // At least one fault was met; how many goes into the test's report.
  void TearDown() override;

  // Runs the operation with a fault at the nth place, or without one if that is 0, and sets `met`
  // to whether it reached that place.
  using Operate = std::function<gateway::Answer(int nth, bool* met)>;
  void LearnWithoutFaults(const Operate& operate);
  // Each `step`th place, from the first until one is not reached.
  void MeetAll(const std::string& fault, int step, const Operate& operate);
  virtual void CallOn();
  virtual void CheckAfterShutdown() = 0;

  const SweptOperation operation_;

 private:
  struct Left {
    int code = 0;
    std::string outputs;
    Rows users, friends;
  };

  // Runs the operation on a service with the users; then the next calls must work.
  Left Run(const Operate& operate, int nth, bool* met);
  void Judge(const Left& left);

  Left before_, after_;
  bool repeats_ = false;  // Its outputs are the same each time.
  int met_ = 0;
};

// Makes each operation that `wanted` takes a test of the suite, and runs them.
template <typename Sweep>
int RunSweeps(int argc, char** argv, const char* suite, bool (*wanted)(const SweptOperation&)) {
  testing::InitGoogleTest(&argc, argv);
  for (const SweptOperation& operation : ReadSweptOperations()) {
    if (!wanted(operation)) continue;
    testing::RegisterTest(suite, operation.name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                          [operation] { return new Sweep(operation); });
  }
  return RUN_ALL_TESTS();
}

}  // namespace faults

#endif  // QORN_TESTS_FAULTS_OPERATION_SWEEP_H_
