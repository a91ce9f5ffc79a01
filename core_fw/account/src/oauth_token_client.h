// Token requests to the account server (OAuth 2, RFC 6749): bodies, answers, and the calls.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_OAUTH_TOKEN_CLIENT_H_
#define QORN_CORE_FW_ACCOUNT_SRC_OAUTH_TOKEN_CLIENT_H_

#include <string>

#include "core_fw/account/src/https_request.h"

namespace account {

struct TokenSettings {
  std::string auth_url;  // Base URL of the account server, without "/token".
  std::string client_id;
  std::string client_secret;
  std::string device_physical_address_text;
};

struct Tokens {
  std::string access_token;
  std::string refresh_token;
  std::string user_guid;  // The account server's identifier of the user.
};

// Request bodies. Values are deliberately not encoded: one that contains "&" splits the form.
std::string MakeAuthCodeBody(const TokenSettings& settings, const std::string& auth_code);
std::string MakeRefreshBody(const TokenSettings& settings, const std::string& refresh_token);

// The names under which the failures of a request are logged.
struct TokenLogNames {
  const char* function;  // In the line's prefix.
  const char* message;   // "MESSAGE Error (...)".
};
inline constexpr TokenLogNames kAuthCodeLogNames{"GetTokensByAuthCode", "GetTokensByAuthCode"};
// The two names differ deliberately.
inline constexpr TokenLogNames kRefreshLogNames{"RefreshAccessToken", "GetTokensByRefreshToken"};

// Reads an answer, including its header block. False, with one line logged, if one of the three
// values is missing; those before it may have been written.
bool ReadTokenAnswer(HttpResult http_result, const std::string& response,
                     const TokenLogNames& names, Tokens* tokens);

// The requests. They block. Any thread.
bool GetTokensByAuthCode(const TokenSettings& settings, const std::string& auth_code,
                         Tokens* tokens, HttpResult* http_result);
bool GetTokensByRefreshToken(const TokenSettings& settings, const std::string& refresh_token,
                             Tokens* tokens);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_OAUTH_TOKEN_CLIENT_H_
