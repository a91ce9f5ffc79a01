#include "tests/faults/operation_sweep.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "core_fw/account/src/account_records.h"
#include "gateway/console/words.h"
#include "gateway/output/text.h"

namespace faults {

void StoredUsersTest::StoreUsers() {
  StartService();
  for (const std::string id : {"ann", "bob"}) {
    EXPECT_EQ(Call("create " + id + "@x " + cloud_->IssueCode(id + "@x")).code, 1);
    variables_.Set(id, *variables_.Find("user_uuid"));
  }
  for (const std::string id : {"f1", "f2", "f3"}) {
    EXPECT_EQ(Call("add-friend-to-db $ann " + id + " g d a p").code, 1);
  }
  service_->Shutdown();
  log_.Take();
  std::filesystem::rename(database_path(), baseline_);
  variables_.Set("peer", cloud_->PeerId(account::kGatewayAddress));
}

void StoredUsersTest::StartWithUsers() {
  std::filesystem::copy_file(baseline_, database_path(),
                             std::filesystem::copy_options::overwrite_existing);
  StartService();
}

void StoredUsersTest::StartService() {
  service_ = std::make_unique<account::AccountManagerImpl>();
  service_->Init();
}

gateway::Answer StoredUsersTest::Call(const std::string& line) {
  Rows words;
  std::string error;
  EXPECT_TRUE(gateway::SplitWords(line, variables_, &words, &error)) << line << error;
  const gateway::Operation& operation = *gateway::FindCommandOperation(words.at(0));
  words.erase(words.begin());
  gateway::Answer answer;
  Perform(operation, words, &answer);
  for (const gateway::Field& output : answer.outputs) {
    variables_.Set(output.name, gateway::JoinWords(output.values));
  }
  return answer;
}

void StoredUsersTest::Perform(const gateway::Operation& operation, const Rows& words,
                              gateway::Answer* answer) {
  std::string error;
  EXPECT_TRUE(operation.Call(*service_, words, answer, &error)) << error;
}

std::vector<SweptOperation> ReadSweptOperations() {
  std::vector<SweptOperation> operations;
  std::ifstream file(QORN_SWEPT_OPERATIONS);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) continue;
    std::istringstream text(line);
    Rows cells;
    for (std::string cell; std::getline(text, cell, '|');) {
      cells.push_back(gateway::JoinWords(gateway::SplitAtBlanks(cell)));
    }
    operations.push_back(
        {cells.at(0), gateway::SplitAtBlanks(cells.at(1)), cells.at(2), cells.at(3), cells.at(4)});
  }
  return operations;
}

int FaultStep(int usual) {
  const char* const step = std::getenv("QORN_FAULT_STEP");
  return step == nullptr ? usual : std::stoi(step);
}

void OperationSweep::LearnWithoutFaults(const Operate& operate) {
  bool met = false;
  before_ = Run([](int, bool*) { return gateway::Answer(); }, 0, &met);
  const std::string outputs = Run(operate, 0, &met).outputs;
  after_ = Run(operate, 0, &met);
  repeats_ = outputs == after_.outputs;
  EXPECT_EQ(std::to_string(after_.code), operation_.codes.at(0));
}

void OperationSweep::MeetAll(const std::string& fault, int step, const Operate& operate) {
  for (int nth = 1; !HasFailure(); nth += step, ++met_) {
    SCOPED_TRACE(fault + " at " + std::to_string(nth));
    bool met = false;
    const Left left = Run(operate, nth, &met);
    if (!met) break;
    Judge(left);
  }
}

void OperationSweep::TearDown() {
  EXPECT_GT(met_, 0);
  RecordProperty("faults", met_);
}

OperationSweep::Left OperationSweep::Run(const Operate& operate, int nth, bool* met) {
  for (const std::string id : {"ann", "pal", "tim"}) {
    variables_.Set("code_" + id, cloud_->IssueCode(id + "@x"));
  }
  StartWithUsers();
  EXPECT_EQ(Call("sign-in-alt bob@x ''").code, 1);
  variables_.Set("kept", *variables_.Find("session_id"));
  std::istringstream before(operation_.before);
  for (std::string line; std::getline(before, line, ';');) EXPECT_EQ(Call(line).code, 1) << line;
  EXPECT_EQ(Call("add-friend-to-db $ann last g d a p").code, 1);
  log_.Take();
  Left left;
  {
    const gateway::Answer answer = operate(nth, met);
    left.code = answer.code;
    for (const gateway::Field& output : answer.outputs) {
      if (output.shape == gateway::Field::Shape::kFlag) continue;
      left.outputs += gateway::JoinWords(output.values);
    }
  }  // Nothing that the call allocated may be held from here on.
  CallOn();
  log_.Take();
  service_->Shutdown();
  CheckAfterShutdown();
  EXPECT_EQ(Sql("PRAGMA integrity_check"), Rows{"ok"});
  left.users =
      Sql("SELECT userId, userName, userGuid, length(userUuid), length(accessToken)>9, "
          "length(refreshToken)>9, registeredDate>1, lastSignInDate>1, lastInfoChangedDate>1 "
          "FROM Users ORDER BY userId, userUuid");
  left.friends =
      Sql("SELECT friendId, friendName, friendGuid, friendQorDeviceName, "
          "friendQorDevicePhysicalAddressText, friendQorDevicePeerId FROM Friends "
          "WHERE userUuid<>'next' ORDER BY friendId");
  return left;
}

void OperationSweep::CallOn() {
  const bool there = !Sql("SELECT 1 FROM Users WHERE userId='bob@x'").empty();
  EXPECT_EQ(Call("uuid bob@x").code, there ? 1 : 5);
  EXPECT_EQ(Call("add-friend-to-db next f g d a p").code, 1);
  EXPECT_EQ(Sql("SELECT friendId FROM Friends WHERE userUuid='next'"), Rows{"f"});
}

void OperationSweep::Judge(const Left& left) {
  // With 19 the outputs are unspecified; a user that is stored has its UUID whatever follows.
  EXPECT_TRUE(left.code == 1 || left.code == 19 || left.code == kUnknown || left.outputs.empty() ||
              (left.users != before_.users && left.users == after_.users))
      << left.code << left.outputs;
  // What is read is whole or not there; a list may break off.
  if (repeats_ && left.code == after_.code) {
    EXPECT_TRUE(left.outputs == after_.outputs || operation_.name.starts_with("GetAll"));
  }
  const auto holds = [](const Rows& all, const Rows& some) {
    return std::includes(all.begin(), all.end(), some.begin(), some.end());
  };
  if (operation_.leaves == "duplicate") {
    EXPECT_TRUE(holds(left.users, before_.users) && holds(left.friends, before_.friends));
    return;
  }
  EXPECT_THAT(left.users, testing::AnyOf(before_.users, after_.users));
  if (operation_.leaves == "friends") {
    EXPECT_TRUE(holds(before_.friends, left.friends) && holds(left.friends, after_.friends));
  } else {
    EXPECT_THAT(left.friends, testing::AnyOf(before_.friends, after_.friends));
  }
}

}  // namespace faults
