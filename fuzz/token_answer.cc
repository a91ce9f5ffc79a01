// Answers of the account server to a token request.
#include "core_fw/account/src/oauth_token_client.h"
#include "fuzz/fuzz.h"

namespace account {
namespace {

// The first byte is the transfer's result.
void Run(const std::string& input) {
  if (input.empty()) return;
  const auto result = static_cast<HttpResult>(input[0] % 8);
  Tokens tokens{"held", "held", "held"};
  const bool good = ReadTokenAnswer(result, input.substr(1), kRefreshLogNames, &tokens);
  fuzz::Require(!good || result == kHttpOk, "an answer without status 200 holds no tokens");
  const bool first = tokens.access_token != "held";
  const bool last = tokens.user_guid != "held";
  fuzz::Require(result == kHttpOk || !(first || last), "what is no answer leaves what is held");
  fuzz::Require(good || !last, "a user is read from a whole answer only");
}

}  // namespace
}  // namespace account

void fuzz::Run(const std::string& input) { account::Run(input); }
