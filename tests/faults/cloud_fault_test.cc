// Every request of the component while the cloud answers badly: cut at every byte in both ways, and
// with every other fault. QORN_FAULT_STEP=1 takes every byte and status; without it some are
// left out.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/test_clock.h"
#include "tests/faults/operation_sweep.h"

namespace faults {
namespace {

using devcloud::Fault;
// An operation, the request of it that meets the fault, and the code that it then gives.
struct Case {
  const char* line;
  const char* path;
  int code;
};

const Case kCases[] = {
    {"sign-in ann@x $code_ann", "/token", 15},
    {"create-user tim@x $code_tim", "/token", 15},
    {"refresh-access-token ann@x", "/token", 19},
    {"create-user tim@x $code_tim", "/device/adduserdevice", 16},
    {"remove-user ann@x bob@x", "/device/deleteuserdevice", 16},
    {"add-friend-request tim@x $friend_auth_code $code_tim m d a", "/token", 15},
    {"add-friend-request tim@x $friend_auth_code $code_tim m d a", "/device/adduserdevice", 16},
    {"add-friend-request tim@x $friend_auth_code $code_tim m d a", "/device/getuserdevice", 16},
    // The worker's two requests: the status stays.
    {"tick", "/device/getuserdevice", 0},
    {"tick", "/device/getntsserverinfo", 0},
};

class CloudFaults : public StoredUsersTest {
 protected:
  // Every case with the cloud at this URL, cut at every `step`th byte.
  void Sweep(const std::string& url, int step);

 private:
  void StartService() override;
  int Operate(const std::string& line);
  // Calls the case's operation with the fault. Whether it gave the case's code and left the store.
  bool Fails(const Case& test, Fault fault);
  // The first cut that is none leaves the whole answer.
  void CutUntilWhole(const Case& test, int step);
  void MeetAll(const Case& test, int step);

  base::TestClock clock_;
  std::string answer_;  // To the latest request that met a fault.
  std::size_t answer_size_ = 0;
  int met_ = 0;
};

// The worker's first try is refused.
void CloudFaults::StartService() {
  Fault refusal;
  refusal.path = "/device/getuserdevice";
  cloud_->AddFault(refusal);
  StoredUsersTest::StartService();
  clock_.WaitForSleepers(1);
}

int CloudFaults::Operate(const std::string& line) {
  if (line != "tick") return Call(line).code;
  clock_.Advance(base::TimeDelta::FromSeconds(60));
  clock_.WaitForSleepers(1);
  return service_->GetNetworkSettingStatus();
}

bool CloudFaults::Fails(const Case& test, Fault fault) {
  const auto rows = [this] {
    return Sql("SELECT * FROM Users UNION ALL SELECT *, 0 FROM Friends");
  };
  for (const std::string id : {"ann", "bob", "tim"}) {
    variables_.Set("code_" + id, cloud_->IssueCode(id + "@x"));
  }
  // The cloud may have done what its answer did not tell.
  if (std::string_view(test.line).starts_with("refresh")) Call("sign-in ann@x $code_ann");
  if (std::string_view(test.line).starts_with("remove")) Call("create-user bob@x $code_bob");
  const Rows before = rows();
  fault.path = test.path;
  cloud_->ClearRequests();
  cloud_->AddFault(fault);
  const int code = Operate(test.line);
  answer_.clear();
  for (const auto& request : cloud_->requests()) {
    if (!request.fault.empty()) answer_ = request.answer.value_or("");
  }
  cloud_->ClearFaults();
  log_.Take();
  ++met_;
  return code == test.code && rows() == before;
}

void CloudFaults::CutUntilWhole(const Case& test, int step) {
  Fault fault;
  fault.kind = Fault::Kind::kTruncateAfter;
  while (Fails(test, fault) && fault.bytes < 10'000) fault.bytes += static_cast<std::size_t>(step);
  const std::size_t length = answer_.find("Content-Length: ");
  ASSERT_LT(length, answer_.size()) << fault.bytes;
  EXPECT_EQ(answer_.size() - answer_.find("\r\n\r\n") - 4, std::stoul(answer_.substr(length + 16)));
  answer_size_ = answer_.size();
}

void CloudFaults::MeetAll(const Case& test, int step) {
  Fault fault;
  for (fault.status = 201; fault.status < 600; fault.status += step == 1 ? 1 : 9) {
    if (fault.status / 100 == 3) continue;
    EXPECT_TRUE(Fails(test, fault)) << fault.status;
  }
  fault.kind = Fault::Kind::kBody;
  for (const char* body : {"", "{}", "[", "{\"access_token\":1}", "<?xml", "<?xml?><a><b>",
                           "<?xml?><response><result>failure</result></response>"}) {
    fault.body = body;
    EXPECT_TRUE(Fails(test, fault)) << body;
  }
  fault.kind = Fault::Kind::kRaw;
  EXPECT_TRUE(Fails(test, fault));
  fault.kind = Fault::Kind::kRedirect;
  fault.location = "/nowhere";
  fault.status = 0;
  EXPECT_TRUE(Fails(test, fault));
  fault.kind = Fault::Kind::kResetAfter;
  for (fault.bytes = 0; fault.bytes < answer_size_; fault.bytes += static_cast<std::size_t>(step)) {
    ASSERT_TRUE(Fails(test, fault)) << "reset after " << fault.bytes;
  }
  cloud_->RefuseConnections(true);
  EXPECT_NE(Operate(test.line), 1);
  cloud_->RefuseConnections(false);
  fault = {};
  fault.kind = Fault::Kind::kDrip;
  EXPECT_FALSE(Fails(test, fault)) << "a slow answer is a good one";
}

void CloudFaults::Sweep(const std::string& url, int step) {
  config_["account_zep_auth_url"] = config_["account_user_portal_url"] = url;
  config_["account_enable_MIRLO_network_setting"] = "on";
  cloud_->AddGateway(account::kGatewayAddress);
  StartRuntime();
  StoreUsers();
  const long descriptors = account::CountEntries("/proc/self/fd");
  for (const Case& test : kCases) {
    SCOPED_TRACE(std::string(test.line) + " " + test.path);
    for (const auto meet : {&CloudFaults::CutUntilWhole, &CloudFaults::MeetAll}) {
      StartWithUsers();
      EXPECT_EQ(Call("add-friend-candidate $ann tim@x $peer").code, 1);
      (this->*meet)(test, step);
      service_->Shutdown();
      log_.Take();
    }
  }
  EXPECT_TRUE(account::WaitForEntries("/proc/self/fd", descriptors));
  RecordProperty("faults", met_);
}

TEST_F(CloudFaults, OverHttp) { Sweep(cloud_->http_url(), FaultStep(3)); }

TEST_F(CloudFaults, OverHttps) { Sweep(cloud_->https_url(), FaultStep(60)); }

}  // namespace
}  // namespace faults
