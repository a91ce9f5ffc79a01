// Requests while memory ends, and answers that are larger than memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <new>

#include "base/location.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/https_request.h"
#include "core_fw/account/tests/test_support.h"
#include "tests/faults/memory_faults.h"

namespace faults {
namespace {

using account::HttpResult;
using testing::Contains;

class RequestMemory : public account::AccountTest {
 protected:
  RequestMemory() {
    account::StartTransport();
    // What the process makes once is there before memory ends.
    account::LogFailure(FROM_HERE, "SetUp", "a line");
    log_.Take();
  }
  ~RequestMemory() override { account::StopTransport(); }

  // An answer of that size, with the Nth allocation failing if `nth` is one.
  std::string Get(std::size_t bytes, int nth = 0) {
    devcloud::Fault fault;
    fault.kind = devcloud::Fault::Kind::kBody;
    fault.bytes = bytes;
    fault.times = -1;  // A request that was broken off may come late.
    cloud_->AddFault(fault);
    result_ = account::kHttpOtherStatus;
    std::string answer;
    UseMemoryAs(Side::kCaller);
    if (nth > 0) StartMemoryFault(Side::kCaller, nth, false);
    try {
      answer = account::SendRequest(headers_, url_, 1, body_, &result_);
    } catch (const std::bad_alloc&) {  // The operation around it answers 19.
      result_ = account::kHttpTransportError;
    }
    met_ = EndMemoryFault() && nth > 0;
    UseMemoryAs(Side::kNone);
    cloud_->ClearFaults();
    return answer;
  }

  const std::string url_ = cloud_->http_url() + "/token", body_;
  const std::vector<std::string> headers_ = {"Accept: */*"};
  HttpResult result_ = account::kHttpOtherStatus;
  bool met_ = false;
};

std::size_t MemoryInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

TEST_F(RequestMemory, IsGivenBackAfterALargeAnswer) {
  constexpr std::size_t kSize = std::size_t{64} << 20;
  Get(1);
  cloud_->ClearRequests();
  const std::size_t before = MemoryInUse();
  {
    const std::string answer = Get(kSize);
    EXPECT_EQ(result_, account::kHttpOk);
    EXPECT_GT(answer.size(), kSize);
    EXPECT_EQ(answer.find_last_not_of('x') + kSize + 1, answer.size());
  }
  cloud_->ClearRequests();  // The cloud keeps what it sent.
  EXPECT_LT(MemoryInUse(), before + (std::size_t{1} << 20));
}

TEST_F(RequestMemory, EndsInALargeAnswer) {
  constexpr std::size_t kSize = std::size_t{1} << 20;
  int refused = 0, nth = 0;  // The answer's callback took less than there was.
  do {
    const std::string answer = Get(kSize, ++nth);
    EXPECT_TRUE(result_ == account::kHttpOk ? answer.size() > kSize : answer.empty()) << nth;
    if (testing::Value(log_.Take(),
                       Contains(account::Line(4, "SendRequest", "curl error code = 23")))) {
      EXPECT_EQ(result_, account::kHttpTransportError);
      ++refused;
    }
    // The C library keeps the name of its time zone, and takes it anew when that failed.
    EXPECT_LE(TakeHeldAllocations(), 1) << nth;
  } while (met_);
  EXPECT_EQ(result_, account::kHttpOk);
  EXPECT_GT(refused, 5);
  RecordProperty("faults", nth - 1);
}

}  // namespace
}  // namespace faults
