// One exchange over TLS while memory ends.
#include <gtest/gtest.h>

#include <new>

#include "core_fw/account/src/https_request.h"
#include "core_fw/account/tests/test_support.h"
#include "tests/faults/memory_faults.h"

namespace faults {
namespace {

using HttpsMemory = account::AccountTest;

TEST_F(HttpsMemory, TheNextExchangeWorks) {
  const std::string url = cloud_->https_url() + "/";
  const auto send = [&url] {
    account::HttpResult result = account::kHttpTransportError;
    try {
      account::SendRequest({}, url, 0, "", &result);
    } catch (const std::bad_alloc&) {  // The operation around it answers 19.
    }
    return result;
  };
  account::StartTransport();
  const account::HttpResult without_fault = send();
  EXPECT_NE(without_fault, account::kHttpTransportError);
  int nth = 1;
  for (bool ended = true; ended && !HasFailure(); ++nth) {
    SCOPED_TRACE(testing::Message() << "allocation " << nth);
    UseMemoryAs(Side::kCaller);
    StartMemoryFault(Side::kCaller, nth, false);
    const account::HttpResult result = send();
    ended = EndMemoryFault();
    UseMemoryAs(Side::kNone);
    EXPECT_TRUE(result == without_fault || result == account::kHttpTransportError) << result;
    log_.Take();
  }
  EXPECT_EQ(send(), without_fault);
  TakeHeldAllocations();
  account::StopTransport();
  RecordProperty("faults", nth - 2);
}

}  // namespace
}  // namespace faults
